#include "util/files/FileLock.h"

#include <windows.h>

// Nobody else can open the file; it goes with the handle.
FileLock::Result FileLock::TakeNow(const std::string& path) {
  const HANDLE file = CreateFileA(
      path.c_str(), GENERIC_READ | GENERIC_WRITE | DELETE, 0, nullptr, OPEN_ALWAYS,
      FILE_ATTRIBUTE_NORMAL | FILE_FLAG_DELETE_ON_CLOSE | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
  if (file != INVALID_HANDLE_VALUE) {
    handle_ = file;
    return Result::kTaken;
  }
  const DWORD error = GetLastError();
  if (error == ERROR_SHARING_VIOLATION) return Result::kBusy;
  if (error != ERROR_ACCESS_DENIED) return Result::kFailed;
  // One that is about to go gives no access either.
  constexpr DWORD kNever = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY;
  const DWORD attributes = GetFileAttributesA(path.c_str());
  const bool stays = attributes != INVALID_FILE_ATTRIBUTES && (attributes & kNever) != 0;
  return stays ? Result::kFailed : Result::kBusy;
}

void FileLock::Release() {
  if (handle_ != nullptr) CloseHandle(handle_);
  handle_ = nullptr;
}
