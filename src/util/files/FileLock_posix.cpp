#include "util/files/FileLock.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>

#include "util/files/UniqueFd_posix.h"

namespace {

bool SetLock(int file, short type) {
  struct flock lock {};
  lock.l_type = type;
  lock.l_whence = SEEK_SET;
  return fcntl(file, F_OFD_SETLK, &lock) == 0;
}

// The descriptor is kept one higher, so that descriptor 0 differs from "nothing taken".
int FileOf(void* handle) {
  return static_cast<int>(reinterpret_cast<std::intptr_t>(handle)) - 1;
}

}  // namespace

FileLock::Result FileLock::TakeNow(const std::string& path) {
  constexpr int kFlags = O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
  UniqueFd file(open(path.c_str(), kFlags, S_IRUSR | S_IWUSR));
  struct stat info {};
  if (!file || fstat(file.get(), &info) != 0) return Result::kFailed;
  if (!S_ISREG(info.st_mode)) return Result::kFailed;
  if (!SetLock(file.get(), F_WRLCK)) {
    return errno == EAGAIN || errno == EACCES ? Result::kBusy : Result::kFailed;
  }
  // A holder that let go between the opening and the lock has taken the file away.
  if (fstat(file.get(), &info) != 0 || info.st_nlink == 0) return Result::kBusy;
  handle_ = reinterpret_cast<void*>(static_cast<std::intptr_t>(file.Detach()) + 1);
  return Result::kTaken;
}

// A program that is being started at this moment may have a copy of the descriptor for a blink, so
// the lock is not left to its closing.
void FileLock::Release() {
  if (handle_ == nullptr) return;
  const UniqueFd file(FileOf(handle_));
  struct stat mine {
  }, there{};
  if (fstat(file.get(), &mine) == 0 && lstat(path_.c_str(), &there) == 0 &&
      mine.st_ino == there.st_ino && mine.st_dev == there.st_dev) {
    unlink(path_.c_str());
  }
  SetLock(file.get(), F_UNLCK);
  handle_ = nullptr;
}
