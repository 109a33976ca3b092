// A terminal window around a solver.
//
// A terminal program gives no exit state of what runs in it, and some hand the work to a server
// process that knows neither our environment nor our folder. So the terminal runs the console host
// (krconsole), which asks us over a local socket what to run and reports how it goes.
#ifndef KR_UTIL_PROCESS_CONSOLE_POSIX_H
#define KR_UTIL_PROCESS_CONSOLE_POSIX_H

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "util/files/UniqueFd_posix.h"
#include "util/process/ProcessTable_posix.h"

struct ConsoleRequest {
  std::string program;
  std::string folder;
  std::vector<std::string> args;
  std::vector<std::string> environment;
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
    kNoConsole,  // the terminal could not be used; nothing of it is left
    kFailed,     // the terminal is there, but the program cannot be run
  };

  struct Setup {
    std::string terminal;  // a path
    std::string host;
    std::string title;
    std::string token;  // of the environment, see ProcessTree
  };

  Console() = default;
  ~Console();  // leaves what runs alone
  Console(const Console&) = delete;
  Console& operator=(const Console&) = delete;

  Outcome Start(const Setup& setup, const ConsoleRequest& request);

  const ProcessKey& child() const { return child_; }
  // Looks for news without waiting. Empty while the child runs.
  std::optional<int> Poll();
  // Becomes readable when there is news; -1 when only looking again helps.
  int link() const { return link_.get(); }

  // What must go besides the child for the window to close.
  std::vector<ProcessKey> Processes() const;

 private:
  bool StartTerminal(const Setup& setup, const ConsoleRequest& request, const std::string& address);
  bool Accept(int listener, std::chrono::steady_clock::time_point deadline);
  bool TerminalFailed();
  std::optional<ConsoleReport> NextReport(std::chrono::steady_clock::time_point deadline);
  std::optional<ConsoleReport> ReadReport();

  ProcessKey terminal_;  // collected once its id is 0
  ProcessKey host_;
  ProcessKey child_;
  UniqueFd link_;
  std::string pending_;  // the received part of a report
};

#endif
