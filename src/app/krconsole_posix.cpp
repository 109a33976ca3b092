// Runs in a terminal window: asks for the program to run over the socket named by the argument,
// runs it in this terminal, and reports its start and its exit state.
#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "util/process/ChildStart_posix.h"
#include "util/process/Console_posix.h"

namespace {

UniqueFd Connect(const char* address) {
  sockaddr_un where{};
  where.sun_family = AF_UNIX;
  if (std::strlen(address) >= sizeof where.sun_path) return {};
  std::strcpy(where.sun_path, address);
  UniqueFd link(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  if (link && connect(link.get(), reinterpret_cast<sockaddr*>(&where), sizeof where) != 0)
    link.Reset();
  return link;
}

// A closing window tells only the first program of its terminal, which is this one.
void PassOnHangUp(int) {
  signal(SIGHUP, SIG_IGN);
  kill(0, SIGHUP);
}

// The keys that stop a program, and the closing of the window, are for the program that runs here.
// Its end is then still ours to report.
void OutliveTheProgram() {
  for (const int number : {SIGINT, SIGQUIT, SIGTSTP, SIGPIPE}) signal(number, SIG_IGN);
  signal(SIGHUP, PassOnHangUp);
}

int Run(const ConsoleRequest& request, pid_t& pid) {
  if (chdir(request.folder.c_str()) != 0) return errno;
  ChildStart start;
  start.program = request.program;
  start.args = request.args;
  start.environment = request.environment;
  start.ownSession = false;
  for (const char* name : {"TERM", "COLORTERM", "WINDOWID"}) {
    if (const char* value = std::getenv(name)) SetVariable(start.environment, name, value);
  }
  return StartChild(start, pid);
}

int WaitFor(pid_t pid) {
  int status = 0;
  while (waitpid(pid, &status, 0) < 0) {
    if (errno != EINTR) return 255;
  }
  return ExitCodeOf(status);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "krconsole is started by Kestrun inside a terminal window.\n");
    return 2;
  }
  const UniqueFd link = Connect(argv[1]);
  ConsoleRequest request;
  if (!link || !ReceiveConsoleRequest(link.get(), request)) {
    std::fprintf(stderr, "krconsole: nothing to run at %s\n", argv[1]);
    return 2;
  }
  OutliveTheProgram();
  pid_t pid = 0;
  if (const int error = Run(request, pid)) {
    SendConsoleReport(link.get(), {ConsoleReport::kFailed, error, 0});
    return 2;
  }
  const ProcessKey child = KeyOf(pid);
  SendConsoleReport(link.get(), {ConsoleReport::kStarted, pid, child.start});
  const int exitCode = WaitFor(pid);
  SendConsoleReport(link.get(), {ConsoleReport::kEnded, exitCode, 0});
  return exitCode;
}
