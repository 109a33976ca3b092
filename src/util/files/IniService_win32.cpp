#include "util/files/IniService.h"

#include <windows.h>

#include "util/files/FileDirWrapper.h"

// The system looks for a name without a folder in its own folder, so every name is made absolute.

std::string ini_service::ReadValue(const std::string& section, const std::string& key,
                                   const std::string& fileName) {
  char buffer[kLongestValue + 1];
  const DWORD length =
      GetPrivateProfileStringA(section.c_str(), key.c_str(), "", buffer, sizeof(buffer),
                               FileDirWrapper::AbsolutePath(fileName).c_str());
  return {buffer, length};
}

void ini_service::Write(const std::string& section, const std::string* key,
                        const std::string* value, const std::string& fileName) {
  WritePrivateProfileStringA(section.c_str(), key == nullptr ? nullptr : key->c_str(),
                             value == nullptr ? nullptr : value->c_str(),
                             FileDirWrapper::AbsolutePath(fileName).c_str());
}

std::string ini_service::SectionNames(const std::string& fileName) {
  char buffer[kSectionListBuffer];
  const DWORD length = GetPrivateProfileSectionNamesA(
      buffer, sizeof(buffer), FileDirWrapper::AbsolutePath(fileName).c_str());
  return {buffer, length};
}
