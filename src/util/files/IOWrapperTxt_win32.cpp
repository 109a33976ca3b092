#include <sys/stat.h>
#include <sys/types.h>

#include "util/files/IOWrapper.h"

bool IOWrapperTxt::ReadLine(std::FILE* file, std::string& line) {
  constexpr int kEndByte = 0xFF;
  line.clear();
  if (file == nullptr) return true;
  char piece[512];
  std::size_t used = 0;
  _lock_file(file);
  for (int c = _getc_nolock(file); c != EOF && c != '\n' && c != kEndByte; c = _getc_nolock(file)) {
    piece[used++] = static_cast<char>(c);
    if (used == sizeof(piece)) {
      line.append(piece, used);
      used = 0;
    }
  }
  _unlock_file(file);
  line.append(piece, used);
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
