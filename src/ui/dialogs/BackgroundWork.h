// Work of a window on a thread of its own.
#ifndef KR_UI_DIALOGS_BACKGROUNDWORK_H
#define KR_UI_DIALOGS_BACKGROUNDWORK_H

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

#include "util/process/OwnThread.h"
#include "util/signals/Mutex.h"

// The thread may outlive this object, which ends it as soon as the work looks: the work must hold
// all that it needs. Interface thread, but for Control.
template <typename Result>
class BackgroundWork {
 public:
  // What the work sees.
  class Control {
   public:
    bool IsUnwanted() const { return ended_; }
    void SetPercent(int percent) { percent_ = percent; }

   private:
    friend class BackgroundWork;
    std::atomic<bool> ended_{false};
    std::atomic<int> percent_{0};
    Mutex mutex_;
    std::condition_variable changed_;
    std::optional<Result> result_ KR_GUARDED_BY(mutex_);
  };

  BackgroundWork() = default;
  ~BackgroundWork() {
    if (control_) control_->ended_ = true;
  }
  BackgroundWork(const BackgroundWork&) = delete;
  BackgroundWork& operator=(const BackgroundWork&) = delete;

  // `failed` makes a result of what the work has thrown. False when there is no thread to be had.
  bool Start(std::function<Result(Control& control)> work,
             std::function<Result(const std::exception& error)> failed) {
    control_ = std::make_shared<Control>();
    const auto give = [control = control_](Result result) {
      const MutexLock lock(control->mutex_);
      control->result_ = std::move(result);
      control->changed_.notify_all();
    };
    return StartGuarded(
        [control = control_, give, work = std::move(work)] { give(work(*control)); },
        [give, failed = std::move(failed)](const std::exception& error) { give(failed(error)); });
  }

  int Percent() const { return control_->percent_; }

  // The result, once, when it is there or comes within that time.
  std::optional<Result> Take(std::chrono::milliseconds patience = {}) {
    const auto end = std::chrono::steady_clock::now() + patience;
    MutexLock lock(control_->mutex_);
    while (!control_->result_ && lock.WaitUntil(control_->changed_, end)) {
    }
    return std::exchange(control_->result_, std::nullopt);
  }

 private:
  std::shared_ptr<Control> control_;
};

#endif
