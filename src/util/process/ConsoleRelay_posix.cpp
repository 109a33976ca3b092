#include "util/process/ConsoleRelay_posix.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <sys/signalfd.h>
#include <sys/wait.h>

#include <cerrno>
#include <iterator>
#include <utility>

namespace {

constexpr int kLost = 255;
constexpr int kRelayed[] = {SIGCHLD, SIGWINCH, SIGHUP, SIGTERM};
constexpr std::chrono::seconds kDrainTime{2};
constexpr std::chrono::milliseconds kCloseTime{2000};
constexpr winsize kUsualSize{24, 80, 0, 0};

// For a handler: the terminal as it was before.
termios theTerminalBefore;
volatile sig_atomic_t theTerminal = -1;

void RestoreTerminal() {
  if (theTerminal >= 0) tcsetattr(theTerminal, TCSANOW, &theTerminalBefore);
  theTerminal = -1;
}

void RestoreAndDie(int number) {
  RestoreTerminal();
  signal(number, SIG_DFL);
  raise(number);
}

// Never "all processes", which is what such a number would mean.
void HangUpGroup(pid_t group) {
  if (group <= 1) return;
  kill(-group, SIGHUP);
  kill(-group, SIGCONT);  // a stopped process could not answer
}

bool WouldWait() {
  return errno == EAGAIN || errno == EINTR;
}

// What is taken of the text goes from it. False: nobody takes any more.
bool Put(int fd, std::string& text) {
  const ssize_t put = write(fd, text.data(), text.size());
  if (put > 0) text.erase(0, static_cast<std::size_t>(put));
  return put > 0 || WouldWait();
}

}  // namespace

int WaitForChild(pid_t pid) {
  int status = 0;
  for (pid_t ended = 0; ended != pid;) {
    ended = waitpid(-1, &status, 0);
    if (ended < 0 && errno != EINTR) return kLost;
  }
  return ExitCodeOf(status);
}

