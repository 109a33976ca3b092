#include "util/signals/SignalObject.h"

#include <algorithm>
#include <condition_variable>
#include <limits>
#include <map>
#include <optional>
#include <thread>
#include <vector>

#include "util/signals/Mutex.h"
#include "util/signals/SharedFile_posix.h"

namespace {

using Clock = SharedFile::Clock;

// Bounds every sleep, should a notification be missed.
constexpr std::chrono::seconds kLongestSleep{1};
// The end of a process frees its mutex a moment after the notification.
constexpr std::chrono::milliseconds kOwnerLook{50};

Clock::time_point DeadlineAfter(long milliseconds) {
  constexpr long kUnlimited = std::numeric_limits<int>::max();
  if (milliseconds < 0 || milliseconds >= kUnlimited) return Clock::time_point::max();
  return Clock::now() + std::chrono::milliseconds(milliseconds);
}

Clock::time_point SleepEnd(Clock::time_point deadline, Clock::duration longest) {
  return std::min(deadline, Clock::now() + longest);
}

// One object in this process, shared by all who hold it here. Its lock also orders what its users
// do before a signal and after a wait.
struct NamedObject {
  NamedObject(SignalKind k, std::unique_ptr<SharedFile> f) : kind(k), file(std::move(f)) {}
  virtual ~NamedObject() = default;

  const SignalKind kind;
  const std::unique_ptr<SharedFile> file;
  Mutex mutex;
};

// Units to take: a semaphore's, or an event's one.
struct NamedCounter : NamedObject {
  using NamedObject::NamedObject;

  WaitResult TryTake() {
    const MutexLock lock(mutex);
    const SharedFile::StateLock stateLock(*file);
    SignalState state;
    if (!stateLock || !file->Read(state)) return WaitResult::kFailed;
    if (state.value <= 0) return WaitResult::kTimedOut;
    --state.value;
    return file->Write(state) ? WaitResult::kSignalled : WaitResult::kFailed;
  }

  WaitResult Wait(long milliseconds) {
    const Clock::time_point deadline = DeadlineAfter(milliseconds);
    WaitResult result = TryTake();
    if (result != WaitResult::kTimedOut || milliseconds == 0) return result;
    SharedFile::Watch watch(*file);
    while ((result = TryTake()) == WaitResult::kTimedOut && Clock::now() < deadline)
      watch.Sleep(SleepEnd(deadline, kLongestSleep));
    return result;
  }

  bool SetValue(std::int32_t value) {
    const MutexLock lock(mutex);
    const SharedFile::StateLock stateLock(*file);
    return stateLock && file->Write({value, 1});
  }

  bool Add(long count) {
    const MutexLock lock(mutex);
    const SharedFile::StateLock stateLock(*file);
    SignalState state;
    if (!stateLock || !file->Read(state)) return false;
    if (count <= 0 || state.value < 0 || count > long{state.limit} - state.value) return false;
    state.value += static_cast<std::int32_t>(count);
    return file->Write(state);
  }
};

struct NamedMutex : NamedObject {
  using NamedObject::NamedObject;

  std::condition_variable changed;
  std::thread::id owner KR_GUARDED_BY(mutex);  // none, or a thread of this process
  unsigned depth KR_GUARDED_BY(mutex) = 0;

  WaitResult Wait(long milliseconds);
  bool Release();
  void AbandonByThisThread();

 private:
  WaitResult TakeOver() KR_REQUIRES(mutex);
  void LetGo() KR_REQUIRES(mutex);
};

// The mutexes that a thread owns; its end abandons them.
class OwnedMutexes {
 public:
  ~OwnedMutexes() {
    for (const std::weak_ptr<NamedMutex>& entry : entries_) {
      if (const std::shared_ptr<NamedMutex> mutex = entry.lock()) mutex->AbandonByThisThread();
    }
  }
  void Add(const std::shared_ptr<NamedMutex>& mutex) { entries_.push_back(mutex); }
  void Remove(const std::shared_ptr<NamedMutex>& mutex) {
    std::erase_if(entries_, [&](const std::weak_ptr<NamedMutex>& entry) {
      return entry.expired() || entry.lock() == mutex;
    });
  }

