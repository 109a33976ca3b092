#include "util/process/ChildStart_posix.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "util/files/FileSystemCalls.h"
#include "util/signals/Mutex.h"
#include "util/text/StrWrapper.h"

namespace {

class SpawnSetup {
 public:
  SpawnSetup() {
    posix_spawnattr_init(&attributes);
    posix_spawn_file_actions_init(&actions);
  }
  ~SpawnSetup() {
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
  }
  SpawnSetup(const SpawnSetup&) = delete;
  SpawnSetup& operator=(const SpawnSetup&) = delete;

  posix_spawnattr_t attributes;
  posix_spawn_file_actions_t actions;
};

std::vector<char*> Pointers(const std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (const std::string& text : texts) pointers.push_back(const_cast<char*>(text.c_str()));
  pointers.push_back(nullptr);
  return pointers;
}

int DescribeFiles(const ChildStart& start, posix_spawn_file_actions_t& actions) {
  int error = 0;
  const auto file = [&](int fd, const char* path, int mode) {
    if (error == 0) error = posix_spawn_file_actions_addopen(&actions, fd, path, mode, 0);
  };
  const auto copy = [&](int from, int to) {
    if (error == 0) error = posix_spawn_file_actions_adddup2(&actions, from, to);
  };
  if (!start.terminal.empty()) {
    // The first terminal that the leader of a session opens is the session's.
    file(STDIN_FILENO, start.terminal.c_str(), O_RDWR);
    copy(STDIN_FILENO, STDOUT_FILENO);
    copy(STDIN_FILENO, STDERR_FILENO);
  } else {
    // Copied out of the way first, since the descriptor may itself be one of the first three.
    if (start.output >= 0) {
      copy(start.output, STDOUT_FILENO);
      copy(STDOUT_FILENO, STDERR_FILENO);
    } else if (start.ownSession) {
      file(STDOUT_FILENO, "/dev/null", O_WRONLY);
      file(STDERR_FILENO, "/dev/null", O_WRONLY);
    }
    if (start.input >= 0) {
      copy(start.input, STDIN_FILENO);
    } else if (start.ownSession) {
      file(STDIN_FILENO, "/dev/null", O_RDONLY);
    }
  }
  if (error == 0 && !start.folder.empty())
    error = posix_spawn_file_actions_addchdir_np(&actions, start.folder.c_str());
  if (error == 0) error = posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);
  return error;
}

bool IsRunnable(const std::string& path) {
  struct stat info {};
  return stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode) && access(path.c_str(), X_OK) == 0;
}

// Who started us may have told the system that nobody asks how children end, which we inherit: it
// would then throw their exit states away.
void KeepChildrenCollectable() {
  struct sigaction action {};
  if (sigaction(SIGCHLD, nullptr, &action) != 0 || action.sa_flags & SA_SIGINFO) return;
  if (action.sa_handler == SIG_IGN) signal(SIGCHLD, SIG_DFL);
}

struct LetGo {
  Mutex mutex;
  std::vector<pid_t> pids KR_GUARDED_BY(mutex);
};

LetGo& LetGoChildren() {
  static LetGo& children = *new LetGo;  // threads may still use it while the process ends
  return children;
}

}  // namespace

int StartChild(const ChildStart& start, pid_t& pid) {
  KeepChildrenCollectable();
  SpawnSetup setup;
  sigset_t none, all;
  sigemptyset(&none);
  sigfillset(&all);
  posix_spawnattr_setsigmask(&setup.attributes, &none);
  posix_spawnattr_setsigdefault(&setup.attributes, &all);
  short flags = POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF;
  if (start.ownSession) flags = static_cast<short>(flags | POSIX_SPAWN_SETSID);
  posix_spawnattr_setflags(&setup.attributes, flags);
  if (const int error = DescribeFiles(start, setup.actions)) return error;

  const std::vector<char*> args = Pointers(start.args);
  const std::vector<char*> environment = Pointers(start.environment);
  return posix_spawn(&pid, start.program.c_str(), &setup.actions, &setup.attributes, args.data(),
                     environment.data());
}

std::string FindProgram(const std::string& name) {
  const std::string own = file_system::ForSystem(name);
  if (own.empty() || own.find('/') != std::string::npos) return own;
  const char* path = std::getenv("PATH");
  std::vector<std::string> folders;
  StrWrapperTxt::SeparateString(path ? path : "/usr/local/bin:/usr/bin:/bin", folders, ':');
  for (const std::string& folder : folders) {
    const std::string candidate = folder + "/" + name;
    // Relative folders would name whatever lies in the job's folder.
    if (folder.front() == '/' && IsRunnable(candidate)) return candidate;
  }
  return {};
}

std::vector<std::string> CurrentEnvironment() {
  std::vector<std::string> copy;
  for (char** entry = environ; entry && *entry; ++entry) copy.emplace_back(*entry);
  return copy;
}

const char* FindVariable(const std::vector<std::string>& environment, const std::string& name) {
  for (const std::string& entry : environment) {
    if (entry.starts_with(name) && entry[name.size()] == '=')
      return entry.c_str() + name.size() + 1;
  }
  return nullptr;
}

void SetVariable(std::vector<std::string>& environment, const std::string& name,
                 const std::string& value) {
  const std::string start = name + "=";
  std::erase_if(environment, [&](const std::string& entry) { return entry.starts_with(start); });
  environment.push_back(start + value);
}

int ExitCodeOf(int waitStatus) {
  return WIFSIGNALED(waitStatus) ? 128 + WTERMSIG(waitStatus) : WEXITSTATUS(waitStatus);
}

void LetChildGo(pid_t pid) {
  LetGo& children = LetGoChildren();
  const MutexLock lock(children.mutex);
  children.pids.push_back(pid);
}

void SweepChildren() {
  LetGo& children = LetGoChildren();
  const MutexLock lock(children.mutex);
  std::erase_if(children.pids, [](pid_t pid) { return waitpid(pid, nullptr, WNOHANG) != 0; });
}
