#include <windows.h>

#include <algorithm>

#include "util/files/InputFile.h"

namespace {

HANDLE AsHandle(std::intptr_t value) {
  return reinterpret_cast<HANDLE>(value);
}

}  // namespace

InputFile::~InputFile() {
  if (handle_ != -1) CloseHandle(AsHandle(handle_));
}

bool InputFile::Open(const std::string& path) {
  if (handle_ != -1) return false;
  HANDLE file = CreateFileA(
      path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
      OPEN_EXISTING, access_ == Access::kOnwards ? FILE_FLAG_SEQUENTIAL_SCAN : 0, nullptr);
  if (file == INVALID_HANDLE_VALUE) return false;
  LARGE_INTEGER size;
  if (GetFileType(file) != FILE_TYPE_DISK || !GetFileSizeEx(file, &size)) {
    CloseHandle(file);
    return false;
  }
  handle_ = reinterpret_cast<std::intptr_t>(file);
  size_ = static_cast<std::uint64_t>(size.QuadPart);
  position_ = 0;
  return true;
}

std::ptrdiff_t InputFile::ReadAt(std::uint64_t offset, char* buffer, std::size_t capacity) const {
  OVERLAPPED place{};
  place.Offset = static_cast<DWORD>(offset & 0xFFFFFFFFu);
  place.OffsetHigh = static_cast<DWORD>(offset >> 32);
  const DWORD wanted = static_cast<DWORD>(std::min<std::size_t>(capacity, 1u << 30));
  DWORD count = 0;
  if (!ReadFile(AsHandle(handle_), buffer, wanted, &count, &place)) {
    return GetLastError() == ERROR_HANDLE_EOF ? 0 : -1;
  }
  return static_cast<std::ptrdiff_t>(count);
}
