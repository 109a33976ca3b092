#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "core/HandOverFile.h"
#include "util/files/UniqueFd_posix.h"

namespace hand_over_file {

namespace {

// Neither a link nor a pipe without a writer may catch us.
constexpr int kSafely = O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;

// A second name of the file may be one that the user never meant to hand over or to overwrite.
bool IsTrusted(const struct stat& info) {
  return S_ISREG(info.st_mode) && info.st_uid == geteuid() && info.st_nlink == 1 &&
         (info.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

std::string IdentityOf(const struct stat& info) {
  return std::to_string(info.st_dev) + ':' + std::to_string(info.st_ino) + ':' +
         std::to_string(info.st_size) + ':' + std::to_string(info.st_mtim.tv_sec) + '.' +
         std::to_string(info.st_mtim.tv_nsec);
}

bool ReadAll(int fd, std::size_t limit, std::string& text) {
  char piece[16384];
  for (;;) {
    const ssize_t got = read(fd, piece, sizeof(piece));
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return got == 0;
    text.append(piece, static_cast<std::size_t>(got));
    if (text.size() > limit) return false;
  }
}

bool WriteAll(int fd, const std::string& text) {
  std::size_t done = 0;
  while (done < text.size()) {
    const ssize_t put = write(fd, text.data() + done, text.size() - done);
    if (put < 0 && errno == EINTR) continue;
    if (put <= 0) return false;
    done += static_cast<std::size_t>(put);
  }
  return true;
}

// Text of another program may lack the end of its last line.
bool EndsInMidLine(int fd, off_t size) {
  char last = '\n';
  return size > 0 && pread(fd, &last, 1, size - 1) == 1 && last != '\n';
}

Result WhyNotOpened(const std::string& path) {
  return Exists(path) ? Result::kRefused : Result::kMissing;
}

}  // namespace

bool Exists(const std::string& path) {
  struct stat info {};
  return lstat(path.c_str(), &info) == 0;
}

Result Read(const std::string& path, std::size_t limit, Contents& contents) {
  contents = {};
  struct stat info {};
  const UniqueFd fd(open(path.c_str(), O_RDONLY | kSafely));
  if (!fd) {
    if (lstat(path.c_str(), &info) == 0) contents.identity = IdentityOf(info);
    return WhyNotOpened(path);
  }
  if (fstat(fd.get(), &info) != 0) return Result::kFailed;
  contents.identity = IdentityOf(info);
  if (!IsTrusted(info) || static_cast<std::uintmax_t>(info.st_size) > limit) {
    return Result::kRefused;
  }
  return ReadAll(fd.get(), limit, contents.text) ? Result::kDone : Result::kFailed;
}

bool PutAsideWhenBigger(const std::string& path, std::size_t limit, const std::string& aside) {
  struct stat info {};
  return lstat(path.c_str(), &info) == 0 && IsTrusted(info) &&
         static_cast<std::uintmax_t>(info.st_size) > limit &&
         rename(path.c_str(), aside.c_str()) == 0;
}

Result Write(const std::string& path, const std::string& text, bool append) {
  const UniqueFd fd(open(path.c_str(), O_RDWR | O_CREAT | kSafely, S_IRUSR | S_IWUSR));
  struct stat info {};
  if (!fd) return Exists(path) ? Result::kRefused : Result::kFailed;
  if (fstat(fd.get(), &info) != 0) return Result::kFailed;
  if (!IsTrusted(info)) return Result::kRefused;
  const off_t keep = append ? info.st_size : 0;
  const std::string joint = EndsInMidLine(fd.get(), keep) ? "\n" : "";
  const bool written = ftruncate(fd.get(), keep) == 0 && lseek(fd.get(), keep, SEEK_SET) == keep &&
                       WriteAll(fd.get(), joint + text);
  if (!written && ftruncate(fd.get(), keep) != 0) return Result::kFailed;
  return written ? Result::kDone : Result::kFailed;
}

}  // namespace hand_over_file
