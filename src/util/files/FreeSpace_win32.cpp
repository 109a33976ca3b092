#include <windows.h>

#include "util/files/FreeSpace.h"

std::optional<std::uint64_t> FreeSpace(const std::string& folder) {
  ULARGE_INTEGER available;
  if (!GetDiskFreeSpaceExA(folder.c_str(), &available, nullptr, nullptr)) return std::nullopt;
  return available.QuadPart;
}
