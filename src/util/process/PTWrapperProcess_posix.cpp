#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <exception>
#include <optional>
#include <thread>

#include "util/files/FileDirWrapper.h"
#include "util/files/FileSystemCalls.h"
#include "util/process/ChildStart_posix.h"
#include "util/process/Console_posix.h"
#include "util/process/ConsoleFile_posix.h"
#include "util/process/ProcessTree_posix.h"
#include "util/process/PTWrapper.h"
#include "util/signals/Mutex.h"
#include "util/text/StrWrapper.h"

namespace {

// Ends everything within two seconds, the last scan included.
constexpr std::chrono::milliseconds kTerminateTime{1900};
constexpr int kWaitMilliseconds = 200;
constexpr int kStillActive = 259;
constexpr int kSignalExitCode = 128;

std::vector<std::string> EnvironmentFor(const PTWrapperProcessStart& what,
                                        const std::string& token) {
  std::vector<std::string> environment = CurrentEnvironment();
  for (const auto& [name, value] : what.variables) SetVariable(environment, name, value);
  const char* around = FindVariable(environment, kTokenVariable);
  SetVariable(environment, kTokenVariable, around ? std::string(around) + ":" + token : token);
  return environment;
}

std::string CurrentFolder() {
  std::string folder;
  FileDirWrapper::CurrentDir(folder);
  return folder;
}

// Seen from our folder, whatever the child's is.
ChildStart Describe(const PTWrapperProcessStart& what, const std::string& token) {
  ChildStart start;
  StrWrapperTxt::SplitCommandLine(what.commandLine, start.args);
  if (start.args.empty()) start.args.push_back(what.program);
  start.program = FileDirWrapper::AbsolutePath(
      what.program.empty() ? FindProgram(start.args.front()) : what.program);
  start.folder = FileDirWrapper::AbsolutePath(what.folder);
  start.environment = EnvironmentFor(what, token);
  return start;
}

bool IsRunnable(const std::string& program) {
  return access(program.c_str(), X_OK) == 0;
}

// Without one that could be used terminal and host are empty.
Console::Setup SetupOf(const PTWrapperProcessStart& what, const std::string& token) {
  Console::Setup setup;
  setup.title = what.title.empty() ? what.program : what.title;
  setup.token = token;
  setup.minimised = what.console.minimised;
  setup.host = FileDirWrapper::AbsolutePath(what.console.host);
  if (setup.host.empty()) {
    std::string folder;
    FileDirWrapper::DirOf(FileDirWrapper::ProgramPath(), folder);
    setup.host = FileDirWrapper::Join(folder, "krconsole");
  }
  if (!IsRunnable(setup.host)) setup.host.clear();
  const char* const display = std::getenv("DISPLAY");
  if (what.showWindow && display != nullptr && *display != '\0') {
    setup.terminal = FileDirWrapper::AbsolutePath(FindProgram(what.console.terminal));
    if (!IsRunnable(setup.terminal)) setup.terminal.clear();
  }
  return setup;
}

}  // namespace

struct PTWrapperProcess::Private {
  struct Child {
    ProcessKey key;
    UniqueFd pinned;  // readable at its end; none for one below a host
    std::string token;
    bool opened = false;  // not started here
    std::unique_ptr<Console> console;
    std::optional<int> exitCode;

    // One of ours without a host is not collected before it is let go: so long nothing else has its
    // id.
    bool HasEnded();
    bool EndTree(ProcessIdentity& left);
    void AddTo(ProcessTree& tree) const;
    void LetGo();
  };

  static bool StartBelowHost(const ChildStart& start, const Console::Setup& setup,
                             const std::string& outputFile, Child& started, bool& failed);
  static bool StartAlone(ChildStart start, const std::string& outputFile, Child& started);
  bool Forget(bool ended) KR_REQUIRES(mutex);

  Mutex mutex;
  ProcessIdentity notEnded KR_GUARDED_BY(mutex);
  std::optional<Child> child KR_GUARDED_BY(mutex);
};

bool PTWrapperProcess::Private::Child::HasEnded() {
  if (exitCode) return true;
  if (console) {
    exitCode = console->Poll();
    return exitCode.has_value();
  }
  siginfo_t info{};
  if (waitid(P_PID, static_cast<id_t>(key.pid), &info, WEXITED | WNOHANG | WNOWAIT) != 0) {
    // Not our child.
    if (!opened || !IsProcessAlive(key)) exitCode = kUnknownExitCode;
  } else if (info.si_pid == key.pid) {
    exitCode = info.si_code == CLD_EXITED ? info.si_status : kSignalExitCode + info.si_status;
  }
  return exitCode.has_value();
}

