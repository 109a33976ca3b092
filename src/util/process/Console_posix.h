// The console host around a solver, in a terminal window or without one.
//
// A terminal program gives no exit state of what runs in it, and some hand the work to a server
// process that knows neither our environment nor our folder. So the terminal runs the console host
// (krconsole), which asks us over a local socket what to run and reports how it goes. It also keeps
// what is printed, see ConsoleRelay. Processes
// that lose their parent below it get it as their parent, so that all of them can be found; that is
// why a solver without a terminal runs below one too.
#ifndef KR_UTIL_PROCESS_CONSOLE_POSIX_H
#define KR_UTIL_PROCESS_CONSOLE_POSIX_H

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "util/files/UniqueFd_posix.h"
#include "util/process/ProcessTable_posix.h"

class ProcessTree;

struct ConsoleRequest {
  std::string program;
  std::string folder;
  std::vector<std::string> args;
  std::vector<std::string> environment;
  std::string outputFile;  // keeps what is printed, see ConsoleFile; empty: nothing does
};

struct ConsoleReport {
  enum Kind : std::int32_t { kStarted = 1, kFailed = 2, kEnded = 3 };
  std::int32_t kind = 0;
  std::int32_t value = 0;   // process id, error number or exit code
  std::uint64_t start = 0;  // of the process that was started, see ProcessKey
};

// Both false when the other side is gone, sends nonsense or does not keep up until the deadline.
bool SendConsoleRequest(int socket, const ConsoleRequest& request,
                        std::chrono::steady_clock::time_point deadline);
bool ReceiveConsoleRequest(int socket, ConsoleRequest& request);

bool SendConsoleReport(int socket, const ConsoleReport& report);

// Our end. Belongs to one thread at a time.
class Console {
 public:
  enum class Outcome {
    kStarted,
    kNoConsole,  // terminal or host could not be used; nothing of them is left
    kFailed,     // they are there, but the program cannot be run
  };

  struct Setup {
    std::string terminal;  // a path
    std::string host;
    std::string title;
    std::string token;  // of the environment, see ProcessTree
    bool minimised = false;
  };

  Console() = default;
  ~Console();  // leaves what runs alone
  Console(const Console&) = delete;
  Console& operator=(const Console&) = delete;

  // One of these, once.
  Outcome StartInTerminal(const Setup& setup, const ConsoleRequest& request);
  Outcome StartWithout(const Setup& setup, const ConsoleRequest& request);

  const ProcessKey& child() const { return child_; }
  // Looks for news without waiting. Empty while the child runs.
  std::optional<int> Poll();
  // Becomes readable when there is news; -1 when only looking again helps.
  int link() const { return link_.get(); }

  // The child, and what must go besides it for the window to close.
  void AddTo(ProcessTree& tree) const;

 private:
  // Else the host leads the session, and is not collected before this object goes: so long its id
  // stays its own.
  bool InTerminal() const { return host_ != terminal_; }
  using Deadline = std::chrono::steady_clock::time_point;
  bool StartTerminal(const Setup& setup, const ConsoleRequest& request, const std::string& address);
  bool StartHost(const Setup& setup, const ConsoleRequest& request);
  Outcome Ask(const Setup& setup, const ConsoleRequest& request, Deadline deadline);
  bool Accept(int listener, std::chrono::steady_clock::time_point deadline);
  bool TerminalFailed();
  std::optional<ConsoleReport> NextReport(std::chrono::steady_clock::time_point deadline);
  std::optional<ConsoleReport> ReadReport();

  ProcessKey terminal_;  // the host where there is none; collected once its id is 0
  ProcessKey host_;
  ProcessKey child_;
  UniqueFd link_;
  std::string pending_;  // the received part of a report
};

#endif
