// The file behind a named synchronisation object.
//
// Nothing of it is mapped into memory: a process of another user that may use the object can thus
// waste our time within bounds, but neither crash nor mislead this process. What a holder must not
// leave behind is kept in file locks, which the system drops when the holder ends, however it ends.
//
//   byte 0  gate    locked while the object is created, opened or closed
//   byte 1  holder  shared lock of every process that holds the object
//   byte 2  state   locked while the state is read or changed
//   byte 3  owner   locked by the process whose thread owns the mutex
//
// A process opens the file of an object once; its threads are kept apart by the object's own lock.
#ifndef KR_UTIL_SIGNALS_SHAREDFILE_POSIX_H
#define KR_UTIL_SIGNALS_SHAREDFILE_POSIX_H

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

#include "util/files/UniqueFd_posix.h"

enum class SignalKind : std::uint32_t { kMutex = 1, kEvent = 2, kSemaphore = 3 };

struct SignalState {
  std::int32_t value = 0;  // event: signalled; semaphore: units; mutex: owned
  std::int32_t limit = 0;  // semaphore only
};

class SharedFile {
 public:
  using Clock = std::chrono::steady_clock;

  enum class Mode { kCreate, kOpen };

  // Null when it cannot be had or is of another kind. `initial` counts when nobody held it.
  static std::unique_ptr<SharedFile> Get(const std::string& path, const std::string& name,
                                         SignalKind kind, Mode mode, const SignalState& initial,
                                         bool& existed);
  static std::unique_ptr<SharedFile> Unnamed(SignalKind kind, const SignalState& initial);

  // Where the object of this name lives; empty when there cannot be one.
  static std::string PathOf(const std::string& name);

  ~SharedFile();
  SharedFile(const SharedFile&) = delete;
  SharedFile& operator=(const SharedFile&) = delete;

  // Locks the state until destroyed. False when another process keeps it from us.
  class StateLock {
   public:
    explicit StateLock(SharedFile& file);
    ~StateLock();
    StateLock(const StateLock&) = delete;
    StateLock& operator=(const StateLock&) = delete;
    explicit operator bool() const { return locked_; }

   private:
    SharedFile& file_;
    bool locked_;
  };

  bool Read(SignalState& state) const;
  // Wakes those who watch.
  bool Write(const SignalState& state);

  bool TryOwn();
  void Disown();

  // Wakes up whenever another thread or process may have changed something.
  class Watch {
   public:
    explicit Watch(const SharedFile& file);
    // Returns at `until` or earlier.
    void Sleep(Clock::time_point until);

   private:
    UniqueFd notify_;
  };

 private:
  SharedFile(UniqueFd fd, std::string path) : fd_(std::move(fd)), path_(std::move(path)) {}

  bool WriteHeader(const std::string& name, SignalKind kind, const SignalState& initial);
  bool HeaderMatches(const std::string& name, SignalKind kind) const;

  UniqueFd fd_;
  std::string path_;  // empty for an unnamed one
};

#endif
