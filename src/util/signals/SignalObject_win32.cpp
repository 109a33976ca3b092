#include "util/signals/SignalObject.h"

#include <windows.h>

namespace {

// Closes its handle.
class Handle {
 public:
  explicit Handle(HANDLE handle) : handle_(handle) {}
  ~Handle() { CloseHandle(handle_); }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;

  HANDLE get() const { return handle_; }
  WaitResult Wait(long milliseconds) const {
    switch (WaitForSingleObject(handle_,
                                milliseconds < 0 ? INFINITE : static_cast<DWORD>(milliseconds))) {
      case WAIT_OBJECT_0:
        return WaitResult::kSignalled;
      case WAIT_ABANDONED:
        return WaitResult::kAbandoned;
      case WAIT_TIMEOUT:
        return WaitResult::kTimedOut;
      default:
        return WaitResult::kFailed;
    }
  }

 private:
  const HANDLE handle_;
};

// An object that is waited for through its handle.
template <typename Object>
class WithHandle : public Object {
 public:
  explicit WithHandle(HANDLE handle) : handle_(handle) {}
  WaitResult Wait(long milliseconds) override { return handle_.Wait(milliseconds); }

 protected:
  const Handle handle_;
};

class MutexHandle : public WithHandle<MutexObject> {
 public:
  using WithHandle::WithHandle;
  bool Release() override { return ReleaseMutex(handle_.get()) != 0; }
};

class EventHandle : public WithHandle<EventObject> {
 public:
  using WithHandle::WithHandle;
  bool Set() override { return SetEvent(handle_.get()) != 0; }
  bool Reset() override { return ResetEvent(handle_.get()) != 0; }
};

class SemaphoreHandle : public WithHandle<SemaphoreObject> {
 public:
  using WithHandle::WithHandle;
  bool Release(long count) override { return ReleaseSemaphore(handle_.get(), count, nullptr) != 0; }
};

template <typename Object>
std::unique_ptr<Object> Wrap(HANDLE handle) {
  return handle ? std::make_unique<Object>(handle) : nullptr;
}

const char* NameOrNull(const std::string& name) {
  return name.empty() ? nullptr : name.c_str();
}

}  // namespace

std::unique_ptr<MutexObject> CreateMutexObject(const std::string& name, bool owned, bool& existed) {
  const HANDLE handle = CreateMutexA(nullptr, owned, NameOrNull(name));
  existed = handle && GetLastError() == ERROR_ALREADY_EXISTS;
  return Wrap<MutexHandle>(handle);
}

std::unique_ptr<EventObject> CreateEventObject(const std::string& name, bool& existed,
                                               const char*& failedStep) {
  failedStep = nullptr;
  existed = false;
  // A null access list, not a missing one: every user's process may open the event.
  SECURITY_DESCRIPTOR descriptor;
  if (!InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION))
    failedStep = "InitializeSecurityDescriptor failed";
  else if (!SetSecurityDescriptorDacl(&descriptor, TRUE, nullptr, FALSE))
    failedStep = "SetSecurityDescriptorDacl failed";
  if (failedStep) return nullptr;
  SECURITY_ATTRIBUTES attributes{sizeof attributes, &descriptor, FALSE};
  const HANDLE handle = CreateEventA(&attributes, FALSE, FALSE, name.c_str());
  existed = handle && GetLastError() == ERROR_ALREADY_EXISTS;
  return Wrap<EventHandle>(handle);
}

std::unique_ptr<SemaphoreObject> CreateSemaphoreObject(const std::string& name, long initialCount,
                                                       long maximumCount, bool& existed) {
  const HANDLE handle = CreateSemaphoreA(nullptr, initialCount, maximumCount, NameOrNull(name));
  existed = handle && GetLastError() == ERROR_ALREADY_EXISTS;
  return Wrap<SemaphoreHandle>(handle);
}

std::unique_ptr<MutexObject> OpenMutexObject(const std::string& name) {
  return Wrap<MutexHandle>(OpenMutexA(SYNCHRONIZE, FALSE, name.c_str()));
}

std::unique_ptr<EventObject> OpenEventObject(const std::string& name) {
  return Wrap<EventHandle>(OpenEventA(EVENT_ALL_ACCESS, FALSE, name.c_str()));
}

std::unique_ptr<SemaphoreObject> OpenSemaphoreObject(const std::string& name) {
  return Wrap<SemaphoreHandle>(
      OpenSemaphoreA(SYNCHRONIZE | SEMAPHORE_MODIFY_STATE, FALSE, name.c_str()));
}
