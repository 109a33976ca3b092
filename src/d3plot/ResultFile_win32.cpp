#include <windows.h>

#include <algorithm>

#include "d3plot/ResultFile.h"

namespace {

HANDLE AsHandle(std::intptr_t value) {
  return reinterpret_cast<HANDLE>(value);
}

}  // namespace

bool ResultFile::Open(const char* name) {
  Close();
  HANDLE file =
      CreateFileA(name, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                  nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return false;
  LARGE_INTEGER size;
  if (GetFileType(file) != FILE_TYPE_DISK || !GetFileSizeEx(file, &size)) {
    CloseHandle(file);
    return false;
  }
  handle_ = reinterpret_cast<std::intptr_t>(file);
  size_ = static_cast<std::uint64_t>(size.QuadPart);
  return true;
}

void ResultFile::Close() {
  if (handle_ != -1) CloseHandle(AsHandle(handle_));
  handle_ = -1;
  size_ = 0;
}

bool ResultFile::ReadAt(std::uint64_t offset, void* buffer, std::size_t bytes) const {
  char* at = static_cast<char*>(buffer);
  while (bytes > 0) {
    OVERLAPPED place{};
    place.Offset = static_cast<DWORD>(offset & 0xFFFFFFFFu);
    place.OffsetHigh = static_cast<DWORD>(offset >> 32);
    const DWORD wanted = static_cast<DWORD>(std::min<std::size_t>(bytes, 1u << 30));
    DWORD count = 0;
    if (!ReadFile(AsHandle(handle_), at, wanted, &count, &place) || count == 0) return false;
    at += count;
    offset += count;
    bytes -= count;
  }
  return true;
}
