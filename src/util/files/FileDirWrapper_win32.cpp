#include "util/files/FileDirWrapper.h"

#include <windows.h>
// The shell's header needs the one above.
#include <shlobj.h>

#include <cstdlib>

#include "util/files/FileSystemCalls.h"

namespace {

constexpr int kDocuments = 5;
constexpr int kAppData = 26;
constexpr DWORD kLongestShortPath = 1024;  // bytes, with the zero at the end
constexpr DWORD kLongestPath = 32768;

std::string SpecialFolder(int id) {
  char buffer[MAX_PATH] = {};
  if (!SHGetSpecialFolderPathA(nullptr, buffer, id, FALSE)) return {};
  std::string dir;
  FileDirWrapper::TrimTrailingSeparator(buffer, dir);
  return dir;
}

// What a call that fills a buffer and returns the length gives; empty when it fails.
template <typename Call>
std::string TextOf(Call call) {
  std::string text(kLongestPath, '\0');
  const DWORD length = call(kLongestPath, text.data());
  text.resize(length < kLongestPath ? length : 0);
  return text;
}

}  // namespace

bool FileDirWrapper::CurrentDir(std::string& dir) {
  return TrimTrailingSeparator(
      TextOf([](DWORD size, char* text) { return GetCurrentDirectoryA(size, text); }), dir);
}

bool FileDirWrapper::SetCurrentDir(const std::string& dir) {
  return !dir.empty() && SetCurrentDirectoryA(dir.c_str());
}

bool FileDirWrapper::DocumentsDir(std::string& dir) {
  dir = SpecialFolder(kDocuments);
  return true;
}

bool FileDirWrapper::AppDataDir(std::string& dir) {
  dir = SpecialFolder(kAppData);
  return true;
}

bool FileDirWrapper::TempDir(std::string& dir) {
  std::string path = TextOf([](DWORD size, char* text) { return GetTempPathA(size, text); });
  if (path.empty()) {
    const char* fallback = std::getenv("TEMP");
    if (fallback != nullptr) path = fallback;
  }
  return TrimTrailingSeparator(path, dir);
}

std::int64_t FileDirWrapper::WriteTime(const std::string& path) {
  WIN32_FILE_ATTRIBUTE_DATA info{};
  if (!GetFileAttributesExA(path.c_str(), GetFileExInfoStandard, &info)) return 0;
  const FILETIME& time = info.ftLastWriteTime;
  return static_cast<std::int64_t>((std::uint64_t{time.dwHighDateTime} << 32) | time.dwLowDateTime);
}

bool FileDirWrapper::RemoveFile(const std::string& path) {
  return !path.empty() && DeleteFileA(path.c_str());
}

std::string FileDirWrapper::ShortPath(const std::string& path) {
  char buffer[kLongestShortPath];
  const DWORD length = GetShortPathNameA(path.c_str(), buffer, kLongestShortPath);
  return length > 0 && length < kLongestShortPath ? std::string(buffer, length) : path;
}

std::string FileDirWrapper::AbsolutePath(const std::string& path) {
  if (path.empty()) return path;
  std::string full = TextOf(
      [&](DWORD size, char* text) { return GetFullPathNameA(path.c_str(), size, text, nullptr); });
  return full.empty() ? path : full;
}

std::string FileDirWrapper::ProgramPath() {
  return TextOf([](DWORD size, char* text) { return GetModuleFileNameA(nullptr, text, size); });
}
