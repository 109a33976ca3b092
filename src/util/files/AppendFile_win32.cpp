#include "util/files/AppendFile.h"

#include <windows.h>

#include <algorithm>

namespace {

HANDLE Handle(std::intptr_t handle) {
  return reinterpret_cast<HANDLE>(handle);
}

// Readers may look and the file may be replaced, but nobody else may write. The system lets one
// call at a time into a file that is opened for synchronous use, duplicates of its handle included:
// a write would wait for a flush. So it is opened for overlapped use.
HANDLE OpenIt(const std::string& path, DWORD how) {
  return CreateFileA(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr, how,
                     FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT | FILE_FLAG_OVERLAPPED,
                     nullptr);
}

bool CutTo(HANDLE file, std::uint64_t bytes) {
  FILE_END_OF_FILE_INFO end{};
  end.EndOfFile.QuadPart = static_cast<LONGLONG>(bytes);
  return SetFileInformationByHandle(file, FileEndOfFileInfo, &end, sizeof end);
}

bool WriteAll(HANDLE file, std::uint64_t place, std::string_view bytes) {
  constexpr std::size_t kMostAtOnce = std::size_t{1} << 24;
  const HANDLE done = CreateEventA(nullptr, TRUE, FALSE, nullptr);
  while (done != nullptr && !bytes.empty()) {
    DWORD written = 0;
    const auto wanted = static_cast<DWORD>(std::min(bytes.size(), kMostAtOnce));
    OVERLAPPED at{};
    at.Offset = static_cast<DWORD>(place);
    at.OffsetHigh = static_cast<DWORD>(place >> 32);
    at.hEvent = done;
    const bool isTaken = WriteFile(file, bytes.data(), wanted, nullptr, &at) != 0 ||
                         GetLastError() == ERROR_IO_PENDING;
    if (!isTaken || !GetOverlappedResult(file, &at, &written, TRUE) || written == 0) break;
    bytes.remove_prefix(written);
    place += written;
  }
  if (done != nullptr) CloseHandle(done);
  return bytes.empty();
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
  if (WriteAll(Handle(handle_), size_, bytes)) {
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
