// How tests wait: for what they want to see, not for a time.
#ifndef KR_TESTS_WAITUNTIL_H
#define KR_TESTS_WAITUNTIL_H

#include <chrono>
#include <functional>
#include <thread>

// Looks every few milliseconds; false when it has not come true in time.
inline bool WaitUntil(const std::function<bool()>& condition,
                      std::chrono::duration<double> limit = std::chrono::seconds(20)) {
  const auto end = std::chrono::steady_clock::now() + limit;
  while (!condition()) {
    if (std::chrono::steady_clock::now() >= end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return true;
}

#endif
