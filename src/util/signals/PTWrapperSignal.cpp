#include <mutex>
#include <vector>

#include "util/process/PTWrapper.h"
#include "util/signals/Mutex.h"
#include "util/signals/SignalObject.h"

namespace {

constexpr int kFailed = 0;
constexpr int kNew = 1;
constexpr int kExisting = 2;
constexpr int kWaitError = static_cast<int>(WaitResult::kFailed);

// A released semaphore's handle is forgotten, not closed: the object lives on with the process.
void Forget(std::unique_ptr<SemaphoreObject> semaphore) {
  static Mutex mutex;
  static std::vector<std::unique_ptr<SemaphoreObject>> forgotten KR_GUARDED_BY(mutex);
  const MutexLock lock(mutex);
  forgotten.push_back(std::move(semaphore));
}

}  // namespace

struct PTWrapperSignal::Private {
  std::unique_ptr<MutexObject> mutex;
  std::unique_ptr<EventObject> event;
  std::unique_ptr<SemaphoreObject> semaphore;
  bool semaphoreCreated = false;  // stays when the handle is forgotten
  std::unique_ptr<std::recursive_mutex> section;
};

namespace {

const char* WaitMessage(WaitResult result, const char* abandoned) {
  switch (result) {
    case WaitResult::kAbandoned:
      return abandoned;
    case WaitResult::kTimedOut:
      return "Time out return";
    case WaitResult::kFailed:
      return "Unknown error";
    case WaitResult::kSignalled:
      break;
  }
  return nullptr;
}

constexpr char kMutexAbandoned[] = "the owner thread does not release the mutex";
constexpr char kWaitAbandoned[] = "wait abandoned";

}  // namespace

PTWrapperSignal::PTWrapperSignal() : p_(std::make_unique<Private>()) {}

PTWrapperSignal::~PTWrapperSignal() {
  CloseMutexSignal();
  CloseEventSignal();
  CloseSemaphoreSignal();
  DeleteCriticalSection();
}

int PTWrapperSignal::CreateMutexSignal(const std::string& name, bool initialOwner) {
  if (p_->mutex) {
    SetLastError("MUTEX signal %s has been created", name.c_str());
    return kFailed;
  }
  bool existed = false;
  p_->mutex = CreateMutexObject(name, initialOwner, existed);
  if (!p_->mutex) {
    SetLastError("Create MUTEX %s failed", name.c_str());
    return kFailed;
  }
  if (!existed) return kNew;
  SetLastError("MUTEX %s already exists", name.c_str());
  return kExisting;
}

bool PTWrapperSignal::OpenMutexSignal(const std::string& name) {
  if (p_->mutex) {
    SetLastError("MUTEX signal %s has been opened", name.c_str());
    return false;
  }
  if (name.empty()) {
    SetLastError("MUTEX name is empty");
    return false;
  }
  p_->mutex = OpenMutexObject(name);
  if (!p_->mutex) SetLastError("open MUTEX signal failed");
  return p_->mutex != nullptr;
}

int PTWrapperSignal::WaitForMutexSignal(long milliseconds) {
  if (!p_->mutex) {
    SetLastError("MUTEX handle is null");
    return kWaitError;
  }
  const WaitResult result = p_->mutex->Wait(milliseconds);
  if (const char* message = WaitMessage(result, kMutexAbandoned)) SetLastError("%s", message);
  return static_cast<int>(result);
}

bool PTWrapperSignal::ReleaseMutexSignal() {
  if (!p_->mutex) {
    SetLastError("MUTEX not created yet");
    return false;
  }
  return p_->mutex->Release();
}

bool PTWrapperSignal::CloseMutexSignal() {
  if (!p_->mutex) {
    SetLastError("MUTEX handle is null");
    return false;
  }
  p_->mutex.reset();
  return true;
}

int PTWrapperSignal::CreateEventSignal(const std::string& name) {
  if (name.empty()) {
    SetLastError("EVENT name is empty");
    return kFailed;
  }
  if (p_->event) {
    SetLastError("EVENT has been created");
    return kFailed;
  }
  bool existed = false;
  const char* failedStep = nullptr;
  p_->event = CreateEventObject(name, existed, failedStep);
  if (failedStep) {
    SetLastError("%s", failedStep);
    return kFailed;
  }
  if (!p_->event) {
    SetLastError("Create EVENT %s failed", name.c_str());
    return kFailed;
  }
  if (!existed) return kNew;
  SetLastError("EVENT %s already exists", name.c_str());
  return kExisting;
}

bool PTWrapperSignal::OpenEventSignal(const std::string& name) {
  if (p_->event) {
    SetLastError("EVENT handle has been opened");
    return false;
  }
  p_->event = OpenEventObject(name);
  if (!p_->event) SetLastError("open EVENT %s failed", name.c_str());
  return p_->event != nullptr;
}

bool PTWrapperSignal::SetEventSignal() {
  if (!p_->event) {
    SetLastError("EVENT handle is null");
    return false;
  }
  return p_->event->Set();
}

