#include "util/files/FileLock.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>

#include "util/files/FileDirWrapper.h"
#include "util/files/UniqueFd_posix.h"

namespace {

bool SetLock(int file, short type) {
  struct flock lock {};
  lock.l_type = type;
  lock.l_whence = SEEK_SET;
  return fcntl(file, F_OFD_SETLK, &lock) == 0;
}

// A user who may not write the file can still see whether somebody holds it.
bool IsHeld(const char* path) {
  const UniqueFd file(open(path, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  struct flock lock {};
  lock.l_type = F_WRLCK;
  lock.l_whence = SEEK_SET;
  return file && fcntl(file.get(), F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

// Made by this call. Who may write to the folder may take the lock, whatever the maker's mask.
UniqueFd MakeFile(const std::string& path, int flags) {
  constexpr mode_t kOthersWrite = S_IWGRP | S_IWOTH;
  constexpr mode_t kOwn = S_IRUSR | S_IWUSR;
  UniqueFd file(open(path.c_str(), flags | O_CREAT | O_EXCL, kOwn));
  std::string folder;
  struct stat info {};
  if (file && FileDirWrapper::DirOf(path, folder) && stat(folder.c_str(), &info) == 0) {
    fchmod(file.get(), kOwn | S_IRGRP | S_IROTH | (info.st_mode & kOthersWrite));
  }
  return file;
}

// The descriptor is kept one higher, so that descriptor 0 differs from "nothing taken".
int FileOf(void* handle) {
  return static_cast<int>(reinterpret_cast<std::intptr_t>(handle)) - 1;
}

}  // namespace

FileLock::Result FileLock::TakeNow(const std::string& path) {
  constexpr int kFlags = O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
  UniqueFd file(open(path.c_str(), kFlags));
  if (!file && errno == ENOENT) {
    file = MakeFile(path, kFlags);
    if (!file && errno == EEXIST) return Result::kBusy;  // somebody was faster
  }
  if (!file && errno == EACCES && IsHeld(path.c_str())) return Result::kBusy;
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
