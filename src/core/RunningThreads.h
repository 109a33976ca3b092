// Counts the threads of groups, so that what they use can outlive them.
#ifndef KR_CORE_RUNNINGTHREADS_H
#define KR_CORE_RUNNINGTHREADS_H

#include <chrono>
#include <condition_variable>

#include "util/signals/Mutex.h"

// Shared by the manager and its groups' threads: leaving is the last thing a thread does with
// anything of ours. Any thread.
class RunningThreads {
 public:
  void Enter() {
    const MutexLock lock(mutex_);
    ++count_;
  }

  void Leave() {
    const MutexLock lock(mutex_);
    --count_;
    left_.notify_all();
  }

  // True once no thread is left.
  bool WaitForNone(std::chrono::milliseconds limit) {
    const auto end = std::chrono::steady_clock::now() + limit;
    MutexLock lock(mutex_);
    while (count_ != 0 && lock.WaitUntil(left_, end)) {
    }
    return count_ == 0;
  }

 private:
  Mutex mutex_;
  std::condition_variable left_;
  int count_ KR_GUARDED_BY(mutex_) = 0;
};

#endif
