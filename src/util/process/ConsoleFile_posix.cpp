#include "util/process/ConsoleFile_posix.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <condition_variable>
#include <cstdio>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "util/files/FileSystemCalls.h"
#include "util/process/ConsoleLines.h"
#include "util/process/OwnThread.h"
#include "util/signals/Mutex.h"

namespace {

constexpr std::uint64_t kMostBytes = 16 << 20;
constexpr std::size_t kMostWaiting = 4 << 20;  // for the disk
constexpr int kMostOld = 99;

std::string Note(const std::string& words) {
  return std::string(kConsoleNote) + words + "\n";
}

bool PutAside(const std::string& file) {
  for (int number = 1; number <= kMostOld; ++number) {
    const std::string name = file + ".old" + std::to_string(number);
    struct stat info {};
    if (lstat(name.c_str(), &info) != 0) return rename(file.c_str(), name.c_str()) == 0;
  }
  return false;
}

// True when nothing has the name any more. A link is not what it leads to.
bool MakeRoom(const std::string& file) {
  struct stat info {};
  if (lstat(file.c_str(), &info) != 0) return errno == ENOENT;
  if (S_ISLNK(info.st_mode)) return unlink(file.c_str()) == 0;
  if (!S_ISREG(info.st_mode)) return false;
  if (info.st_size == 0 || IsConsoleFile(file)) return unlink(file.c_str()) == 0;
  return PutAside(file);
}

bool WriteAll(int fd, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = write(fd, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

}  // namespace

UniqueFd OpenConsoleFile(const std::string& path) {
  if (path.empty()) return {};
  const std::string file = file_system::ForSystem(path);
  if (!MakeRoom(file)) return {};
  constexpr mode_t kMode = 0666;
  UniqueFd fd(
      open(file.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC | O_APPEND, kMode));
  if (fd) WriteAll(fd.get(), ConsoleFirstLine());
  return fd;
}

struct ConsoleFile::Shared {
  void WriteOut(const std::string& path);
  void Put(std::string_view lines);
  void KeepNewest();

  // The thread's alone.
  UniqueFd fd;
  bool failed = false;  // the last lines found no room

  Mutex mutex;
  std::condition_variable changed;
  std::string waiting KR_GUARDED_BY(mutex);
  bool overflowed KR_GUARDED_BY(mutex) = false;
  bool closing KR_GUARDED_BY(mutex) = false;
  bool done KR_GUARDED_BY(mutex) = false;
};

void ConsoleFile::Shared::WriteOut(const std::string& path) {
  fd = OpenConsoleFile(path);
  for (bool last = false; !last;) {
    std::string lines;
    bool gap = false;
    {
      MutexLock lock(mutex);
      while (waiting.empty() && !closing) lock.Wait(changed);
      lines.swap(waiting);
      gap = std::exchange(overflowed, false);
      last = closing;
    }
    if (gap) Put(Note("Lines are missing here: the disk was too slow"));
    Put(lines);
  }
  const MutexLock lock(mutex);
  done = true;
  changed.notify_all();
}

// What was written in part is cut off again, so that what follows begins a line.
void ConsoleFile::Shared::Put(std::string_view lines) {
  if (!fd || lines.empty()) return;
  if (failed) {
    const std::string note = Note("Lines are missing here: the disk was full");
    if (!WriteAll(fd.get(), note)) return;
    failed = false;
  }
  struct stat info {};
  if (fstat(fd.get(), &info) != 0) return;
  if (static_cast<std::uint64_t>(info.st_size) + lines.size() > kMostBytes) {
    KeepNewest();
    if (fstat(fd.get(), &info) != 0) return;
  }
  if (WriteAll(fd.get(), lines)) return;
  failed = true;
  if (ftruncate(fd.get(), info.st_size) != 0) return;
}

// Moves the second half to the front, within the file: that needs no room on the disk.
void ConsoleFile::Shared::KeepNewest() {
  struct stat info {};
  if (fstat(fd.get(), &info) != 0) return;
  std::vector<char> block(std::size_t{1} << 20);
  auto from = info.st_size - static_cast<off_t>(kMostBytes / 2);
  const ssize_t got = pread(fd.get(), block.data(), block.size(), from);
  if (from <= 0 || got <= 0) return;
  from += std::find(block.begin(), block.begin() + got, '\n') - block.begin() + 1;
  const std::string head = ConsoleFirstLine() + Note("Earlier lines are left out");
  fcntl(fd.get(), F_SETFL, 0);
  off_t to = pwrite(fd.get(), head.data(), head.size(), 0);
  for (ssize_t read = 1; to > 0 && read > 0 && from < info.st_size; from += read) {
    read = pread(fd.get(), block.data(), block.size(), from);
    if (read > 0) to += pwrite(fd.get(), block.data(), static_cast<std::size_t>(read), to);
  }
  if (to > 0) (void)!ftruncate(fd.get(), to);
  fcntl(fd.get(), F_SETFL, O_APPEND);
}

bool ConsoleFile::Open(const std::string& path) {
  shared_ = std::make_shared<Shared>();
  const auto failed = [](const std::exception&) {};  // what comes is kept no more
  if (!StartGuarded([shared = shared_, path] { shared->WriteOut(path); }, failed)) shared_.reset();
  return shared_ != nullptr;
}

void ConsoleFile::Write(const std::string& lines) {
  if (shared_ == nullptr || lines.empty()) return;
  const MutexLock lock(shared_->mutex);
  if (shared_->waiting.size() + lines.size() > kMostWaiting) {
    shared_->waiting.clear();
    shared_->overflowed = true;
  }
  shared_->waiting += lines;
  shared_->changed.notify_all();
}

void ConsoleFile::Close(std::chrono::milliseconds limit) {
  if (shared_ == nullptr) return;
  const auto end = std::chrono::steady_clock::now() + limit;
  {
    MutexLock lock(shared_->mutex);
    shared_->closing = true;
    shared_->changed.notify_all();
    while (!shared_->done && lock.WaitUntil(shared_->changed, end)) {
    }
  }
  shared_.reset();
}
