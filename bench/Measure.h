// What the measuring programs share.
#ifndef KR_BENCH_MEASURE_H
#define KR_BENCH_MEASURE_H

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
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

#endif
