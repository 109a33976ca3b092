// What the measuring programs share.
#ifndef KR_BENCH_MEASURE_H
#define KR_BENCH_MEASURE_H

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <string>

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

// The time of the fastest round: what is not this program's slows the others.
template <typename Work>
double BestSeconds(int rounds, const Work& work) {
  double best = 1e9;
  for (int i = 0; i < rounds; ++i) {
    const auto start = std::chrono::steady_clock::now();
    work();
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
    best = std::min(best, time.count());
  }
  return best;
}

#endif
