// The system's synchronisation objects behind PTWrapperSignal: closing is the destructor's work.
// Waits may run in several threads at once.
#ifndef KR_UTIL_SIGNALS_SIGNALOBJECT_H
#define KR_UTIL_SIGNALS_SIGNALOBJECT_H

#include <memory>
#include <string>

// The values are PTWrapperSignal's results.
enum class WaitResult { kSignalled = 0, kTimedOut = 1, kAbandoned = 2, kFailed = 3 };

class SignalObject {
 public:
  virtual ~SignalObject() = default;
  // A negative limit is none.
  virtual WaitResult Wait(long milliseconds) = 0;
};

class MutexObject : public SignalObject {
 public:
  virtual bool Release() = 0;
};

class EventObject : public SignalObject {
 public:
  virtual bool Set() = 0;
  virtual bool Reset() = 0;
};

class SemaphoreObject : public SignalObject {
 public:
  virtual bool Release(long count) = 0;
};

// Null when the system refuses. `existed` tells whether another holder had made the object; its
// state is then left as it is. An empty name makes one of this process alone (not for events).
std::unique_ptr<MutexObject> CreateMutexObject(const std::string& name, bool owned, bool& existed);
// `failedStep` is the message of a preparing step that failed, or null.
std::unique_ptr<EventObject> CreateEventObject(const std::string& name, bool& existed,
                                               const char*& failedStep);
std::unique_ptr<SemaphoreObject> CreateSemaphoreObject(const std::string& name, long initialCount,
                                                       long maximumCount, bool& existed);

// Null when there is none of this kind.
std::unique_ptr<MutexObject> OpenMutexObject(const std::string& name);
std::unique_ptr<EventObject> OpenEventObject(const std::string& name);
std::unique_ptr<SemaphoreObject> OpenSemaphoreObject(const std::string& name);

#endif
