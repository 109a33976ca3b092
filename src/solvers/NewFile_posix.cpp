#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "solvers/NewFile.h"

std::FILE* CreateFileLike(const std::string& path, const std::string& like) {
  struct stat info {};
  if (stat(like.c_str(), &info) != 0) return nullptr;
  const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
  if (fd < 0) return nullptr;
  // Another owner's file becomes the user's own; where only root may give files away that is so.
  [[maybe_unused]] const int ownerKept = fchown(fd, info.st_uid, info.st_gid);
  std::FILE* const file = fchmod(fd, info.st_mode & 0777) == 0 ? fdopen(fd, "wb") : nullptr;
  if (file == nullptr) {
    close(fd);
    unlink(path.c_str());
  }
  return file;
}

bool KeepAs(const std::string& path, const std::string& name) {
  if (link(path.c_str(), name.c_str()) == 0) return true;
  std::error_code failed;
  return std::filesystem::copy_file(path, name, failed);
}
