#include "util/files/FileDirWrapper.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <vector>

#include "util/files/FileSystemCalls.h"

namespace {

constexpr std::size_t kLongestLink = std::size_t{1} << 20;

std::string Environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::string() : value;
}

bool IsAbsolute(const std::string& path) {
  return !path.empty() && path[0] == '/';
}

std::string HomeDir() {
  const std::string home = Environment("HOME");
  if (IsAbsolute(home)) return home;
  std::vector<char> buffer(16384);
  passwd entry{};
  passwd* found = nullptr;
  if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) != 0 || found == nullptr ||
      found->pw_dir == nullptr) {
    return {};
  }
  return found->pw_dir;
}

std::string ConfigDir() {
  const std::string config = Environment("XDG_CONFIG_HOME");
  if (IsAbsolute(config)) return config;
  const std::string home = HomeDir();
  return home.empty() ? home : FileDirWrapper::Join(home, ".config");
}

// The value of a line like XDG_DOCUMENTS_DIR="$HOME/Documents". Only paths that are absolute or
// begin with the home folder are valid in that file.
std::string UserDirValue(const std::string& line, const std::string& key, const std::string& home) {
  const std::size_t start = line.find_first_not_of(" \t");
  if (start == std::string::npos || line.compare(start, key.size(), key) != 0) return {};
  std::size_t i = line.find_first_not_of(" \t", start + key.size());
  if (i == std::string::npos || line[i] != '=') return {};
  i = line.find_first_not_of(" \t", i + 1);
  if (i == std::string::npos || line[i] != '"') return {};
  ++i;
  std::string value;
  if (line.compare(i, 5, "$HOME") == 0) {
    value = home;
    i += 5;
  }
  for (; i < line.size() && line[i] != '"'; ++i) {
    if (line[i] == '\\' && i + 1 < line.size()) ++i;
    value += line[i];
  }
  return IsAbsolute(value) ? value : std::string();
}

std::string UserDocumentsDir(const std::string& home) {
  const std::string path = FileDirWrapper::Join(ConfigDir(), "user-dirs.dirs");
  std::string found;
  if (file_system::KindOf(path) != file_system::Kind::kFile) return found;
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    std::string value = UserDirValue(line, "XDG_DOCUMENTS_DIR", home);
    if (!value.empty()) found = std::move(value);
  }
  return found;
}

bool IsOwnFolder(const std::string& path) {
  struct stat info {};
  return stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode) && info.st_uid == getuid();
}

// `base` is free of links, so the ".." parts at the head of `path` may be taken as text. Later ones
// stay: what they lead to depends on links.
std::string Append(std::string base, const std::string& path) {
  bool atHead = true;
  for (std::size_t start = 0; start < path.size();) {
    const std::size_t end = std::min(path.find('/', start), path.size());
    const std::string part = path.substr(start, end - start);
    start = end + 1;
    if (part.empty() || part == ".") continue;
    if (atHead && part == "..") {
      base.erase(std::max<std::size_t>(base.rfind('/'), 1));
      continue;
    }
    atHead = false;
    base = FileDirWrapper::Join(base, part);
  }
  return base;
}

}  // namespace

bool FileDirWrapper::CurrentDir(std::string& dir) {
  dir.clear();
  char* current = getcwd(nullptr, 0);
  if (current == nullptr) return false;
  const std::string path = current;
  std::free(current);
  return IsAbsolute(path) && TrimTrailingSeparator(path, dir);
}

bool FileDirWrapper::SetCurrentDir(const std::string& dir) {
  return !dir.empty() && chdir(file_system::ForSystem(dir).c_str()) == 0;
}

bool FileDirWrapper::DocumentsDir(std::string& dir) {
  const std::string home = HomeDir();
  std::string path = UserDocumentsDir(home);
  if (path.empty() && !home.empty()) {
    path = Join(home, "Documents");
    if (file_system::KindOf(path) != file_system::Kind::kFolder) path = home;
  }
  TrimTrailingSeparator(path, dir);
  return true;
}

bool FileDirWrapper::AppDataDir(std::string& dir) {
  TrimTrailingSeparator(ConfigDir(), dir);
  return true;
}

bool FileDirWrapper::TempDir(std::string& dir) {
  std::string path = Environment("TMPDIR");
  if (path.empty()) {
    path = Environment("XDG_RUNTIME_DIR");
    if (!IsAbsolute(path) || !IsOwnFolder(path)) path = "/tmp";
  }
  return TrimTrailingSeparator(AbsolutePath(path), dir);
}

std::int64_t FileDirWrapper::WriteTime(const std::string& path) {
  constexpr std::int64_t kNanoseconds = 1000000000;
  struct stat info {};
  if (stat(file_system::ForSystem(path).c_str(), &info) != 0) return 0;
  return std::int64_t{info.st_mtim.tv_sec} * kNanoseconds + info.st_mtim.tv_nsec;
}

bool FileDirWrapper::RemoveFile(const std::string& path) {
  return !path.empty() && unlink(file_system::ForSystem(path).c_str()) == 0;
}

std::string FileDirWrapper::ShortPath(const std::string& path) {
  return path;
}

std::string FileDirWrapper::AbsolutePath(const std::string& path) {
  const std::string own = file_system::ForSystem(path);
  std::string current;
  if (own.empty() || IsAbsolute(own) || !CurrentDir(current)) return own;
  return Append(current, own);
}

std::string FileDirWrapper::ProgramPath() {
  for (std::size_t size = 1024; size <= kLongestLink; size *= 2) {
    std::string path(size, '\0');
    const ssize_t length = readlink("/proc/self/exe", path.data(), size);
    if (length < 0) return {};
    if (static_cast<std::size_t>(length) == size) continue;
    path.resize(static_cast<std::size_t>(length));
    return path;
  }
  return {};
}
