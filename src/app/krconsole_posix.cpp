// Runs in a terminal window: asks for the program to run over the socket named by the argument,
// runs it for this terminal, keeps what it prints, and reports its start and its exit state. With
// "-" the socket is the standard input, and there is no terminal. The second argument is the token
// by which all that belongs to the run is found.
#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "util/process/ChildStart_posix.h"
#include "util/process/Console_posix.h"
#include "util/process/ConsoleRelay_posix.h"

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

// A terminal may be served by a process that was started for another run, or for none; who looks
// for what belongs to this one shall find us by the token like others.
void BearToken(char** argv) {
  const char* const token = argv[2];
  const char* const ours = std::getenv(kTokenVariable);
  if (ours != nullptr && std::strstr(ours, token) != nullptr) return;
  setenv(kTokenVariable, token, 1);
  execl("/proc/self/exe", argv[0], argv[1], static_cast<char*>(nullptr));
}

// The keys that stop a program are for the program that runs here. Its end is then still ours to
// report.
void OutliveTheProgram() {
  for (const int number : {SIGINT, SIGQUIT, SIGTSTP, SIGPIPE}) signal(number, SIG_IGN);
}

int Start(const ConsoleRequest& request, const ConsoleRelay* relay, int output, pid_t& pid) {
  ChildStart start;
  start.program = request.program;
  start.folder = request.folder;
  start.args = request.args;
  start.environment = request.environment;
  start.ownSession = false;
  start.output = output;
  if (relay != nullptr) relay->Describe(start);
  for (const char* name : {"TERM", "COLORTERM", "WINDOWID"}) {
    if (const char* value = std::getenv(name)) SetVariable(start.environment, name, value);
  }
  return StartChild(start, pid);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2 && argc != 3) {
    std::fprintf(stderr, "krconsole is started by Kestrun inside a terminal window.\n");
    return 2;
  }
  if (argc == 3) BearToken(argv);
  const UniqueFd link = Connect(argv[1]);
  ConsoleRequest request;
  if (!link || !ReceiveConsoleRequest(link.get(), request)) {
    std::fprintf(stderr, "krconsole: nothing to run at %s\n", argv[1]);
    return 2;
  }
  OutliveTheProgram();
  // What loses its parent below us becomes our child, so that it can be found when all is to end.
  prctl(PR_SET_CHILD_SUBREAPER, 1);
  const bool hasTerminal = std::strcmp(argv[1], "-") != 0;
  ConsoleRelay relay(hasTerminal);
  const bool relayed = relay.Open();
  UniqueFd output;
  if (!relayed && !hasTerminal) output = OpenConsoleFile(request.outputFile);
  pid_t pid = 0;
  if (const int error = Start(request, relayed ? &relay : nullptr, output.get(), pid)) {
    SendConsoleReport(link.get(), {ConsoleReport::kFailed, error, 0});
    return 2;
  }
  const ProcessKey child = KeyOf(pid);
  SendConsoleReport(link.get(), {ConsoleReport::kStarted, pid, child.start});
  const int exitCode = relayed ? relay.Run(pid, request.outputFile) : WaitForChild(pid);
  SendConsoleReport(link.get(), {ConsoleReport::kEnded, exitCode, 0});
  return exitCode;
}
