// FileDirWrapper's replacing of whole files.
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <ctime>
#include <optional>
#include <string>
#include <system_error>

#include "util/files/FileDirWrapper.h"
#include "util/files/FileReplace_posix.h"
#include "util/files/FileSystemCalls.h"
#include "util/files/TempName.h"

namespace {

constexpr int kMostLinks = 40;
constexpr int kMostTempNames = 100;

std::string FolderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

// A failure is not reported: some file systems cannot do this, and the file's contents are safe.
void SyncFolder(const std::string& folder) {
  const int file = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (file < 0) return;
  fsync(file);
  close(file);
}

// Follows links by hand, since the last target may still be missing.
bool ResolveLinks(std::string& path) {
  for (int i = 0; i < kMostLinks; ++i) {
    char target[4096];
    const ssize_t length = readlink(path.c_str(), target, sizeof(target));
    if (length < 0) return errno == EINVAL || errno == ENOENT;
    if (length == 0 || length == static_cast<ssize_t>(sizeof(target))) return false;
    const std::string next(target, static_cast<std::size_t>(length));
    path = next[0] == '/' ? next : FileDirWrapper::Join(FolderOf(path), next);
  }
  return false;
}

int CreateTempFile(const std::string& folder, mode_t mode, std::string& path) {
  static std::atomic<unsigned> counter{0};
  for (int i = 0; i < kMostTempNames; ++i) {
    path = FileDirWrapper::Join(folder, TempName(static_cast<unsigned long>(getpid()), counter++));
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
    if (file >= 0 || errno != EEXIST) return file;
  }
  return -1;
}

// Such a file is needed for a moment only; the number of its process may have been given anew.
bool IsLeftOver(const std::string& path, unsigned long owner) {
  constexpr std::time_t kLongest = 3600;  // seconds
  struct stat info {};
  if (lstat(path.c_str(), &info) != 0 || !S_ISREG(info.st_mode)) return false;
  const bool isGone = kill(static_cast<pid_t>(owner), 0) != 0 && errno == ESRCH;
  return isGone || std::time(nullptr) - info.st_mtim.tv_sec > kLongest;
}

bool WriteAll(int file, const std::string& contents) {
  std::size_t done = 0;
  while (done < contents.size()) {
    const ssize_t written = write(file, contents.data() + done, contents.size() - done);
    if (written > 0) {
      done += static_cast<std::size_t>(written);
    } else if (written == 0 || errno != EINTR) {
      return false;
    }
  }
  return true;
}

// Only root can keep another owner, so that may fail; the mode must not.
bool CopyRights(int file, const struct stat& old) {
  [[maybe_unused]] const int ownerKept = fchown(file, old.st_uid, old.st_gid);
  return fchmod(file, old.st_mode & 0777) == 0;
}

}  // namespace

bool FileDirWrapper::ReplaceFileWith(const std::string& from, const std::string& to) {
  if (from.empty() || to.empty()) return false;
  const std::string source = file_system::ForSystem(from);
  if (file_system::KindOf(source) != file_system::Kind::kFile) return false;
  const int file = open(source.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  if (file < 0) return false;
  const bool synced = fsync(file) == 0;
  close(file);
  if (!synced || !MoveFileOver(from, to)) return false;
  SyncFolderOf(to);
  return true;
}

bool FileDirWrapper::MoveFileOver(const std::string& from, const std::string& to) {
  return std::rename(file_system::ForSystem(from).c_str(), file_system::ForSystem(to).c_str()) == 0;
}

void FileDirWrapper::SyncFolderOf(const std::string& path) {
  SyncFolder(FolderOf(file_system::ForSystem(path)));
}

bool FileDirWrapper::GiveSecondName(const std::string& path, const std::string& name) {
  const std::string second = file_system::ForSystem(name);
  if (link(file_system::ForSystem(path).c_str(), second.c_str()) != 0) return false;
  SyncFolder(FolderOf(second));
  return true;
}

bool FileDirWrapper::WriteFileWhole(const std::string& path, const std::string& contents,
                                    std::string* why) {
  if (ReplaceContents(path, contents, Flush::kYes)) return true;
  if (why != nullptr) *why = std::generic_category().message(errno);
  return false;
}

bool FileDirWrapper::WriteOutputFile(const std::string& path, const std::string& contents) {
  return ReplaceContents(path, contents, Flush::kYes, Links::kReplace);
}

bool FileDirWrapper::WritePrivateFile(const std::string& path, const std::string& contents) {
  const std::string own = file_system::ForSystem(path);
  RemoveFile(own);
  const int file = open(own.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  if (file < 0) return false;
  const bool written = WriteAll(file, contents);
  if (close(file) == 0 && written) return true;
  unlink(own.c_str());
  return false;
}

void FileDirWrapper::RemoveLeftTempFiles(const std::string& path) {
  std::string target = file_system::ForSystem(path);
  if (target.empty() || !ResolveLinks(target)) return;
  const std::string folder = FolderOf(target);
  for (const file_system::Entry& entry : file_system::ReadFolder(folder)) {
    const std::optional<unsigned long> owner = OwnerOfTempName(entry.name);
    const std::string file = Join(folder, entry.name);
    if (owner && IsLeftOver(file, *owner)) unlink(file.c_str());
  }
}

bool ReplaceContents(const std::string& path, const std::string& contents, Flush flush,
                     Links links) {
  std::string target = file_system::ForSystem(path);
  if (target.empty() || (links == Links::kFollow && !ResolveLinks(target))) return false;
  struct stat old {};
  bool exists = lstat(target.c_str(), &old) == 0;
  if (!exists && errno != ENOENT) return false;
  exists = exists && !S_ISLNK(old.st_mode);
  if (exists && !S_ISREG(old.st_mode)) {
    errno = S_ISDIR(old.st_mode) ? EISDIR : EPERM;
    return false;
  }
  if (exists && access(target.c_str(), W_OK) != 0) return false;

  std::string temp;
  const int file = CreateTempFile(FolderOf(target), exists ? 0600 : 0666, temp);
  if (file < 0) return false;
  bool ok = WriteAll(file, contents) && (!exists || CopyRights(file, old)) &&
            (flush == Flush::kNo || fsync(file) == 0);
  const int writeError = errno;
  const bool closed = close(file) == 0;
  if (!ok) errno = writeError;
  ok = ok && closed;
  if (ok && std::rename(temp.c_str(), target.c_str()) == 0) {
    if (flush == Flush::kYes) SyncFolder(FolderOf(target));
    return true;
  }
  const int error = errno;
  unlink(temp.c_str());
  errno = error;
  return false;
}
