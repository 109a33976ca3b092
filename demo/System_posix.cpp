#include <fcntl.h>
#include <limits.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>

#include "System.h"

namespace {

constexpr unsigned kChildSleepSeconds = 600;

[[noreturn]] void SleepAsChild() {
  setsid();
  const int nowhere = open("/dev/null", O_RDWR);
  if (nowhere >= 0) {
    for (int stream = 0; stream <= 2; ++stream) dup2(nowhere, stream);
  }
  unsigned left = kChildSleepSeconds;
  while (left > 0) left = sleep(left);
  _exit(0);
}

}  // namespace

void IgnorePoliteTermination() {
  for (int number : {SIGTERM, SIGINT, SIGHUP}) std::signal(number, SIG_IGN);
}

long StartSleepingChild() {
  const pid_t child = fork();
  if (child == 0) SleepAsChild();
  return child > 0 ? static_cast<long>(child) : 0;
}

void Crash() {
  const rlimit noCore{0, 0};
  setrlimit(RLIMIT_CORE, &noCore);
  std::signal(SIGSEGV, SIG_DFL);
  raise(SIGSEGV);
  _exit(139);
}

void DieBySignal(int number) {
  const rlimit noCore{0, 0};
  setrlimit(RLIMIT_CORE, &noCore);
  std::signal(number, SIG_DFL);
  raise(number);
}

bool ReadWindowSize(int& lines, int& columns) {
  winsize size{};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0) return false;
  lines = size.ws_row;
  columns = size.ws_col;
  return true;
}

bool IsFolder(const std::string& path) {
  struct stat entry {};
  return stat(path.c_str(), &entry) == 0 && S_ISDIR(entry.st_mode);
}

std::string CurrentFolder() {
  char buffer[PATH_MAX];
  return getcwd(buffer, sizeof buffer) != nullptr ? buffer : ".";
}

std::string ProgramFolder() {
  char buffer[PATH_MAX];
  const ssize_t length = readlink("/proc/self/exe", buffer, sizeof buffer);
  if (length <= 0) return ".";
  const std::string path(buffer, static_cast<std::size_t>(length));
  return path.substr(0, path.rfind('/'));
}

void KeepRunningWithoutOutput() {
  std::signal(SIGPIPE, SIG_IGN);
}
