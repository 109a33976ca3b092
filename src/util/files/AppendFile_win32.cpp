#include "util/files/AppendFile.h"

#include <windows.h>

#include <algorithm>

namespace {

HANDLE Handle(std::intptr_t handle) {
  return reinterpret_cast<HANDLE>(handle);
}

// Readers may look and the file may be replaced, but nobody else may write.
HANDLE OpenIt(const std::string& path, DWORD how) {
  return CreateFileA(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr, how,
                     FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
}

bool CutTo(HANDLE file, std::uint64_t bytes) {
  LARGE_INTEGER place{};
  place.QuadPart = static_cast<LONGLONG>(bytes);
  return SetFilePointerEx(file, place, nullptr, FILE_BEGIN) && SetEndOfFile(file);
}

bool WriteAll(HANDLE file, std::string_view bytes) {
  constexpr std::size_t kMostAtOnce = std::size_t{1} << 24;
  while (!bytes.empty()) {
    DWORD written = 0;
    const auto wanted = static_cast<DWORD>(std::min(bytes.size(), kMostAtOnce));
    if (!WriteFile(file, bytes.data(), wanted, &written, nullptr) || written == 0) return false;
    bytes.remove_prefix(written);
  }
  return true;
}

}  // namespace

bool AppendFile::Make(const std::string& path) {
  Close();
  handle_ = reinterpret_cast<std::intptr_t>(OpenIt(path, CREATE_NEW));
  size_ = 0;
  return IsOpen();
}

bool AppendFile::Open(const std::string& path, std::uint64_t bytes) {
  Close();
  handle_ = reinterpret_cast<std::intptr_t>(OpenIt(path, OPEN_EXISTING));
  size_ = bytes;
  if (IsOpen() && !CutTo(Handle(handle_), bytes)) Close();
  return IsOpen();
}

bool AppendFile::Share(const AppendFile& other) {
  Close();
  const HANDLE self = GetCurrentProcess();
  HANDLE shared = nullptr;
  const bool isShared = other.IsOpen() && DuplicateHandle(self, Handle(other.handle_), self,
                                                          &shared, 0, FALSE, DUPLICATE_SAME_ACCESS);
  if (isShared) handle_ = reinterpret_cast<std::intptr_t>(shared);
  size_ = other.size_;
  return IsOpen();
}

void AppendFile::Close() {
  if (IsOpen()) CloseHandle(Handle(handle_));
  handle_ = -1;
}

bool AppendFile::Append(std::string_view bytes) {
  if (WriteAll(Handle(handle_), bytes)) {
    size_ += bytes.size();
    return true;
  }
  CutTo(Handle(handle_), size_);
  return false;
}

bool AppendFile::Sync() {
  return FlushFileBuffers(Handle(handle_)) != 0;
}

bool AppendFile::IsAt(const std::string& path) const {
  const HANDLE there =
      CreateFileA(path.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                  OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
  if (there == INVALID_HANDLE_VALUE) return false;
  BY_HANDLE_FILE_INFORMATION mine{}, other{};
  const bool same = GetFileInformationByHandle(Handle(handle_), &mine) &&
                    GetFileInformationByHandle(there, &other) &&
                    mine.nFileIndexLow == other.nFileIndexLow &&
                    mine.nFileIndexHigh == other.nFileIndexHigh &&
                    mine.dwVolumeSerialNumber == other.dwVolumeSerialNumber;
  CloseHandle(there);
  return same;
}
