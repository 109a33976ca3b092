#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>
#include <windows.h>

#include "solvers/NewFile.h"

// Rights come from the folder.
std::FILE* CreateFileLike(const std::string& path, const std::string&) {
  const int fd = _open(path.c_str(), _O_WRONLY | _O_CREAT | _O_EXCL | _O_BINARY | _O_NOINHERIT,
                       _S_IREAD | _S_IWRITE);
  if (fd < 0) return nullptr;
  std::FILE* const file = _fdopen(fd, "wb");
  if (file == nullptr) _close(fd);
  return file;
}

bool KeepAs(const std::string& path, const std::string& name) {
  return CreateHardLinkA(name.c_str(), path.c_str(), nullptr) ||
         CopyFileA(path.c_str(), name.c_str(), TRUE);
}
