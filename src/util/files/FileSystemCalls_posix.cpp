#include "util/files/FileSystemCalls.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

namespace file_system {
namespace {

constexpr std::int64_t kNanoseconds = 1000000000;

}  // namespace

Kind KindOf(const std::string& path) {
  struct stat info {};
  if (stat(path.c_str(), &info) != 0) return Kind::kMissing;
  if (S_ISREG(info.st_mode)) return Kind::kFile;
  if (S_ISDIR(info.st_mode)) return Kind::kFolder;
  if (S_ISFIFO(info.st_mode)) return Kind::kPipe;
  return Kind::kOther;
}

// A backslash is a separator, except in the names of what is really there, the file's own or its
// folders': taken apart, such a name could lead to another file.
std::string ForSystem(const std::string& path) {
  const std::size_t first = path.find('\\');
  if (first == std::string::npos) return path;
  struct stat info {};
  std::size_t end = path.size();
  while (end != std::string::npos && end > first &&
         lstat(path.substr(0, end).c_str(), &info) != 0) {
    end = path.rfind('/', end - 1);
  }
  const std::size_t there = end != std::string::npos && end > first ? end : 0;
  std::string own = path;
  std::replace(own.begin() + static_cast<std::ptrdiff_t>(there), own.end(), '\\', '/');
  return own;
}

std::vector<Entry> ReadFolder(const std::string& folder) {
  std::vector<Entry> entries;
  DIR* dir = opendir(folder.c_str());
  if (dir == nullptr) return entries;
  while (const dirent* found = readdir(dir)) {
    if (std::strcmp(found->d_name, ".") == 0 || std::strcmp(found->d_name, "..") == 0) continue;
    bool isFolder = found->d_type == DT_DIR;
    if (found->d_type == DT_LNK || found->d_type == DT_UNKNOWN) {
      struct stat info {};
      isFolder = fstatat(dirfd(dir), found->d_name, &info, 0) == 0 && S_ISDIR(info.st_mode);
    }
    entries.push_back({found->d_name, isFolder});
  }
  closedir(dir);
  return entries;
}

bool StateOf(const std::string& path, FileState& state) {
  struct stat info {};
  if (stat(path.c_str(), &info) != 0) return false;
  state.id = {static_cast<std::uint64_t>(info.st_dev), static_cast<std::uint64_t>(info.st_ino)};
  state.size = static_cast<std::uint64_t>(info.st_size);
  state.written = std::int64_t{info.st_mtim.tv_sec} * kNanoseconds + info.st_mtim.tv_nsec;
  return true;
}

bool IsMissing(const std::string& path) {
  struct stat info {};
  return stat(path.c_str(), &info) != 0 && (errno == ENOENT || errno == ENOTDIR);
}

std::int64_t SecondsOf(std::int64_t written) {
  return written / kNanoseconds;
}

bool MakeFolder(const std::string& path) {
  return mkdir(path.c_str(), 0777) == 0 || KindOf(path) == Kind::kFolder;
}

bool MakeAndRemoveFile(const std::string& path) {
  constexpr int kFlags = O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
  const int file = open(path.c_str(), kFlags, 0666);
  if (file < 0) return false;
  close(file);
  unlink(path.c_str());
  return true;
}

std::size_t RootLength(const std::string& path) {
  return !path.empty() && (path[0] == '/' || path[0] == '\\') ? 1 : 0;
}

}  // namespace file_system
