#include "util/files/FileLock.h"

#include <algorithm>
#include <chrono>

#include "util/text/DateTimeWrapper.h"

FileLock::Result FileLock::Take(const std::string& path, long milliseconds) {
  using Clock = std::chrono::steady_clock;
  constexpr unsigned kShortestMs = 1;
  constexpr unsigned kLongestMs = 16;
  Release();
  path_ = path;
  const Clock::time_point end = Clock::now() + std::chrono::milliseconds(milliseconds);
  for (unsigned pause = kShortestMs;; pause = std::min(pause * 2, kLongestMs)) {
    const Result result = TakeNow(path);
    if (result != Result::kBusy || Clock::now() >= end) return result;
    DateTimeWrapper::SleepMSec(pause);
  }
}