bool ConsoleRelay::Open() {
  master_ = UniqueFd(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK));
  char name[64];
  if (!master_ || grantpt(master_.get()) != 0 || unlockpt(master_.get()) != 0 ||
      ptsname_r(master_.get(), name, sizeof name) != 0) {
    return false;
  }
  slave_ = UniqueFd(open(name, O_RDWR | O_NOCTTY | O_CLOEXEC));
  sigset_t relayed;
  sigemptyset(&relayed);
  for (const int number : kRelayed) sigaddset(&relayed, number);
  signals_ = UniqueFd(signalfd(-1, &relayed, SFD_CLOEXEC | SFD_NONBLOCK));
  if (!slave_ || !signals_ || sigprocmask(SIG_BLOCK, &relayed, nullptr) != 0) return false;
  if (shown_ && isatty(STDIN_FILENO) && isatty(STDOUT_FILENO)) {
    // Opened anew, so that not waiting for it is our own affair.
    terminal_ = UniqueFd(open("/proc/self/fd/0", O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK));
  }
  const int screen = terminal_ ? terminal_.get() : STDOUT_FILENO;
  if (shown_) screen_ = UniqueFd(fcntl(screen, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
  ioctl(master_.get(), TIOCSWINSZ, &kUsualSize);
  if (terminal_) EnterTerminal();
  return true;
}

void ConsoleRelay::EnterTerminal() {
  for (const int number : {SIGTTIN, SIGTTOU}) signal(number, SIG_IGN);
  if (tcgetattr(terminal_.get(), &theTerminalBefore) != 0) return;
  tcsetattr(slave_.get(), TCSANOW, &theTerminalBefore);
  TakeSize();
  theTerminal = terminal_.get();
  for (const int number : {SIGSEGV, SIGABRT, SIGBUS, SIGILL, SIGFPE}) {
    signal(number, RestoreAndDie);
  }
  termios raw = theTerminalBefore;
  cfmakeraw(&raw);
  tcsetattr(terminal_.get(), TCSANOW, &raw);
  listens_ = true;
}

void ConsoleRelay::Restore() {
  if (terminal_) RestoreTerminal();
}

void ConsoleRelay::TakeSize() const {
  winsize size{};
  if (!terminal_ || ioctl(terminal_.get(), TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return;
  ioctl(master_.get(), TIOCSWINSZ, &size);
}

void ConsoleRelay::Describe(ChildStart& start) const {
  start.ownSession = static_cast<bool>(terminal_);
  char name[64];
  if (terminal_ && ptsname_r(master_.get(), name, sizeof name) == 0) {
    start.terminal = name;
  } else {
    start.output = slave_.get();
  }
}

// Our own hold of the other side keeps it from being hung up by who closes his output.
int ConsoleRelay::Run(pid_t child, const std::string& file) {
  child_ = child;
  file_.Open(file);
  CollectChildren();
  while (exitCode_ < 0) Look();
  slave_.Reset();
  Drain();
  std::string rest;
  text_.End(rest);
  file_.Write(rest);
  file_.Close(kCloseTime);
  Restore();
  return exitCode_;
}

void ConsoleRelay::Look() {
  const auto events = [](bool in, bool out) {
    return static_cast<short>((in ? POLLIN : 0) | (out ? POLLOUT : 0));
  };
  pollfd wait[] = {
      {signals_.get(), POLLIN, 0},
      {master_.get(), events(toScreen_.empty(), !toProgram_.empty()), 0},
      {listens_ ? terminal_.get() : -1, events(toProgram_.empty(), false), 0},
      {toScreen_.empty() ? -1 : screen_.get(), POLLOUT, 0},
  };
  if (poll(wait, std::size(wait), -1) < 0) return;
  if (wait[1].revents & POLLIN) TakeOutput();
  if (wait[1].revents & POLLOUT) GiveKeys();
  if (wait[2].revents) TakeKeys();
  if (wait[3].revents) Show();
  if (wait[0].revents) TakeSignals();
}

void ConsoleRelay::TakeSignals() {
  signalfd_siginfo info{};
  while (read(signals_.get(), &info, sizeof info) == static_cast<ssize_t>(sizeof info)) {
    switch (info.ssi_signo) {
      case SIGCHLD:
        CollectChildren();
        break;
      case SIGWINCH:
        TakeSize();
        break;
      case SIGHUP:
        HangUp();
        break;
      default:
        EndBySignal(static_cast<int>(info.ssi_signo));
    }
  }
}

void ConsoleRelay::CollectChildren() {
  int status = 0;
  for (;;) {
    const pid_t ended = waitpid(-1, &status, WNOHANG);
    if (ended == child_) exitCode_ = ExitCodeOf(status);
    if (ended < 0 && errno == ECHILD && exitCode_ < 0) exitCode_ = kLost;
    if (ended <= 0 && !(ended < 0 && errno == EINTR)) return;
  }
}

// A closing window tells only the first program of its terminal, which is this one.
void ConsoleRelay::HangUp() {
  listens_ = false;
  screen_.Reset();
  toScreen_.clear();
  if (std::exchange(hungUp_, true) || exitCode_ >= 0) return;
  if (!terminal_) {
    signal(SIGHUP, SIG_IGN);
    kill(0, SIGHUP);
    return;
  }
  HangUpGroup(child_);
  const pid_t front = tcgetpgrp(master_.get());
  if (front != child_) HangUpGroup(front);
}

void ConsoleRelay::EndBySignal(int number) {
  Restore();
  file_.Close(kCloseTime);
  signal(number, SIG_DFL);
  sigset_t one;
  sigemptyset(&one);
  sigaddset(&one, number);
  sigprocmask(SIG_UNBLOCK, &one, nullptr);
  raise(number);
  _exit(ExitCodeOf(number));
}

// True when there was some.
bool ConsoleRelay::TakeOutput() {
  char bytes[4096];
  const ssize_t got = read(master_.get(), bytes, sizeof bytes);
  if (got <= 0) return false;
  const std::string_view output(bytes, static_cast<std::size_t>(got));
  std::string lines;
  text_.Take(output, lines);
  file_.Write(lines);
  if (screen_) toScreen_ = output;
  return true;
}

void ConsoleRelay::TakeKeys() {
  char bytes[1024];
  const ssize_t got = read(terminal_.get(), bytes, sizeof bytes);
  if (got > 0) {
    toProgram_.assign(bytes, static_cast<std::size_t>(got));
  } else if (got == 0 || !WouldWait()) {
    HangUp();
  }
}

void ConsoleRelay::Show() {
  if (Put(screen_.get(), toScreen_)) return;
  screen_.Reset();
  toScreen_.clear();
}

void ConsoleRelay::GiveKeys() {
  if (!Put(master_.get(), toProgram_)) toProgram_.clear();
}

// What the program printed is there by now; what others go on printing is not waited for.
void ConsoleRelay::Drain() {
  const Clock::time_point deadline = Clock::now() + kDrainTime;
  while (Clock::now() < deadline) {
    if (!toScreen_.empty()) {
      pollfd wait{screen_.get(), POLLOUT, 0};
      if (poll(&wait, 1, 50) > 0) Show();
    } else if (!TakeOutput()) {
      return;
    }
  }
}
