#include "util/process/Console_posix.h"

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "util/process/ChildStart_posix.h"
#include "util/process/ProcessTree_posix.h"
#include "util/process/PTWrapper.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kStartTime{5};
constexpr int kLookMilliseconds = 50;
// Terminal and host do not work in the solver's folder; who looks for what does shall not find
// them.
constexpr char kNeutralFolder[] = "/";

// A listening socket in a folder that only this user may enter; both go with the object.
class Listener {
 public:
  ~Listener() {
    if (!address_.empty()) unlink(address_.c_str());
    if (!folder_.empty()) rmdir(folder_.c_str());
  }

  bool Open() {
    const char* folders[] = {getenv("XDG_RUNTIME_DIR"), getenv("TMPDIR"), "/tmp"};
    return std::any_of(std::begin(folders), std::end(folders),
                       [this](const char* base) { return base && *base == '/' && OpenIn(base); });
  }

  int fd() const { return socket_.get(); }
  const std::string& address() const { return address_; }

 private:
  bool OpenIn(const std::string& base) {
    std::string folder = base + "/kr-XXXXXX";
    sockaddr_un where{};
    where.sun_family = AF_UNIX;
    if (folder.size() + 3 > sizeof where.sun_path) return false;
    if (!mkdtemp(folder.data())) return false;
    folder_ = folder;
    const std::string address = folder + "/s";
    std::memcpy(where.sun_path, address.c_str(), address.size() + 1);
    socket_ = UniqueFd(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (socket_ && bind(socket_.get(), reinterpret_cast<sockaddr*>(&where), sizeof where) == 0) {
      address_ = address;
      if (listen(socket_.get(), 4) == 0) return true;
      unlink(address.c_str());
      address_.clear();
    }
    rmdir(folder.c_str());
    folder_.clear();
    return false;
  }

  UniqueFd socket_;
  std::string folder_;
  std::string address_;
};

// The title goes to the window through the terminal, for which control characters have a meaning.
std::string PlainTitle(std::string title) {
  for (char& c : title) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) c = ' ';
  }
  return title;
}

}  // namespace

Console::~Console() {
  if (terminal_.pid > 0 && waitpid(terminal_.pid, nullptr, WNOHANG) == 0) LetChildGo(terminal_.pid);
}

Console::Outcome Console::StartInTerminal(const Setup& setup, const ConsoleRequest& request) {
  const Clock::time_point deadline = Clock::now() + kStartTime;
  Listener listener;
  if (!listener.Open() || !StartTerminal(setup, request, listener.address()))
    return Outcome::kNoConsole;
  Accept(listener.fd(), deadline);
  return Ask(setup, request, deadline);
}

Console::Outcome Console::StartWithout(const Setup& setup, const ConsoleRequest& request) {
  if (!StartHost(setup, request)) return Outcome::kNoConsole;
  return Ask(setup, request, Clock::now() + kStartTime);
}

Console::Outcome Console::Ask(const Setup& setup, const ConsoleRequest& request,
                              Clock::time_point deadline) {
  std::optional<ConsoleReport> report;
  if (link_ && SendConsoleRequest(link_.get(), request, deadline)) report = NextReport(deadline);
  if (report && report->kind == ConsoleReport::kStarted) {
    child_ = {report->value, report->start};
    return Outcome::kStarted;
  }
  if (report && report->kind == ConsoleReport::kFailed) {
    errno = report->value;
    return Outcome::kFailed;
  }
  ProcessTree tree(setup.token);
  AddTo(tree);
  tree.End(std::chrono::seconds(1));
  return Outcome::kNoConsole;
}

