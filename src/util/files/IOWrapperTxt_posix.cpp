#include <fcntl.h>
#include <sys/stat.h>

#include "util/files/FileSystemCalls.h"
#include "util/files/IOWrapper.h"
#include "util/files/LineBytes.h"

bool IOWrapperTxt::ReadLine(std::FILE* file, std::string& line) {
  line.clear();
  if (file == nullptr) return true;
  flockfile(file);
  AppendLine([file] { return getc_unlocked(file); }, line);
  funlockfile(file);
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