 private:
  std::vector<std::weak_ptr<NamedMutex>> entries_;
};

thread_local OwnedMutexes ownedMutexes;

WaitResult NamedMutex::Wait(long milliseconds) {
  const Clock::time_point deadline = DeadlineAfter(milliseconds);
  std::optional<SharedFile::Watch> watch;
  MutexLock lock(mutex);
  if (owner == std::this_thread::get_id()) {
    ++depth;
    return WaitResult::kSignalled;
  }
  for (;;) {
    const bool ownedHere = owner != std::thread::id();
    if (!ownedHere && file->TryOwn()) return TakeOver();
    if (Clock::now() >= deadline) return WaitResult::kTimedOut;
    if (ownedHere) {
      lock.WaitUntil(changed, SleepEnd(deadline, kLongestSleep));
      continue;
    }
    lock.Unlock();
    if (watch)
      watch->Sleep(SleepEnd(deadline, kOwnerLook));
    else
      watch.emplace(*file);  // and look once more before the first sleep
    lock.Lock();
  }
}

// The owner's mark in the file outlives an owner that ends without releasing.
WaitResult NamedMutex::TakeOver() {
  SignalState state;
  const bool abandoned = file->Read(state) && state.value != 0;
  file->Write({1, 0});
  owner = std::this_thread::get_id();
  depth = 1;
  return abandoned ? WaitResult::kAbandoned : WaitResult::kSignalled;
}

bool NamedMutex::Release() {
  const MutexLock lock(mutex);
  if (owner != std::this_thread::get_id()) return false;
  if (--depth > 0) return true;
  file->Write({0, 0});
  LetGo();
  return true;
}

void NamedMutex::AbandonByThisThread() {
  const MutexLock lock(mutex);
  if (owner == std::this_thread::get_id()) LetGo();
}

void NamedMutex::LetGo() {
  owner = std::thread::id();
  depth = 0;
  file->Disown();
  changed.notify_all();
}

class Registry {
 public:
  template <typename Object>
  std::shared_ptr<Object> Get(const std::string& name, SignalKind kind, SharedFile::Mode mode,
                              const SignalState& initial, bool& existed) {
    existed = false;
    const std::string path = SharedFile::PathOf(name);
    const MutexLock lock(mutex_);
    const auto known = objects_.find(path);
    if (known != objects_.end()) {
      if (const std::shared_ptr<NamedObject> object = known->second.lock()) {
        existed = true;
        return object->kind == kind ? std::static_pointer_cast<Object>(object) : nullptr;
      }
    }
    std::unique_ptr<SharedFile> file = SharedFile::Get(path, name, kind, mode, initial, existed);
    if (!file) return nullptr;
    std::erase_if(objects_, [](const auto& entry) { return entry.second.expired(); });
    auto object = std::make_shared<Object>(kind, std::move(file));
    objects_[path] = object;
    return object;
  }

