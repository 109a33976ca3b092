#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "d3plot/ResultFile.h"

bool ResultFile::Open(const char* name) {
  Close();
  const int fd = open(name, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (fd < 0) return false;
  struct stat info {};
  if (fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) {
    close(fd);
    return false;
  }
  handle_ = fd;
  size_ = static_cast<std::uint64_t>(info.st_size);
  return true;
}

void ResultFile::Close() {
  if (handle_ >= 0) close(static_cast<int>(handle_));
  handle_ = -1;
  size_ = 0;
}

bool ResultFile::ReadAt(std::uint64_t offset, void* buffer, std::size_t bytes) const {
  char* at = static_cast<char*>(buffer);
  while (bytes > 0) {
    const ssize_t count = pread(static_cast<int>(handle_), at, bytes, static_cast<off_t>(offset));
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    at += count;
    offset += static_cast<std::uint64_t>(count);
    bytes -= static_cast<std::size_t>(count);
  }
  return true;
}
