// How good the estimate of the time left is: replays the time lines of the runs in a folder, each a
// .csv file "cycle,time,dt,event,clock" whose last line is the run's end. For each run the median
// and the 90th percentile of |estimate - truth| / duration over the moments at which there is an
// estimate, beside the same for the mean speed since the start. Argument: the folder.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "progress/SolverClock.h"
#include "progress/TimeLeft.h"

namespace {

struct Moment {
  double clock = 0;
  double time = 0;
};

std::vector<Moment> ReadRun(const std::filesystem::path& path) {
  std::vector<Moment> run;
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    const std::size_t cycleEnd = line.find(',');
    const std::size_t clockBegin = line.rfind(',');
    if (clockBegin == std::string::npos || cycleEnd == clockBegin) continue;
    const auto clock = IsoClock(std::string_view(line).substr(clockBegin + 1));
    if (!clock) continue;  // the line of titles
    run.push_back({static_cast<double>(*clock), std::strtod(line.c_str() + cycleEnd + 1, nullptr)});
  }
  return run;
}

struct Errors {
  std::vector<double> all;
  double At(double share) {
    if (all.empty()) return 0;
    std::sort(all.begin(), all.end());
    const double place = share * static_cast<double>(all.size() - 1);
    const auto below = static_cast<std::size_t>(place);
    const double next = all[std::min(below + 1, all.size() - 1)];
    return all[below] + (next - all[below]) * (place - static_cast<double>(below));
  }
};

struct Result {
  Errors ours;
  Errors linear;
  std::size_t inside = 0;  // the truth was within the spread that was told
};

Result Replay(const std::vector<Moment>& run) {
  Result result;
  const Moment& first = run.front();
  const Moment& end = run.back();
  const double duration = end.clock - first.clock;
  TimeLeft left;
  for (std::size_t i = 0; i + 1 < run.size(); ++i) {
    left.Add(run[i].clock, run[i].time);
    const auto estimate = left.At(run[i].clock, end.time);
    if (!estimate) continue;
    const double truth = end.clock - run[i].clock;
    const double linear =
        (run[i].clock - first.clock) * (end.time - run[i].time) / (run[i].time - first.time);
    result.ours.all.push_back(std::abs(estimate->seconds - truth) / duration);
    result.linear.all.push_back(std::abs(linear - truth) / duration);
    const bool inside = truth <= estimate->seconds * estimate->spread + 1 &&
                        truth >= estimate->seconds / estimate->spread - 1;
    result.inside += inside ? 1 : 0;
  }
  return result;
}

}  // namespace

int main(int argc, char** argv) {
  const std::filesystem::path folder = argc > 1 ? argv[1] : ".";
  std::vector<std::filesystem::path> files;
  std::error_code failed;
  for (const auto& entry : std::filesystem::directory_iterator(folder, failed)) {
    if (entry.path().extension() == ".csv") files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  constexpr char kLine[] = "%-24s %8s  %7.3f %7.3f   %7.3f %7.3f   %5s\n";
  std::printf("%-24s %8s  %15s   %15s   %5s\n%-24s %8s  %7s %7s   %7s %7s   %5s\n", "", "",
              "estimate", "linear", "", "run", "seconds", "median", "90%", "median", "90%", "sure");
  double sums[4] = {};
  int runs = 0;
  for (const std::filesystem::path& file : files) {
    const std::vector<Moment> run = ReadRun(file);
    if (run.size() < 3) continue;
    Result result = Replay(run);
    if (result.ours.all.empty()) {
      std::printf("%-24s too short for an estimate\n", file.stem().string().c_str());
      continue;
    }
    const double values[] = {result.ours.At(0.5), result.ours.At(0.9), result.linear.At(0.5),
                             result.linear.At(0.9)};
    for (std::size_t i = 0; i < 4; ++i) sums[i] += values[i];
    ++runs;
    const std::string seconds =
        std::to_string(static_cast<long long>(run.back().clock - run.front().clock));
    const std::string sure = std::to_string(100 * result.inside / result.ours.all.size()) + "%";
    std::printf(kLine, file.stem().string().c_str(), seconds.c_str(), values[0], values[1],
                values[2], values[3], sure.c_str());
  }
  if (runs == 0) {
    std::fprintf(stderr, "no runs in %s\n", folder.string().c_str());
    return 1;
  }
  std::printf(kLine, "mean", "", sums[0] / runs, sums[1] / runs, sums[2] / runs, sums[3] / runs,
              "");
  return 0;
}
