#include "util/signals/SharedFile_posix.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/inotify.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <thread>

namespace {

using Clock = SharedFile::Clock;

enum LockByte : off_t { kGate, kHolder, kStateByte, kOwner };

// Locks are held for microseconds; who keeps one longer is stopped or hostile.
constexpr std::chrono::milliseconds kLockPatience{500};
constexpr std::chrono::milliseconds kAccessPatience{200};
constexpr std::size_t kMostNameBytes = 259;

struct Header {
  char magic[8];
  SignalKind kind;
  std::uint32_t nameSize;
  SignalState state;
  char name[kMostNameBytes + 1];
};
constexpr char kMagic[8] = {'K', 'R', 'S', 'I', 'G', '0', '0', '1'};
constexpr off_t kStateOffset = offsetof(Header, state);

bool SetLock(int fd, LockByte byte, short type) {
  struct flock lock {};
  lock.l_type = type;
  lock.l_whence = SEEK_SET;
  lock.l_start = byte;
  lock.l_len = 1;
  return fcntl(fd, F_OFD_SETLK, &lock) == 0;
}

bool SetLockSoon(int fd, LockByte byte, short type) {
  const Clock::time_point deadline = Clock::now() + kLockPatience;
  for (int round = 0; !SetLock(fd, byte, type); ++round) {
    if (errno != EAGAIN && errno != EACCES && errno != EINTR) return false;
    if (Clock::now() >= deadline) return false;
    if (round < 20)
      std::this_thread::yield();
    else
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

class GateLock {
 public:
  explicit GateLock(int fd) : fd_(fd), locked_(SetLockSoon(fd, kGate, F_WRLCK)) {}
  ~GateLock() {
    if (locked_) SetLock(fd_, kGate, F_UNLCK);
  }
  GateLock(const GateLock&) = delete;
  GateLock& operator=(const GateLock&) = delete;
  explicit operator bool() const { return locked_; }

 private:
  int fd_;
  bool locked_;
};

// One open attempt; a missing file is made when asked for. -1 with errno.
int OpenOnce(const std::string& path, bool create) {
  constexpr int kFlags = O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
  const int fd = open(path.c_str(), kFlags);
  if (fd >= 0 || errno != ENOENT || !create) return fd;
  constexpr mode_t kEverybody = 0666;
  const int made = open(path.c_str(), kFlags | O_CREAT | O_EXCL, kEverybody);
  if (made >= 0) fchmod(made, kEverybody);  // the umask must not decide
  return made;
}

// Not a second name for some file of ours, which would be emptied.
bool IsPlainFile(int fd) {
  struct stat info {};
  return fstat(fd, &info) == 0 && S_ISREG(info.st_mode) && info.st_nlink <= 1;
}

bool IsLinked(int fd, const std::string& path) {
  struct stat ours {
  }, linked{};
  return fstat(fd, &ours) == 0 && lstat(path.c_str(), &linked) == 0 &&
         ours.st_dev == linked.st_dev && ours.st_ino == linked.st_ino;
}

// A folder that only this user can have filled.
bool IsPrivateFolder(const std::string& path) {
  struct stat info {};
  return lstat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode) && info.st_uid == geteuid() &&
         (info.st_mode & 077) == 0;
}

std::string UserFolder() {
  const char* runtime = std::getenv("XDG_RUNTIME_DIR");
  std::string folder = "/dev/shm/kr-" + std::to_string(geteuid());
  if (runtime && *runtime == '/' && IsPrivateFolder(runtime))
    folder = std::string(runtime) + "/kr-signals";
  mkdir(folder.c_str(), 0700);
  return IsPrivateFolder(folder) ? folder : std::string();
}

std::uint64_t HashOf(const std::string& text) {
  std::uint64_t hash = 1469598103934665603u;
  for (const unsigned char c : text) hash = (hash ^ c) * 1099511628211u;
  return hash;
}

// A file name that tells different names apart; the header settles what a hash cannot.
std::string FileNameOf(const std::string& name) {
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (const unsigned char c : name) {
    if (std::isalnum(c) || c == '_' || c == '-') {
      text += static_cast<char>(c);
    } else {
      text += '%';
      text += kDigits[c >> 4];
      text += kDigits[c & 15];
    }
  }
  constexpr std::size_t kMostChars = 200;
  return text.size() <= kMostChars
             ? text
             : text.substr(0, kMostChars) + "-" + std::to_string(HashOf(name));
}

}  // namespace

std::string SharedFile::PathOf(const std::string& name) {
  constexpr char kGlobal[] = "Global\\";
  constexpr char kLocal[] = "Local\\";
  std::string plain = name;
  const bool global = plain.starts_with(kGlobal);
  if (global)
    plain.erase(0, sizeof kGlobal - 1);
  else if (plain.starts_with(kLocal))
    plain.erase(0, sizeof kLocal - 1);
  if (plain.empty() || name.size() > kMostNameBytes || plain.find('\\') != std::string::npos ||
      plain.find('\0') != std::string::npos)
    return {};
  if (global) return "/dev/shm/kr-global-" + FileNameOf(plain);
  const std::string folder = UserFolder();
  return folder.empty() ? folder : folder + "/" + FileNameOf(plain);
}

std::unique_ptr<SharedFile> SharedFile::Get(const std::string& path, const std::string& name,
                                            SignalKind kind, Mode mode, const SignalState& initial,
                                            bool& existed) {
  existed = false;
  if (path.empty()) return nullptr;
  const bool create = mode == Mode::kCreate;
  const Clock::time_point deadline = Clock::now() + kLockPatience;
  const Clock::time_point accessDeadline = Clock::now() + kAccessPatience;
  while (Clock::now() < deadline) {
    UniqueFd fd(OpenOnce(path, create));
    if (!fd) {
      // Somebody else made it, or took it away, or is about to give everybody access.
      const bool again = (create && (errno == EEXIST || errno == ENOENT)) || errno == EINTR ||
                         (errno == EACCES && Clock::now() < accessDeadline);
      if (!again) return nullptr;
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
      continue;
    }
    if (!IsPlainFile(fd.get())) return nullptr;
    const int raw = fd.get();
    std::unique_ptr<SharedFile> file(new SharedFile(std::move(fd), {}));
    const GateLock gate(raw);
    if (!gate) return nullptr;
    if (!IsLinked(raw, path)) continue;  // the last holder has just removed it
    const bool alone = SetLock(raw, kHolder, F_WRLCK);
    existed = !alone;
    if (alone && !create) {
      // Left over by holders that were killed: there is no such object.
      unlink(path.c_str());
      return nullptr;
    }
    const bool ready =
        alone ? file->WriteHeader(name, kind, initial) : file->HeaderMatches(name, kind);
    if (!ready || !SetLock(raw, kHolder, F_RDLCK)) {
      if (alone) unlink(path.c_str());
      return nullptr;
    }
    file->path_ = path;
    return file;
  }
  return nullptr;
}

std::unique_ptr<SharedFile> SharedFile::Unnamed(SignalKind kind, const SignalState& initial) {
  UniqueFd fd(memfd_create("kr-signal", MFD_CLOEXEC));
  if (!fd) return nullptr;
  std::unique_ptr<SharedFile> file(new SharedFile(std::move(fd), {}));
  return file->WriteHeader({}, kind, initial) ? std::move(file) : nullptr;
}

SharedFile::~SharedFile() {
  if (!path_.empty()) {
    const GateLock gate(fd_.get());
    if (gate && SetLock(fd_.get(), kHolder, F_WRLCK) && IsLinked(fd_.get(), path_))
      unlink(path_.c_str());
    SetLock(fd_.get(), kHolder, F_UNLCK);
  }
  // A program that is being started at this moment may have a copy of the descriptor for a blink,
  // so the locks are not left to its closing.
  SetLock(fd_.get(), kOwner, F_UNLCK);
}

bool SharedFile::WriteHeader(const std::string& name, SignalKind kind, const SignalState& initial) {
  Header header{};
  std::memcpy(header.magic, kMagic, sizeof kMagic);
  header.kind = kind;
  header.nameSize = static_cast<std::uint32_t>(name.size());
  header.state = initial;
  name.copy(header.name, kMostNameBytes);
  return ftruncate(fd_.get(), 0) == 0 &&
         pwrite(fd_.get(), &header, sizeof header, 0) == static_cast<ssize_t>(sizeof header);
}

bool SharedFile::HeaderMatches(const std::string& name, SignalKind kind) const {
  Header header{};
  return pread(fd_.get(), &header, sizeof header, 0) == static_cast<ssize_t>(sizeof header) &&
         std::memcmp(header.magic, kMagic, sizeof kMagic) == 0 && header.kind == kind &&
         header.nameSize == name.size() && std::memcmp(header.name, name.data(), name.size()) == 0;
}

SharedFile::StateLock::StateLock(SharedFile& file)
    : file_(file), locked_(SetLockSoon(file.fd_.get(), kStateByte, F_WRLCK)) {}

SharedFile::StateLock::~StateLock() {
  if (locked_) SetLock(file_.fd_.get(), kStateByte, F_UNLCK);
}

bool SharedFile::Read(SignalState& state) const {
  return pread(fd_.get(), &state, sizeof state, kStateOffset) == static_cast<ssize_t>(sizeof state);
}

bool SharedFile::Write(const SignalState& state) {
  return pwrite(fd_.get(), &state, sizeof state, kStateOffset) ==
         static_cast<ssize_t>(sizeof state);
}

bool SharedFile::TryOwn() {
  return SetLock(fd_.get(), kOwner, F_WRLCK);
}

void SharedFile::Disown() {
  SetLock(fd_.get(), kOwner, F_UNLCK);
  // The watchers must wake up after the lock is free, not only before. By then the state may be the
  // next owner's, so bytes that never change are written.
  [[maybe_unused]] const ssize_t told = pwrite(fd_.get(), kMagic, sizeof kMagic, 0);
}

SharedFile::Watch::Watch(const SharedFile& file)
    : notify_(inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) {
  const std::string path = "/proc/self/fd/" + std::to_string(file.fd_.get());
  if (notify_ && inotify_add_watch(notify_.get(), path.c_str(), IN_MODIFY | IN_CLOSE_WRITE) < 0)
    notify_.Reset();
}

void SharedFile::Watch::Sleep(Clock::time_point until) {
  // Without notification (too many watchers of this user) only looking again helps.
  constexpr std::chrono::milliseconds kBlind{5};
  const Clock::time_point now = Clock::now();
  if (!notify_) {
    std::this_thread::sleep_until(std::min(until, now + kBlind));
    return;
  }
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - now).count();
  pollfd wait{notify_.get(), POLLIN, 0};
  if (poll(&wait, 1, static_cast<int>(std::clamp<std::int64_t>(left, 0, 60000))) <= 0) return;
  char events[4096];
  while (read(notify_.get(), events, sizeof events) > 0) {
  }
}
