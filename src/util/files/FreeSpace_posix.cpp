#include "util/files/FreeSpace.h"

#include <sys/statvfs.h>

#include <cerrno>

#include "util/files/FileSystemCalls.h"

std::optional<std::uint64_t> FreeSpace(const std::string& folder) {
  const std::string path = file_system::ForSystem(folder);
  struct statvfs info {};
  int result = 0;
  do {
    result = statvfs(path.c_str(), &info);
  } while (result != 0 && errno == EINTR);
  if (result != 0) return std::nullopt;
  return std::uint64_t{info.f_bavail} * info.f_frsize;
}