 private:
  Mutex mutex_;
  std::map<std::string, std::weak_ptr<NamedObject>> objects_ KR_GUARDED_BY(mutex_);
};

Registry& Objects() {
  static Registry& registry = *new Registry;  // threads may still use it while the process ends
  return registry;
}

template <typename Object>
std::shared_ptr<Object> Create(const std::string& name, SignalKind kind, const SignalState& initial,
                               bool& existed) {
  if (!name.empty())
    return Objects().Get<Object>(name, kind, SharedFile::Mode::kCreate, initial, existed);
  existed = false;
  std::unique_ptr<SharedFile> file = SharedFile::Unnamed(kind, initial);
  return file ? std::make_shared<Object>(kind, std::move(file)) : nullptr;
}

template <typename Object>
std::shared_ptr<Object> Open(const std::string& name, SignalKind kind) {
  bool existed = false;
  return Objects().Get<Object>(name, kind, SharedFile::Mode::kOpen, {}, existed);
}

class MutexHandle : public MutexObject {
 public:
  explicit MutexHandle(std::shared_ptr<NamedMutex> mutex) : mutex_(std::move(mutex)) {}
  WaitResult Wait(long milliseconds) override {
    const WaitResult result = mutex_->Wait(milliseconds);
    if (result == WaitResult::kSignalled || result == WaitResult::kAbandoned) {
      ownedMutexes.Remove(mutex_);
      ownedMutexes.Add(mutex_);
    }
    return result;
  }
  bool Release() override { return mutex_->Release(); }

 private:
  const std::shared_ptr<NamedMutex> mutex_;
};

class EventHandle : public EventObject {
 public:
  explicit EventHandle(std::shared_ptr<NamedCounter> event) : event_(std::move(event)) {}
  WaitResult Wait(long milliseconds) override { return event_->Wait(milliseconds); }
  bool Set() override { return event_->SetValue(1); }
  bool Reset() override { return event_->SetValue(0); }

 private:
  const std::shared_ptr<NamedCounter> event_;
};

class SemaphoreHandle : public SemaphoreObject {
 public:
  explicit SemaphoreHandle(std::shared_ptr<NamedCounter> semaphore)
      : semaphore_(std::move(semaphore)) {}
  WaitResult Wait(long milliseconds) override { return semaphore_->Wait(milliseconds); }
  bool Release(long count) override { return semaphore_->Add(count); }

 private:
  const std::shared_ptr<NamedCounter> semaphore_;
};

template <typename Handle, typename Object>
std::unique_ptr<Handle> HandleFor(std::shared_ptr<Object> object) {
  return object ? std::make_unique<Handle>(std::move(object)) : nullptr;
}

}  // namespace

std::unique_ptr<MutexObject> CreateMutexObject(const std::string& name, bool owned, bool& existed) {
  auto handle = HandleFor<MutexHandle>(Create<NamedMutex>(name, SignalKind::kMutex, {}, existed));
  // Another process that opened it meanwhile may have been faster.
  if (handle && owned && !existed) existed = handle->Wait(0) != WaitResult::kSignalled;
  return handle;
}

std::unique_ptr<EventObject> CreateEventObject(const std::string& name, bool& existed,
                                               const char*& failedStep) {
  failedStep = nullptr;
  return HandleFor<EventHandle>(Create<NamedCounter>(name, SignalKind::kEvent, {0, 1}, existed));
}

std::unique_ptr<SemaphoreObject> CreateSemaphoreObject(const std::string& name, long initialCount,
                                                       long maximumCount, bool& existed) {
  existed = false;
  constexpr long kMost = std::numeric_limits<std::int32_t>::max();
  if (initialCount < 0 || maximumCount < 1 || maximumCount > kMost || initialCount > maximumCount)
    return nullptr;
  const SignalState initial{static_cast<std::int32_t>(initialCount),
                            static_cast<std::int32_t>(maximumCount)};
  return HandleFor<SemaphoreHandle>(
      Create<NamedCounter>(name, SignalKind::kSemaphore, initial, existed));
}

std::unique_ptr<MutexObject> OpenMutexObject(const std::string& name) {
  return HandleFor<MutexHandle>(Open<NamedMutex>(name, SignalKind::kMutex));
}

std::unique_ptr<EventObject> OpenEventObject(const std::string& name) {
  return HandleFor<EventHandle>(Open<NamedCounter>(name, SignalKind::kEvent));
}

std::unique_ptr<SemaphoreObject> OpenSemaphoreObject(const std::string& name) {
  return HandleFor<SemaphoreHandle>(Open<NamedCounter>(name, SignalKind::kSemaphore));
}
