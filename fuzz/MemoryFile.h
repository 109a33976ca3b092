// A file in memory that the readers open by its name.
#ifndef KR_FUZZ_MEMORYFILE_H
#define KR_FUZZ_MEMORYFILE_H

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

class MemoryFile {
 public:
  MemoryFile() : fd_(memfd_create("fuzz", MFD_CLOEXEC)) {
    if (fd_ < 0) std::abort();
    path_ = "/proc/self/fd/" + std::to_string(fd_);
  }
  ~MemoryFile() { close(fd_); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  const std::string& Path() const { return path_; }

  void Fill(const std::uint8_t* data, std::size_t size) {
    const bool filled =
        ftruncate(fd_, 0) == 0 && pwrite(fd_, data, size, 0) == static_cast<ssize_t>(size);
    if (!filled) std::abort();
  }

 private:
  int fd_;
  std::string path_;
};

#endif