bool Console::StartTerminal(const Setup& setup, const ConsoleRequest& request,
                            const std::string& address) {
  ChildStart start;
  start.program = setup.terminal;
  start.args = {setup.terminal, "-T", PlainTitle(setup.title)};
  if (setup.minimised) start.args.push_back("-iconic");
  for (const std::string& arg : {std::string("-e"), setup.host, address, setup.token})
    start.args.push_back(arg);
  start.folder = kNeutralFolder;
  start.environment = request.environment;
  pid_t pid = 0;
  if (StartChild(start, pid) != 0) return false;
  terminal_ = KeyOf(pid);
  return true;
}

// Its standard input is the link.
bool Console::StartHost(const Setup& setup, const ConsoleRequest& request) {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) return false;
  UniqueFd ours(ends[0]);
  const UniqueFd its(ends[1]);
  const UniqueFd input(fcntl(its.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
  ChildStart start;
  start.program = setup.host;
  start.args = {setup.host, "-"};
  start.folder = kNeutralFolder;
  start.environment = request.environment;
  start.input = input.get();
  pid_t pid = 0;
  if (!input || StartChild(start, pid) != 0) return false;
  terminal_ = host_ = KeyOf(pid);
  link_ = std::move(ours);
  return true;
}

// A terminal that hands its work to a server ends at once, and well; then only time tells.
bool Console::TerminalFailed() {
  int status = 0;
  if (terminal_.pid <= 0 || waitpid(terminal_.pid, &status, WNOHANG) == 0) return false;
  terminal_ = {};
  return status != 0;
}

bool Console::Accept(int listener, Clock::time_point deadline) {
  while (Clock::now() < deadline) {
    pollfd wait{listener, POLLIN, 0};
    poll(&wait, 1, kLookMilliseconds);
    UniqueFd peer(accept4(listener, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (!peer && (errno == EMFILE || errno == ENFILE)) return false;
    if (peer) {
      ucred who{};
      socklen_t size = sizeof who;
      if (getsockopt(peer.get(), SOL_SOCKET, SO_PEERCRED, &who, &size) != 0 || who.uid != geteuid())
        continue;
      link_ = std::move(peer);
      if (const std::optional<ProcessEntry> host = ReadProcess(who.pid)) host_ = host->key;
      return true;
    }
    if (TerminalFailed()) return false;
  }
  return false;
}

std::optional<ConsoleReport> Console::NextReport(Clock::time_point deadline) {
  while (link_ && Clock::now() < deadline) {
    if (std::optional<ConsoleReport> report = ReadReport()) return report;
    pollfd wait{link_.get(), POLLIN, 0};
    poll(&wait, 1, kLookMilliseconds);
  }
  return std::nullopt;
}

// Closes the link when the other side is gone.
std::optional<ConsoleReport> Console::ReadReport() {
  while (link_) {
    char bytes[sizeof(ConsoleReport)];
    const ssize_t got =
        recv(link_.get(), bytes, sizeof(ConsoleReport) - pending_.size(), MSG_DONTWAIT);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0 && errno == EAGAIN) return std::nullopt;
    if (got <= 0) {
      link_.Reset();
      return std::nullopt;
    }
    pending_.append(bytes, static_cast<std::size_t>(got));
    if (pending_.size() < sizeof(ConsoleReport)) continue;
    ConsoleReport report;
    std::memcpy(&report, pending_.data(), sizeof report);
    pending_.clear();
    return report;
  }
  return std::nullopt;
}

std::optional<int> Console::Poll() {
  const bool mayGo = terminal_.pid > 0 && InTerminal();
  if (mayGo && waitpid(terminal_.pid, nullptr, WNOHANG) != 0) terminal_ = {};
  if (const std::optional<ConsoleReport> report = ReadReport()) {
    if (report->kind == ConsoleReport::kEnded) return report->value;
  }
  if (!link_ && !IsProcessAlive(child_)) return PTWrapperProcess::kUnknownExitCode;
  return std::nullopt;
}

void Console::AddTo(ProcessTree& tree) const {
  tree.AddRoot(child_);
  tree.AddConsole(terminal_);
  tree.AddConsole(host_);
  if (!InTerminal()) tree.AddLeader(host_);
}
