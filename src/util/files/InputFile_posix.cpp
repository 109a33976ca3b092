#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "util/files/FileSystemCalls.h"
#include "util/files/InputFile.h"

InputFile::~InputFile() {
  if (handle_ >= 0) close(static_cast<int>(handle_));
}

bool InputFile::Open(const std::string& path) {
  if (handle_ >= 0) return false;
  const int fd =
      open(file_system::ForSystem(path).c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (fd < 0) return false;
  struct stat info {};
  if (fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) {
    close(fd);
    return false;
  }
  if (access_ == Access::kOnwards) posix_fadvise(fd, 0, 0, POSIX_FADV_SEQUENTIAL);
  handle_ = fd;
  size_ = static_cast<std::uint64_t>(info.st_size);
  position_ = 0;
  return true;
}

std::ptrdiff_t InputFile::ReadAt(std::uint64_t offset, char* buffer, std::size_t capacity) const {
  for (;;) {
    const ssize_t count =
        pread(static_cast<int>(handle_), buffer, capacity, static_cast<off_t>(offset));
    if (count >= 0 || errno != EINTR) return count;
  }
}