void PTWrapperProcess::Private::Child::AddTo(ProcessTree& tree) const {
  if (opened) {
    tree.AddFound(key);
  } else if (console) {
    console->AddTo(tree);
  } else {
    tree.AddLeader(key.start == 0 ? KeyOf(key.pid) : key);
  }
}

// True when nothing of the tree is left.
bool PTWrapperProcess::Private::Child::EndTree(ProcessIdentity& left) {
  ProcessTree tree(token);
  AddTo(tree);
  if (tree.End(kTerminateTime)) return true;
  left = IdentityOfProcess(tree.Living());
  // The tree may not even be seen, for want of descriptors. This needs none: the child is ours and
  // not collected, and leads the group that most of what it started is in.
  if (!console && !opened) kill(-key.pid, SIGKILL);
  return false;
}

void PTWrapperProcess::Private::Child::LetGo() {
  if (console || opened) return;
  LetChildGo(key.pid);
  SweepChildren();
}

// False without `failed` when there is no host to have.
bool PTWrapperProcess::Private::StartBelowHost(const ChildStart& start, const Console::Setup& setup,
                                               const std::string& outputFile, Child& started,
                                               bool& failed) {
  failed = false;
  if (setup.host.empty()) return false;
  const ConsoleRequest request = {start.program,
                                  start.folder.empty() ? CurrentFolder() : start.folder, start.args,
                                  start.environment, FileDirWrapper::AbsolutePath(outputFile)};
  auto console = std::make_unique<Console>();
  auto outcome = Console::Outcome::kNoConsole;
  if (!setup.terminal.empty()) outcome = console->StartInTerminal(setup, request);
  if (outcome == Console::Outcome::kNoConsole) {
    console = std::make_unique<Console>();
    outcome = console->StartWithout(setup, request);
  }
  failed = outcome == Console::Outcome::kFailed;
  if (outcome != Console::Outcome::kStarted) return false;
  started.key = console->child();
  started.console = std::move(console);
  return true;
}

bool PTWrapperProcess::Private::StartAlone(ChildStart start, const std::string& outputFile,
                                           Child& started) {
  const UniqueFd output = OpenConsoleFile(outputFile);
  start.output = output.get();
  pid_t pid = 0;
  if (StartChild(start, pid) != 0) return false;
  // Not collected yet, so the id is its own even if it has ended.
  started.key = KeyOf(pid);
  started.pinned = PinProcess(pid);
  return true;
}

bool PTWrapperProcess::Private::Forget(bool ended) {
  child->LetGo();
  child.reset();
  return ended;
}

PTWrapperProcess::PTWrapperProcess() : p_(std::make_unique<Private>()) {}

PTWrapperProcess::~PTWrapperProcess() {
  if (p_->child) p_->child->LetGo();
}

bool PTWrapperProcess::Launch(const PTWrapperProcessStart& what, const std::string& ownFolder) try {
  const MutexLock lock(p_->mutex);
  SweepChildren();
  if (p_->child) {
    SetLastError("the process is opened");
    return false;
  }
  if (!what.program.empty() && !FileDirWrapper::FileExists(what.program)) {
    SetLastError("%s does not exist", what.program.c_str());
    return false;
  }

  bool failed = !ownFolder.empty() && !FileDirWrapper::SetCurrentDir(ownFolder);
  Private::Child child;
  child.token = what.token.empty() ? NewToken() : what.token;
  const ChildStart start = Describe(what, child.token);
  failed = failed || start.program.empty();
  bool started = false;
  if (!failed && (what.creationFlags & kNewConsole)) {
    started =
        Private::StartBelowHost(start, SetupOf(what, child.token), what.outputFile, child, failed);
  }
  if (!failed && !started) started = Private::StartAlone(start, what.outputFile, child);
  if (!started) {
    SetLastError("CreateProcess %s %s failed", what.program.c_str(), what.commandLine.c_str());
    return false;
  }
  p_->child = std::move(child);
  return true;
} catch (const std::exception&) {
  SetLastError("Unknown error when create process");
  return false;
}

