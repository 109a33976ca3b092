#include "core/HandOverPlace.h"

#include <pwd.h>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <fcntl.h>
#include <algorithm>
#include <vector>

#include "util/files/FileDirWrapper.h"

namespace hand_over_place {

namespace {

// From the user database alone: HOME is often another one, or missing, where no person logged in.
std::string HomeOfUser() {
  std::vector<char> buffer(16384);
  passwd entry{};
  passwd* found = nullptr;
  if (getpwuid_r(geteuid(), &entry, buffer.data(), buffer.size(), &found) != 0) return {};
  const std::string home = found != nullptr && found->pw_dir != nullptr ? found->pw_dir : "";
  return FileDirWrapper::IsFolder(home) ? home : std::string();
}

std::string HostName() {
  utsname system{};
  std::string name = uname(&system) == 0 ? system.nodename : "";
  std::replace(name.begin(), name.end(), '/', '_');
  return name.empty() ? "localhost" : name;
}

}  // namespace

std::vector<std::string> FoldersOfUser() {
  std::vector<std::string> folders = {"/dev/shm/kr-" + std::to_string(geteuid())};
  const std::string home = HomeOfUser();
  if (!home.empty()) folders.push_back(home + "/.config/orla/handover-" + HostName());
  return folders;
}

// The folder itself, no link to one.
bool MakeOwn(const std::string& path) {
  std::string parent;
  if (!FileDirWrapper::DirOf(path, parent)) return false;
  FileDirWrapper::CreateDirTree(parent);
  mkdir(path.c_str(), S_IRWXU);
  struct stat info {};
  if (lstat(path.c_str(), &info) != 0 || !S_ISDIR(info.st_mode) || info.st_uid != geteuid()) {
    return false;
  }
  const bool isOpen = (info.st_mode & 077) != 0;
  if (isOpen && chmod(path.c_str(), S_IRWXU) != 0) return false;
  return faccessat(AT_FDCWD, path.c_str(), W_OK | X_OK, AT_EACCESS) == 0;
}

std::string OthersFolder() {
  return {};
}

}  // namespace hand_over_place
