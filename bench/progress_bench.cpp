// What watching a long run costs: the news of one second, with a big message file and a big glstat
// that a solver goes on writing, and reading both from their begin, compared with counting their
// lines with wc. Arguments: megabytes of the message file (1000) and of the glstat (100).
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "Measure.h"
#include "progress/RunProgress.h"

namespace {

void AddProgress(std::FILE* file, int cycle) {
  std::fprintf(file, "%8d t %.4E dt 2.42E-06 flush i/o buffers            08/14/24 12:%02d:%02d\n",
               cycle * 50, cycle * 1.21e-5, cycle / 60 % 60, cycle % 60);
}

void AddState(std::FILE* file, int state) {
  static constexpr const char* kNames[] = {
      "time step......................", "kinetic energy.................",
      "internal energy................", "spring and damper energy.......",
      "hourglass energy ..............", "system damping energy..........",
      "sliding interface energy.......", "external work..................",
      "eroded kinetic energy..........", "eroded internal energy.........",
      "eroded hourglass energy........", "total energy...................",
      "total energy / initial energy..", "energy ratio w/o eroded energy.",
      "global x velocity..............", "global y velocity..............",
      "global z velocity.............."};
  std::fprintf(file,
               " dt of cycle%8d is controlled by shell    %6d of part%9d\n\n"
               " time........................... %13.5E\n",
               state * 100, state % 1000, state % 7, state * 1e-4);
  for (const char* name : kNames) std::fprintf(file, " %s %13.5E\n", name, state * 1.2345e-3);
  std::fputs(" time per zone cycle.(nanosec)..            12\n\n\n", file);
}

// Progress lines and, as in real files, about as many others.
bool Write(const std::string& path, std::uint64_t bytes, bool glstat) {
  std::FILE* const file = std::fopen(path.c_str(), "wb");
  if (file == nullptr) return false;
  for (int i = 0; static_cast<std::uint64_t>(std::ftell(file)) < bytes; ++i) {
    if (glstat) {
      AddState(file, i);
    } else {
      AddProgress(file, i);
      std::fprintf(file, "     surface timestep             = %.3E\n     contact %d is soft\n",
                   i * 1e-9, i);
    }
  }
  return std::fclose(file) == 0;
}

double SecondsOf(const auto& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

}  // namespace

int main(int argc, char** argv) {
  constexpr int kRounds = 3;
  constexpr int kSeconds = 200;
  const std::uint64_t megabytes = argc > 1 ? std::strtoull(argv[1], nullptr, 10) : 1000;
  const std::uint64_t stateMegabytes = argc > 2 ? std::strtoull(argv[2], nullptr, 10) : 100;
  const TemporaryFolder folder;
  const std::string message = folder.File("messag");
  const std::string glstat = folder.File("glstat");
  if (!Write(message, megabytes * 1000000, false) ||
      !Write(glstat, stateMegabytes * 1000000, true)) {
    std::fprintf(stderr, "cannot write to %s\n", message.c_str());
    return 1;
  }
  bool good = true;
  const std::string count = "wc -l " + message + " " + glstat + " > " + folder.File("lines.txt");
  const double lines =
      BestSeconds(kRounds, [&] { good = std::system(count.c_str()) == 0 && good; });
  const double opening = BestSeconds(kRounds, [&] {
    RunProgress run(FindRunFiles(message));
    run.Look();
    good = run.News().cycle && run.States().Rows() > 0 && good;
  });
  std::printf("opening %.3f s, wc -l %.3f s, ratio %.2f\n", opening, lines, opening / lines);

  RunProgress run(FindRunFiles(message));
  run.SetDeckEndTime(1e9);
  run.Look();
  double all = 0;
  double longest = 0;
  for (int second = 0; second < kSeconds; ++second) {
    std::FILE* const more = std::fopen(message.c_str(), "ab");
    std::FILE* const moreStates = std::fopen(glstat.c_str(), "ab");
    if (more == nullptr || moreStates == nullptr) return 1;
    for (int i = 0; i < 3; ++i) AddProgress(more, 90000000 + second * 3 + i);
    for (int i = 0; i < 3; ++i) AddState(moreStates, 1000000 + second * 3 + i);
    std::fclose(more);
    std::fclose(moreStates);
    const double took = SecondsOf([&] {
      good = run.Look() && good;
      good = run.News().cycle == (90000000 + second * 3 + 2) * 50LL && good;
    });
    all += took;
    longest = std::max(longest, took);
  }
  std::printf("news of a second: %.3f ms, at most %.3f ms\n", 1000 * all / kSeconds,
              1000 * longest);
  return good ? 0 : 1;
}
