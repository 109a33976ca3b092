#include "util/files/FileDirWrapper.h"

#include <windows.h>
// The shell's header needs the one above.
#include <shlobj.h>

#include <cstdlib>
#include <cwchar>

#include "util/files/FileSystemCalls.h"
#include "util/files/SpecialFolder_win32.h"

namespace {

constexpr DWORD kLongestShortPath = 1024;  // bytes, with the zero at the end
constexpr DWORD kLongestPath = 32768;

// False when the code page cannot write it.
bool ToCodePage(const wchar_t* path, std::string& text) {
  char bytes[3 * MAX_PATH];
  wchar_t back[MAX_PATH];
  if (WideCharToMultiByte(CP_ACP, 0, path, -1, bytes, sizeof bytes, nullptr, nullptr) == 0)
    return false;
  text = bytes;
  return MultiByteToWideChar(CP_ACP, 0, bytes, -1, back, MAX_PATH) > 0 &&
         std::wcscmp(path, back) == 0;
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

std::string SpecialFolder(int id, HANDLE token) {
  wchar_t path[MAX_PATH] = L"";
  wchar_t shortPath[MAX_PATH];
  if (SHGetFolderPathW(nullptr, id, token, SHGFP_TYPE_CURRENT, path) != S_OK) return {};
  std::string dir;
  if (!ToCodePage(path, dir)) {
    const DWORD length = GetShortPathNameW(path, shortPath, MAX_PATH);
    if (length > 0 && length < MAX_PATH) ToCodePage(shortPath, dir);
  }
  FileDirWrapper::TrimTrailingSeparator(dir, dir);
  return dir;
}

bool FileDirWrapper::CurrentDir(std::string& dir) {
  return TrimTrailingSeparator(
      TextOf([](DWORD size, char* text) { return GetCurrentDirectoryA(size, text); }), dir);
}

bool FileDirWrapper::SetCurrentDir(const std::string& dir) {
  return !dir.empty() && SetCurrentDirectoryA(dir.c_str());
}

bool FileDirWrapper::DocumentsDir(std::string& dir) {
  dir = SpecialFolder(CSIDL_PERSONAL);
  return true;
}

bool FileDirWrapper::AppDataDir(std::string& dir) {
  dir = SpecialFolder(CSIDL_APPDATA);
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
