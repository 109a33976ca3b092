// Counts the threads of groups, so that what they use can outlive them.
#ifndef KR_CORE_RUNNINGTHREADS_H
#define KR_CORE_RUNNINGTHREADS_H

#include <chrono>
#include <condition_variable>
#include <mutex>

// Shared by the manager and its groups' threads: leaving is the last thing a thread does with
// anything of ours. Any thread.
class RunningThreads {
 public:
  void Enter() {
    const std::lock_guard<std::mutex> lock(mutex_);
    ++count_;
  }

  void Leave() {
    const std::lock_guard<std::mutex> lock(mutex_);
    --count_;
    left_.notify_all();
  }

  // True once no thread is left.
  bool WaitForNone(std::chrono::milliseconds limit) {
    std::unique_lock<std::mutex> lock(mutex_);
    return left_.wait_for(lock, limit, [this] { return count_ == 0; });
  }

 private:
  std::mutex mutex_;
  std::condition_variable left_;
  int count_ = 0;
};

#endif
