// Locks of this process, and the words by which a class says what they guard. Clang checks them
// when it compiles; an access without the lock is an error there. Any thread.
#ifndef KR_UTIL_SIGNALS_MUTEX_H
#define KR_UTIL_SIGNALS_MUTEX_H

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <shared_mutex>

#if defined(__clang__)
#define KR_THREAD_SAFETY(attribute) __attribute__((attribute))
#else
#define KR_THREAD_SAFETY(attribute)
#endif

// Of a member: it is only used while this lock is held (written, for a shared lock; read while it
// is held in either way).
#define KR_GUARDED_BY(lock) KR_THREAD_SAFETY(guarded_by(lock))
// Of a function, behind its head: the caller holds the locks, or must not hold them.
#define KR_REQUIRES(...) KR_THREAD_SAFETY(requires_capability(__VA_ARGS__))
#define KR_EXCLUDES(...) KR_THREAD_SAFETY(locks_excluded(__VA_ARGS__))

// Of classes that are locks, and of the functions that take them and let them go.
#define KR_CAPABILITY(name) KR_THREAD_SAFETY(capability(name))
#define KR_SCOPED_CAPABILITY KR_THREAD_SAFETY(scoped_lockable)
#define KR_ACQUIRE(...) KR_THREAD_SAFETY(acquire_capability(__VA_ARGS__))
#define KR_ACQUIRE_SHARED(...) KR_THREAD_SAFETY(acquire_shared_capability(__VA_ARGS__))
#define KR_RELEASE(...) KR_THREAD_SAFETY(release_capability(__VA_ARGS__))

// Taken by MutexLock. The thread that holds it must not take it again.
class KR_CAPABILITY("mutex") Mutex {
 private:
  friend class MutexLock;
  std::mutex mutex_;
};

// Holds a mutex to the end of its scope.
class KR_SCOPED_CAPABILITY MutexLock {
 public:
  explicit MutexLock(Mutex& mutex) KR_ACQUIRE(mutex) : lock_(mutex.mutex_) {}
  ~MutexLock() KR_RELEASE() {}
  MutexLock(const MutexLock&) = delete;
  MutexLock& operator=(const MutexLock&) = delete;

  // For a while within the scope.
  void Unlock() KR_RELEASE() { lock_.unlock(); }
  void Lock() KR_ACQUIRE() { lock_.lock(); }

  // Lets the mutex go until it is woken, holds it again on return. May return for no reason: call
  // it in a loop that looks at what is waited for.
  void Wait(std::condition_variable& changed) { changed.wait(lock_); }
  // The same to a moment at most; false when that has come.
  bool WaitUntil(std::condition_variable& changed, std::chrono::steady_clock::time_point end) {
    return changed.wait_until(lock_, end) == std::cv_status::no_timeout;
  }

 private:
  std::unique_lock<std::mutex> lock_;
};

// For what calls back while it holds the lock: the thread that holds it may take it again.
class KR_CAPABILITY("recursive mutex") RecursiveMutex {
 private:
  friend class RecursiveLock;
  std::recursive_mutex mutex_;
};

class KR_SCOPED_CAPABILITY RecursiveLock {
 public:
  explicit RecursiveLock(RecursiveMutex& mutex) KR_ACQUIRE(mutex) : lock_(mutex.mutex_) {}
  ~RecursiveLock() KR_RELEASE() {}
  RecursiveLock(const RecursiveLock&) = delete;
  RecursiveLock& operator=(const RecursiveLock&) = delete;

 private:
  const std::lock_guard<std::recursive_mutex> lock_;
};

// Many may read at once, one writes alone.
class KR_CAPABILITY("shared mutex") SharedMutex {
 private:
  friend class ReadLock;
  friend class WriteLock;
  std::shared_mutex mutex_;
};

class KR_SCOPED_CAPABILITY ReadLock {
 public:
  explicit ReadLock(SharedMutex& mutex) KR_ACQUIRE_SHARED(mutex) : lock_(mutex.mutex_) {}
  ~ReadLock() KR_RELEASE() {}
  ReadLock(const ReadLock&) = delete;
  ReadLock& operator=(const ReadLock&) = delete;

 private:
  const std::shared_lock<std::shared_mutex> lock_;
};

class KR_SCOPED_CAPABILITY WriteLock {
 public:
  explicit WriteLock(SharedMutex& mutex) KR_ACQUIRE(mutex) : lock_(mutex.mutex_) {}
  ~WriteLock() KR_RELEASE() {}
  WriteLock(const WriteLock&) = delete;
  WriteLock& operator=(const WriteLock&) = delete;

 private:
  const std::unique_lock<std::shared_mutex> lock_;
};

#endif
