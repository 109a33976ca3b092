#include <sys/stat.h>
#include <sys/types.h>

#include "util/files/IOWrapper.h"
#include "util/files/LineBytes.h"

bool IOWrapperTxt::ReadLine(std::FILE* file, std::string& line) {
  line.clear();
  if (file == nullptr) return true;
  _lock_file(file);
  AppendLine([file] { return _getc_nolock(file); }, line);
  _unlock_file(file);
  return true;
}

bool IOWrapperTxt::FileStatInfo(const std::string& path, std::int64_t& created,
                                std::int64_t& accessed, std::int64_t& modified,
                                std::int64_t& size) {
  struct __stat64 info {};
  if (_stat64(path.c_str(), &info) != 0) return false;
  created = info.st_ctime;
  accessed = info.st_atime;
  modified = info.st_mtime;
  size = info.st_size;
  return true;
}
