#include "solvers/AbortableWait.h"

#include <algorithm>

#include "util/text/DateTimeWrapper.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kLookAgain{100};

void Sleep(std::chrono::milliseconds time) {
  DateTimeWrapper::SleepMSec(static_cast<unsigned>(time.count()));
}

}  // namespace

void WaitUnlessAborted(std::chrono::milliseconds time, const std::atomic<bool>& abort,
                       const std::function<bool()>& done) {
  const Clock::time_point end = Clock::now() + time;
  while (!abort && !(done && done())) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
    if (left.count() <= 0) return;
    Sleep(std::min(left, kLookAgain));
  }
}

std::unique_lock<std::mutex> LockUnlessAborted(std::mutex& mutex, const std::atomic<bool>& abort) {
  std::unique_lock<std::mutex> lock(mutex, std::defer_lock);
  while (!lock.try_lock() && !abort) Sleep(kLookAgain);
  return lock;
}
