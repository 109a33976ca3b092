#include "util/files/FileHold.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <utility>

#include "util/files/FileSystemCalls.h"

namespace {

// The descriptor is kept one higher, so that descriptor 0 differs from "nothing open".
void* HandleOf(int file) {
  return reinterpret_cast<void*>(static_cast<std::intptr_t>(file) + 1);
}

int FileOf(void* handle) {
  return static_cast<int>(reinterpret_cast<std::intptr_t>(handle)) - 1;
}

}  // namespace

FileHold::FileHold(FileHold&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}

FileHold& FileHold::operator=(FileHold&& other) noexcept {
  std::swap(handle_, other.handle_);
  return *this;
}

FileHold::~FileHold() {
  if (handle_ != nullptr) close(FileOf(handle_));
}

bool FileHold::Open(const std::string& path) {
  const std::string own = file_system::ForSystem(path);
  if (file_system::KindOf(own) == file_system::Kind::kFolder) return false;
  const int file = open(own.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  if (file < 0) return false;
  // File systems without locks still give the open file.
  if (flock(file, LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
    close(file);
    return false;
  }
  handle_ = HandleOf(file);
  return true;
}
