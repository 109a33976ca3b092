#include <fcntl.h>
#include <sys/stat.h>

#include "util/files/FileSystemCalls.h"
#include "util/files/IOWrapper.h"

bool IOWrapperTxt::ReadLine(std::FILE* file, std::string& line) {
  constexpr int kEndByte = 0xFF;
  line.clear();
  if (file == nullptr) return true;
  char piece[512];
  std::size_t used = 0;
  flockfile(file);
  for (int c = getc_unlocked(file); c != EOF && c != '\n' && c != kEndByte;
       c = getc_unlocked(file)) {
    piece[used++] = static_cast<char>(c);
    if (used == sizeof(piece)) {
      line.append(piece, used);
      used = 0;
    }
  }
  funlockfile(file);
  line.append(piece, used);
  return true;
}

bool IOWrapperTxt::FileStatInfo(const std::string& path, std::int64_t& created,
                                std::int64_t& accessed, std::int64_t& modified,
                                std::int64_t& size) {
  struct statx info {};
  const std::string own = file_system::ForSystem(path);
  if (statx(AT_FDCWD, own.c_str(), 0, STATX_BASIC_STATS | STATX_BTIME, &info) != 0) return false;
  accessed = info.stx_atime.tv_sec;
  modified = info.stx_mtime.tv_sec;
  // Not every file system knows when a file was made.
  created = (info.stx_mask & STATX_BTIME) != 0 ? info.stx_btime.tv_sec : info.stx_ctime.tv_sec;
  size = static_cast<std::int64_t>(info.stx_size);
  return true;
}
