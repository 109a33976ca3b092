// Puts the user's folder of application data elsewhere until the end of the scope. Wine's shell
// reads the registry at every call, so there the value itself is changed: the user is the tests'
// own. On Windows this process alone gets another registry.
#ifndef KR_TESTS_CORE_SCRATCHAPPDATA_WIN32_H
#define KR_TESTS_CORE_SCRATCHAPPDATA_WIN32_H

#include <windows.h>

#include <string>

#include "util/files/FileDirWrapper.h"

class ScratchAppData {
 public:
  explicit ScratchAppData(const std::string& folder)
      : scratchKey_("Software\\KestrunTests" + std::to_string(GetCurrentProcessId())) {
    FileDirWrapper::CreateDirTree(folder);  // the shell knows no folder that is missing
    FileDirWrapper::AppDataDir(before_);
    if (!IsWine()) {
      HKEY scratch = nullptr;
      RegCreateKeyExA(HKEY_CURRENT_USER, scratchKey_.c_str(), 0, nullptr, REG_OPTION_VOLATILE,
                      KEY_ALL_ACCESS, nullptr, &scratch, nullptr);
      RegOverridePredefKey(HKEY_CURRENT_USER, scratch);
      RegCloseKey(scratch);
    }
    Set(folder);
  }
  ~ScratchAppData() {
    if (IsWine()) {
      Set(before_);
      return;
    }
    RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
    RegDeleteTreeA(HKEY_CURRENT_USER, scratchKey_.c_str());
  }
  ScratchAppData(const ScratchAppData&) = delete;
  ScratchAppData& operator=(const ScratchAppData&) = delete;

 private:
  static bool IsWine() {
    return GetProcAddress(GetModuleHandleA("ntdll.dll"), "wine_get_version") != nullptr;
  }
  static void Set(const std::string& folder) {
    RegSetKeyValueA(HKEY_CURRENT_USER,
                    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders",
                    "AppData", REG_SZ, folder.c_str(), static_cast<DWORD>(folder.size() + 1));
  }

  std::string scratchKey_;
  std::string before_;
};

#endif
