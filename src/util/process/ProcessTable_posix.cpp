#include "util/process/ProcessTable_posix.h"

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/syscall.h>

#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <memory>
#include <sstream>

namespace {

std::string ProcPath(pid_t pid, const char* file) {
  return "/proc/" + std::to_string(pid) + "/" + file;
}

bool IsForWantOfDescriptors(int error) {
  return error == EMFILE || error == ENFILE || error == ENOMEM;
}

std::string ReadProcFile(pid_t pid, const char* file) {
  std::string text;
  errno = 0;
  const UniqueFd fd(open(ProcPath(pid, file).c_str(), O_RDONLY | O_CLOEXEC));
  if (!fd) return text;
  char buffer[4096];
  for (;;) {
    const ssize_t got = read(fd.get(), buffer, sizeof buffer);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return text;
    text.append(buffer, static_cast<std::size_t>(got));
  }
}

std::string BaseName(const std::string& path) {
  return path.substr(path.rfind('/') + 1);
}

// Its memory is the new program's, without arguments and variables yet. Threads of the system have
// none for ever.
bool IsBeingLoaded(pid_t pid) {
  const std::string text = ReadProcFile(pid, "stat");
  std::istringstream fields(text.substr(text.rfind(')') + 1));
  constexpr int kState = 3, kFlags = 9, kVariablesEnd = 51;
  constexpr std::uint64_t kIsOfSystem = 0x00200000;
  std::string field;
  std::uint64_t flags = kIsOfSystem;
  std::uint64_t end = 1;
  for (int i = kState; i < kFlags; ++i) fields >> field;
  fields >> flags;
  for (int i = kFlags + 1; i < kVariablesEnd; ++i) fields >> field;
  return fields >> end && (flags & kIsOfSystem) == 0 && end == 0;
}

}  // namespace

bool ProcessEntry::IsAlive() const {
  // A process whose first thread has returned looks like a zombie while its other threads run.
  return (state != 'Z' && state != 'X') || threads > 1;
}

std::optional<ProcessEntry> ReadProcess(pid_t pid) {
  const std::string text = ReadProcFile(pid, "stat");
  // The name stands in parentheses and may hold any byte, parentheses and blanks too.
  const std::size_t open = text.find('(');
  const std::size_t close = text.rfind(')');
  if (open == std::string::npos || close == std::string::npos || close < open) return std::nullopt;

  ProcessEntry entry;
  entry.key.pid = pid;
  entry.threadName = text.substr(open + 1, close - open - 1);
  std::istringstream fields(text.substr(close + 1));
  fields >> entry.state >> entry.parent;
  std::string skipped;
  constexpr int kSession = 6, kTimes = 14, kThreads = 20, kStart = 22;
  for (int field = 5; field < kSession; ++field) fields >> skipped;
  fields >> entry.session;
  for (int field = kSession + 1; field < kTimes; ++field) fields >> skipped;
  std::uint64_t user = 0, system = 0, childrensUser = 0, childrensSystem = 0;
  fields >> user >> system >> childrensUser >> childrensSystem;
  entry.cpu = user + system + childrensUser + childrensSystem;
  for (int field = kTimes + 4; field < kThreads; ++field) fields >> skipped;
  fields >> entry.threads >> skipped;
  static_assert(kStart == kThreads + 2);
  fields >> entry.key.start;
  if (!fields) return std::nullopt;
  return entry;
}

ProcessKey KeyOf(pid_t pid) {
  const std::optional<ProcessEntry> entry = ReadProcess(pid);
  return entry ? entry->key : ProcessKey{pid, 0};
}

std::optional<std::vector<ProcessEntry>> ListProcesses() {
  std::vector<ProcessEntry> list;
  const std::unique_ptr<DIR, int (*)(DIR*)> dir(opendir("/proc"), closedir);
  if (!dir) return std::nullopt;
  while (const dirent* item = readdir(dir.get())) {
    const std::string name = item->d_name;
    pid_t pid = 0;
    const auto parsed = std::from_chars(name.data(), name.data() + name.size(), pid);
    if (parsed.ec != std::errc() || parsed.ptr != name.data() + name.size()) continue;
    std::optional<ProcessEntry> entry = ReadProcess(pid);
    if (!entry && IsForWantOfDescriptors(errno)) return std::nullopt;
    if (entry && entry->IsAlive()) list.push_back(std::move(*entry));
  }
  return list;
}

bool IsProcessAlive(const ProcessKey& key) {
  const std::optional<ProcessEntry> entry = ReadProcess(key.pid);
  if (!entry) return IsForWantOfDescriptors(errno) && kill(key.pid, 0) == 0;
  return entry->key == key && entry->IsAlive();
}

std::string ExecutableName(const ProcessEntry& process) {
  char path[4096];
  const ssize_t size = readlink(ProcPath(process.key.pid, "exe").c_str(), path, sizeof path);
  if (size > 0) {
    std::string name = BaseName(std::string(path, static_cast<std::size_t>(size)));
    constexpr char kDeleted[] = " (deleted)";
    if (name.ends_with(kDeleted)) name.resize(name.size() - (sizeof kDeleted - 1));
    return name;
  }
  const std::string commandLine = ReadProcFile(process.key.pid, "cmdline");
  const std::string name = BaseName(commandLine.substr(0, commandLine.find('\0')));
  return name.empty() ? process.threadName : name;
}

TokenSeen LookForToken(pid_t pid, const std::string& token) {
  if (token.empty() || token.find_first_of(std::string_view(":\0", 2)) != std::string::npos)
    return TokenSeen::kNo;
  const std::string read = ReadProcFile(pid, "environ");
  if (read.empty()) return errno == 0 && IsBeingLoaded(pid) ? TokenSeen::kNotYet : TokenSeen::kNo;
  const std::string variables = std::string(1, '\0') + read;
  const std::string name = std::string(1, '\0') + kTokenVariable + '=';
  const std::size_t begin = variables.find(name);
  if (begin == std::string::npos) return TokenSeen::kNo;
  const std::string value = variables.c_str() + begin + name.size();
  const bool isIn = (':' + value + ':').find(':' + token + ':') != std::string::npos;
  return isIn ? TokenSeen::kYes : TokenSeen::kNo;
}

std::string FolderOfProcess(pid_t pid) {
  return ProcPath(pid, "cwd");
}

std::optional<uid_t> ProcessUserId(pid_t pid) {
  if (pid <= 0) return std::nullopt;
  const std::string status = "\n" + ReadProcFile(pid, "status");
  const std::size_t line = status.find("\nUid:");
  if (line == std::string::npos) return std::nullopt;
  std::istringstream fields(status.substr(line + 5));
  uid_t real = 0, effective = 0;
  if (!(fields >> real >> effective)) return std::nullopt;
  return effective;
}

UniqueFd PinProcess(pid_t pid) {
  return UniqueFd(static_cast<int>(syscall(SYS_pidfd_open, pid, 0)));
}

bool SignalProcess(const ProcessKey& key, int signal) {
  if (key.pid <= 0) return false;
  // The descriptor pins the process, so that the comparison below stays true until the signal.
  const UniqueFd pinned = PinProcess(key.pid);
  const std::optional<ProcessEntry> now = ReadProcess(key.pid);
  if (!now || now->key != key) return false;
  if (pinned) return syscall(SYS_pidfd_send_signal, pinned.get(), signal, nullptr, 0) == 0;
  return kill(key.pid, signal) == 0;
}
