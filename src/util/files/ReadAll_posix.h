// Reading a descriptor to its end. Any thread.
#ifndef KR_UTIL_FILES_READALL_POSIX_H
#define KR_UTIL_FILES_READALL_POSIX_H

#include <unistd.h>

#include <cerrno>
#include <string>

// Puts what comes behind `bytes`. False when reading fails, errno says why, or when they would have
// become more than `limit` bytes.
inline bool ReadAll(int fd, std::size_t limit, std::string& bytes) {
  char piece[16384];
  for (;;) {
    const ssize_t got = read(fd, piece, sizeof(piece));
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return got == 0;
    bytes.append(piece, static_cast<std::size_t>(got));
    if (bytes.size() > limit) return false;
  }
}

#endif