// Pinned before it is looked at: as long as the pinned one has not ended, the id is its own.
bool PTWrapperProcess::Open(const ProcessIdentity& process, const std::string& token) {
  const MutexLock lock(p_->mutex);
  SweepChildren();
  if (p_->child) {
    SetLastError("the process is opened");
    return false;
  }
  Private::Child child;
  child.opened = true;
  child.token = token;
  child.pinned = PinProcess(process.id);
  child.key = KeyOf(process.id);
  if (!Runs(process) || child.HasEnded()) {
    SetLastError("process %d does not run", static_cast<int>(process.id));
    return false;
  }
  p_->child = std::move(child);
  return true;
}

bool PTWrapperProcess::WaitProc() {
  for (bool first = true;; first = false) {
    UniqueFd news;
    {
      const MutexLock lock(p_->mutex);
      if (!p_->child && first) {
        SetLastError("the process is not opened");
        return false;
      }
      if (!p_->child || p_->child->HasEnded()) return true;
      const Private::Child& child = *p_->child;
      const int fd = child.console ? child.console->link() : child.pinned.get();
      if (fd >= 0) news = UniqueFd(fcntl(fd, F_DUPFD_CLOEXEC, 0));
    }
    pollfd wait{news.get(), POLLIN, 0};
    poll(&wait, 1, news ? kWaitMilliseconds : kWaitMilliseconds / 10);
  }
}

bool PTWrapperProcess::IsActive() const {
  SweepChildren();
  const MutexLock lock(p_->mutex);
  return p_->child && !p_->child->HasEnded();
}

bool PTWrapperProcess::Terminate() {
  const MutexLock lock(p_->mutex);
  p_->notEnded = {};
  if (!p_->child || p_->Forget(p_->child->HasEnded() || p_->child->EndTree(p_->notEnded)))
    return true;
  SetLastError("TerminateProcess failed, It might be closed by System");
  return false;
}

bool PTWrapperProcess::TerminateAll() {
  const MutexLock lock(p_->mutex);
  p_->notEnded = {};
  if (!p_->child || p_->Forget(p_->child->EndTree(p_->notEnded))) return true;
  SetLastError("TerminateProcess failed, It might be closed by System");
  return false;
}

ProcessIdentity PTWrapperProcess::NotEnded() const {
  const MutexLock lock(p_->mutex);
  return p_->notEnded;
}

int PTWrapperProcess::ExitCode() const {
  const MutexLock lock(p_->mutex);
  if (!p_->child) return -1;
  return p_->child->HasEnded() ? *p_->child->exitCode : kStillActive;
}

int PTWrapperProcess::SignalOf(int exitCode) {
  constexpr int kLastSignal = 64;
  const int signal = exitCode - kSignalExitCode;
  return signal > 0 && signal <= kLastSignal ? signal : 0;
}

std::int32_t PTWrapperProcess::ProcessId() const {
  return getpid();
}

std::int32_t PTWrapperProcess::ChildId() const {
  const MutexLock lock(p_->mutex);
  return p_->child ? p_->child->key.pid : 0;
}

std::string PTWrapperProcess::Token() const {
  const MutexLock lock(p_->mutex);
  return p_->child ? p_->child->token : std::string();
}

std::string PTWrapperProcess::NewToken() {
  unsigned char bytes[16] = {};
  if (getrandom(bytes, sizeof bytes, 0) != sizeof bytes) {
    // Still unlike any other token of this machine: one process, one moment.
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return std::to_string(getpid()) + "-" + std::to_string(now.tv_sec) + "-" +
           std::to_string(now.tv_nsec);
  }
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string token;
  for (const unsigned char byte : bytes) {
    token += kDigits[byte >> 4];
    token += kDigits[byte & 15];
  }
  return token;
}

std::int32_t PTWrapperProcess::FindStarted(const std::string& token, const std::string& folder) {
  const std::optional<std::vector<ProcessEntry>> all = ListProcesses();
  if (!all || token.empty()) return 0;
  const std::string wanted = FileDirWrapper::IdentityOf(folder);
  for (const ProcessEntry& process : *all) {
    const pid_t pid = process.key.pid;
    if (LookForToken(pid, token) == TokenSeen::kYes &&
        FileDirWrapper::IdentityOf(FolderOfProcess(pid)) == wanted) {
      return pid;
    }
  }
  return 0;
}