bool PTWrapperSignal::ResetEventSignal() {
  if (!p_->event) {
    SetLastError("EVENT handle is null");
    return false;
  }
  return p_->event->Reset();
}

bool PTWrapperSignal::CloseEventSignal() {
  if (!p_->event) {
    SetLastError("EVENT handle is null");
    return false;
  }
  p_->event.reset();
  return true;
}

int PTWrapperSignal::WaitForEventSignal(long milliseconds) {
  if (!p_->event) {
    SetLastError("EVENT handle is null");
    return kWaitError;
  }
  const WaitResult result = p_->event->Wait(milliseconds);
  if (const char* message = WaitMessage(result, kWaitAbandoned)) SetLastError("%s", message);
  return static_cast<int>(result);
}

bool PTWrapperSignal::IsEventSignalCreated() const {
  return p_->event != nullptr;
}

int PTWrapperSignal::CreateSemaphoreSignal(const std::string& name, long initialCount,
                                           long maximumCount) {
  if (p_->semaphoreCreated) {
    SetLastError("find an opened SEMAPHORE");
    return kFailed;
  }
  if (name.empty()) {
    SetLastError("SEMAPHORE name is empty");
    return kFailed;
  }
  bool existed = false;
  p_->semaphore = CreateSemaphoreObject(name, initialCount, maximumCount, existed);
  p_->semaphoreCreated = p_->semaphore != nullptr;
  if (!p_->semaphore) {
    SetLastError("Create SEMAPHORE %s failed", name.c_str());
    return kFailed;
  }
  if (!existed) return kNew;
  SetLastError("SEMAPHORE %s already exists", name.c_str());
  return kExisting;
}

int PTWrapperSignal::CreateSemaphoreSignal(long initialCount, long maximumCount) {
  if (p_->semaphoreCreated) {
    SetLastError("find an opened SEMAPHORE");
    return kFailed;
  }
  bool existed = false;
  p_->semaphore = CreateSemaphoreObject({}, initialCount, maximumCount, existed);
  p_->semaphoreCreated = p_->semaphore != nullptr;
  if (p_->semaphore) return kNew;
  SetLastError("Create SEMAPHORE failed");
  return kFailed;
}

bool PTWrapperSignal::OpenSemaphoreSignal(const std::string& name) {
  if (p_->semaphoreCreated) {
    SetLastError("SEMAPHORE handle is opened");
    return false;
  }
  p_->semaphore = OpenSemaphoreObject(name);
  p_->semaphoreCreated = p_->semaphore != nullptr;
  if (!p_->semaphore) SetLastError("open SEMAPHORE %s failed", name.c_str());
  return p_->semaphoreCreated;
}

bool PTWrapperSignal::CloseSemaphoreSignal() {
  if (!p_->semaphoreCreated) {
    SetLastError("SEMAPHORE handle is null");
    return false;
  }
  p_->semaphore.reset();
  p_->semaphoreCreated = false;
  return true;
}

bool PTWrapperSignal::ReleaseSemaphoreSignal(int count) {
  if (!p_->semaphoreCreated) {
    SetLastError("SEMAPHORE handle is null");
    return false;
  }
  if (!p_->semaphore) return false;
  const bool released = p_->semaphore->Release(count);
  Forget(std::move(p_->semaphore));
  return released;
}

int PTWrapperSignal::WaitForSemaphoreSignal(long milliseconds) {
  if (!p_->semaphoreCreated) {
    SetLastError("SEMAPHORE handle is null");
    return kWaitError;
  }
  const WaitResult result = p_->semaphore ? p_->semaphore->Wait(milliseconds) : WaitResult::kFailed;
  if (const char* message = WaitMessage(result, kWaitAbandoned)) SetLastError("%s", message);
  return static_cast<int>(result);
}

bool PTWrapperSignal::IsSemaphoreSignalCreated() const {
  return p_->semaphoreCreated;
}

bool PTWrapperSignal::InitializeCriticalSection() {
  if (p_->section) {
    SetLastError("Find opened CRITICAL SECTION");
    return false;
  }
  p_->section = std::make_unique<std::recursive_mutex>();
  return true;
}

bool PTWrapperSignal::DeleteCriticalSection() {
  if (!p_->section) {
    SetLastError("CRITICAL SECTION has not been initialized");
    return false;
  }
  p_->section.reset();
  return true;
}

bool PTWrapperSignal::EnterCriticalSection() {
  if (!p_->section) {
    SetLastError("CRITICAL SECTION has not been initialized");
    return false;
  }
  p_->section->lock();
  return true;
}

bool PTWrapperSignal::LeaveCriticalSection() {
  if (!p_->section) {
    SetLastError("CRITICAL SECTION has not been initialized");
    return false;
  }
  p_->section->unlock();
  return true;
}

bool PTWrapperSignal::IsCriticalSectionCreated() const {
  return p_->section != nullptr;
}
