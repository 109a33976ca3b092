#include "util/files/FileSystemCalls.h"

#include <windows.h>

#include <algorithm>

namespace {

bool IsSeparator(char c) {
  return c == '/' || c == '\\';
}

bool IsDots(const std::string& name) {
  return name == "." || name == "..";
}

}  // namespace

namespace file_system {

Kind KindOf(const std::string& path) {
  const DWORD attributes = GetFileAttributesA(path.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) return Kind::kMissing;
  if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return Kind::kFolder;
  return (attributes & FILE_ATTRIBUTE_DEVICE) != 0 ? Kind::kOther : Kind::kFile;
}

std::string ForSystem(const std::string& path) {
  std::string own = path;
  std::replace(own.begin(), own.end(), '/', '\\');
  return own;
}

std::vector<Entry> ReadFolder(const std::string& folder) {
  std::vector<Entry> entries;
  WIN32_FIND_DATAA found;
  const HANDLE search = FindFirstFileA((folder + "\\*").c_str(), &found);
  if (search == INVALID_HANDLE_VALUE) return entries;
  do {
    const std::string name = found.cFileName;
    const bool isFolder = (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    if (!IsDots(name)) entries.push_back({name, isFolder});
  } while (FindNextFileA(search, &found));
  FindClose(search);
  return entries;
}

bool StateOf(const std::string& path, FileState& state) {
  const HANDLE file =
      CreateFileA(path.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                  OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  if (file == INVALID_HANDLE_VALUE) return false;
  BY_HANDLE_FILE_INFORMATION info{};
  const bool ok = GetFileInformationByHandle(file, &info);
  CloseHandle(file);
  const FILETIME& time = info.ftLastWriteTime;
  state.id = {info.dwVolumeSerialNumber,
              (std::uint64_t{info.nFileIndexHigh} << 32) | info.nFileIndexLow};
  state.size = (std::uint64_t{info.nFileSizeHigh} << 32) | info.nFileSizeLow;
  state.written =
      static_cast<std::int64_t>((std::uint64_t{time.dwHighDateTime} << 32) | time.dwLowDateTime);
  return ok;
}

bool IsMissing(const std::string& path) {
  if (GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES) return false;
  const DWORD error = GetLastError();
  return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
}

// Counted in 100 nanoseconds from 1601.
std::int64_t SecondsOf(std::int64_t written) {
  constexpr std::int64_t kUnits = 10000000;
  constexpr std::int64_t kUntil1970 = 11644473600;
  return written / kUnits - kUntil1970;
}

bool MakeFolder(const std::string& path) {
  return CreateDirectoryA(path.c_str(), nullptr) || KindOf(path) == Kind::kFolder;
}

bool MakeAndRemoveFile(const std::string& path) {
  const HANDLE file = CreateFileA(path.c_str(), GENERIC_WRITE,
                                  FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                  OPEN_ALWAYS, FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
  if (file == INVALID_HANDLE_VALUE) return false;
  CloseHandle(file);
  DeleteFileA(path.c_str());
  return true;
}

std::size_t RootLength(const std::string& path) {
  if (path.size() >= 2 && path[1] == ':') return path.size() > 2 && IsSeparator(path[2]) ? 3 : 2;
  if (path.empty() || !IsSeparator(path[0])) return 0;
  if (path.size() < 2 || !IsSeparator(path[1])) return 1;
  const std::size_t server = std::min(path.find_first_of("/\\", 2), path.size());
  return std::min(path.find_first_of("/\\", server + 1), path.size());
}

}  // namespace file_system
