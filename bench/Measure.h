// What the measuring programs share.
#ifndef KR_BENCH_MEASURE_H
#define KR_BENCH_MEASURE_H

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

class TemporaryFolder {
 public:
  TemporaryFolder() {
    const auto stamp = std::chrono::steady_clock::now().time_since_epoch().count();
    path_ = std::filesystem::temp_directory_path() / ("kr-bench-" + std::to_string(stamp));
    std::filesystem::create_directory(path_);
  }
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  std::string File(const char* name) const { return (path_ / name).string(); }

 private:
  std::filesystem::path path_;
};

// Keeps the shortest time.
class BestTime : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context&) override { return true; }
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.run_type == Run::RT_Iteration) {
        seconds =
            std::min(seconds, run.real_accumulated_time / static_cast<double>(run.iterations));
      }
    }
  }
  double seconds = 1e9;
};

// The time of the fastest round: what is not this program's slows the others.
template <typename Work>
double BestSeconds(int rounds, const Work& work) {
  benchmark::ClearRegisteredBenchmarks();
  benchmark::RegisterBenchmark("work",
                               [&work](benchmark::State& state) {
                                 for ([[maybe_unused]] auto round : state) work();
                               })
      ->Iterations(1)
      ->Repetitions(rounds)
      ->UseRealTime();
  BestTime best;
  benchmark::RunSpecifiedBenchmarks(&best);
  return best.seconds;
}

// Writes a file of about so many bytes. False when it cannot.
using BigFileWriter = void (*)(std::FILE* file, std::uint64_t bytes);
inline bool WriteBigFile(const std::string& path, std::uint64_t bytes, BigFileWriter write) {
  std::FILE* const file = std::fopen(path.c_str(), "wb");
  if (file == nullptr) return false;
  write(file, bytes);
  const bool good = std::ferror(file) == 0;
  return std::fclose(file) == 0 && good;
}
inline bool IsShorter(std::FILE* file, std::uint64_t bytes) {
  const auto place = std::ferror(file) == 0 ? std::ftell(file) : -1;
  return place >= 0 && static_cast<std::uint64_t>(place) < bytes;
}

// A program that compares its own reading of a big file with `wc -l` on it, both from the system's
// cache and in turns, so that both have the same share of what else the machine does. The file has
// as many megabytes as the first argument says, else 1000. Prints the times and their ratio; the
// program's exit code.
inline int CompareWithWc(int argc, char** argv, const char* what, int rounds, BigFileWriter write,
                         const std::function<bool(const std::string& path)>& read) {
  const std::uint64_t megabytes = argc > 1 ? std::strtoull(argv[1], nullptr, 10) : 1000;
  const TemporaryFolder folder;
  const std::string path = folder.File("big");
  if (!WriteBigFile(path, megabytes * 1000000, write)) {
    std::fprintf(stderr, "cannot write %s\n", path.c_str());
    return 1;
  }
  bool good = true;
  const std::string count = "wc -l " + path + " > " + folder.File("lines.txt");
  double lines = 1e9;
  double own = 1e9;
  for (int i = 0; i < rounds; ++i) {
    lines =
        std::min(lines, BestSeconds(1, [&] { good = std::system(count.c_str()) == 0 && good; }));
    own = std::min(own, BestSeconds(1, [&] { good = read(path) && good; }));
  }
  std::printf("%s %.3f s, wc -l %.3f s, ratio %.2f\n", what, own, lines, own / lines);
  return good ? 0 : 1;
}

#endif
