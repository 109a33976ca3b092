#include <windows.h>

#include "util/process/SharedLibrary.h"

std::string SharedLibrary::FileName(const std::string& name) {
  return name + ".dll";
}

bool SharedLibrary::Load(const std::string& path, std::string& error) {
  DWORD before = 0;
  SetThreadErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX, &before);  // no message boxes
  handle_ = LoadLibraryExA(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
  const DWORD reason = GetLastError();
  SetThreadErrorMode(before, nullptr);
  if (handle_ != nullptr) return true;
  error = "system error " + std::to_string(reason);
  return false;
}

void SharedLibrary::Unload() {
  if (handle_ != nullptr) FreeLibrary(static_cast<HMODULE>(handle_));
  handle_ = nullptr;
}

void* SharedLibrary::Find(const char* name) const {
  if (handle_ == nullptr) return nullptr;
  return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(handle_), name));
}
