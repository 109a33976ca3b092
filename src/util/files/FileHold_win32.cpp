#include <windows.h>

#include <utility>

#include "util/files/FileHold.h"

FileHold::FileHold(FileHold&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}

FileHold& FileHold::operator=(FileHold&& other) noexcept {
  std::swap(handle_, other.handle_);
  return *this;
}

FileHold::~FileHold() {
  if (handle_ != nullptr) CloseHandle(handle_);
}

bool FileHold::Open(const std::string& path) {
  const HANDLE file = CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                  OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return false;
  handle_ = file;
  return true;
}
