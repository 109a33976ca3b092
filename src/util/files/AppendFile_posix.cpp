#include "util/files/AppendFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "util/files/UniqueFd_posix.h"

namespace {

constexpr int kFlags = O_WRONLY | O_APPEND | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;

bool WriteAll(int file, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = write(file, bytes.data(), bytes.size());
    if (written > 0) {
      bytes.remove_prefix(static_cast<std::size_t>(written));
    } else if (written == 0 || errno != EINTR) {
      return false;
    }
  }
  return true;
}

}  // namespace

bool AppendFile::Make(const std::string& path) {
  Close();
  handle_ = open(path.c_str(), kFlags | O_CREAT | O_EXCL, S_IRUSR | S_IWUSR);
  size_ = 0;
  return IsOpen();
}

bool AppendFile::Open(const std::string& path, std::uint64_t bytes) {
  Close();
  UniqueFd file(open(path.c_str(), kFlags));
  struct stat info {};
  if (!file || fstat(file.get(), &info) != 0 || !S_ISREG(info.st_mode)) return false;
  if (fchmod(file.get(), S_IRUSR | S_IWUSR) != 0) return false;
  if (ftruncate(file.get(), static_cast<off_t>(bytes)) != 0) return false;
  handle_ = file.Detach();
  size_ = bytes;
  return true;
}

bool AppendFile::Share(const AppendFile& other) {
  Close();
  if (other.IsOpen()) handle_ = fcntl(static_cast<int>(other.handle_), F_DUPFD_CLOEXEC, 0);
  size_ = other.size_;
  return IsOpen();
}

void AppendFile::Close() {
  if (IsOpen()) close(static_cast<int>(handle_));
  handle_ = -1;
}

bool AppendFile::Append(std::string_view bytes) {
  const int file = static_cast<int>(handle_);
  if (WriteAll(file, bytes)) {
    size_ += bytes.size();
    return true;
  }
  [[maybe_unused]] const int cut = ftruncate(file, static_cast<off_t>(size_));
  return false;
}

bool AppendFile::Sync() {
  return fdatasync(static_cast<int>(handle_)) == 0;
}

bool AppendFile::IsAt(const std::string& path) const {
  struct stat mine {
  }, there{};
  return fstat(static_cast<int>(handle_), &mine) == 0 && lstat(path.c_str(), &there) == 0 &&
         mine.st_ino == there.st_ino && mine.st_dev == there.st_dev;
}
