// Runs in a terminal window: asks for the program to run over the socket named by the argument,
// runs it in this terminal, and reports its start and its exit state. With "-" the socket is the
// standard input, and there is no terminal.
#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
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

// The program gets no input then.
UniqueFd LinkFromInput() {
  UniqueFd link(fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
  const UniqueFd nothing(open("/dev/null", O_RDONLY | O_CLOEXEC));
  if (!nothing || dup2(nothing.get(), STDIN_FILENO) < 0) link.Reset();
  return link;
}

UniqueFd Connect(const char* address) {
  if (std::strcmp(address, "-") == 0) return LinkFromInput();
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
  ChildStart start;
  start.program = request.program;
  start.folder = request.folder;
  start.args = request.args;
  start.environment = request.environment;
  start.ownSession = false;
  for (const char* name : {"TERM", "COLORTERM", "WINDOWID"}) {
    if (const char* value = std::getenv(name)) SetVariable(start.environment, name, value);
  }
  return StartChild(start, pid);
}

// Collects what has become ours meanwhile, too.
int WaitFor(pid_t pid) {
  constexpr int kLost = 255;
  int status = 0;
  for (pid_t ended = 0; ended != pid;) {
    ended = waitpid(-1, &status, 0);
    if (ended < 0 && errno != EINTR) return kLost;
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
  // What loses its parent below us becomes our child, so that it can be found when all is to end.
  prctl(PR_SET_CHILD_SUBREAPER, 1);
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
