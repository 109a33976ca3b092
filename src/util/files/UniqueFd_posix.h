// A file descriptor that closes itself.
#ifndef KR_UTIL_FILES_UNIQUEFD_POSIX_H
#define KR_UTIL_FILES_UNIQUEFD_POSIX_H

#include <unistd.h>

#include <utility>

class UniqueFd {
 public:
  UniqueFd() = default;
  explicit UniqueFd(int fd) : fd_(fd) {}
  ~UniqueFd() { Reset(); }
  UniqueFd(UniqueFd&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
  UniqueFd& operator=(UniqueFd&& other) noexcept {
    if (this != &other) {
      Reset();
      fd_ = std::exchange(other.fd_, -1);
    }
    return *this;
  }

  int get() const { return fd_; }
  explicit operator bool() const { return fd_ >= 0; }
  int Detach() { return std::exchange(fd_, -1); }
  void Reset() {
    if (fd_ >= 0) close(std::exchange(fd_, -1));
  }

 private:
  int fd_ = -1;
};

#endif
