// A lock between processes that a crash leaves harmless: the system drops it when its holder ends,
// however it ends.
#ifndef KR_UTIL_FILES_FILELOCK_H
#define KR_UTIL_FILES_FILELOCK_H

#include <string>

// Holds a file that at most one object, of this or another process, holds at a time. The file is
// empty and means nothing by being there: it goes with the lock, but a holder that is killed leaves
// it. Where several users may write to its folder, each of them may take the lock. One thread at a
// time.
class FileLock {
 public:
  enum class Result {
    kTaken,
    kBusy,    // somebody held it all the time
    kFailed,  // the file cannot be made, is none that could be ours, or its file system has no
              // locks
  };

  FileLock() = default;
  ~FileLock() { Release(); }
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;

  // Waits up to so many milliseconds; 0 looks once. A lock that this object holds is given up
  // first.
  Result Take(const std::string& path, long milliseconds);
  void Release();
  bool Taken() const { return handle_ != nullptr; }

 private:
  Result TakeNow(const std::string& path);

  void* handle_ = nullptr;
  std::string path_;
};

#endif
