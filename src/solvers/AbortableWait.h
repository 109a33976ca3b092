// Waits that end when a job is aborted.
#ifndef KR_SOLVERS_ABORTABLEWAIT_H
#define KR_SOLVERS_ABORTABLEWAIT_H

#include <atomic>
#include <chrono>
#include <functional>
#include <mutex>

// Returns when the time is over, when `done`, looked at now and then, says true, or soon after
// `abort` was set.
void WaitUnlessAborted(std::chrono::milliseconds time, const std::atomic<bool>& abort,
                       const std::function<bool()>& done = {});

// For turns, whose mutex guards nothing of ours but says whose turn it is. Does not own the mutex
// when `abort` came first.
std::unique_lock<std::mutex> LockUnlessAborted(std::mutex& mutex, const std::atomic<bool>& abort);

#endif
