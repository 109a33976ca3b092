// A pseudo terminal around a program, between it and the terminal that we run in.
#ifndef KR_UTIL_PROCESS_CONSOLERELAY_POSIX_H
#define KR_UTIL_PROCESS_CONSOLERELAY_POSIX_H

#include <sys/types.h>
#include <termios.h>

#include <chrono>
#include <string>
#include <string_view>

#include "util/files/UniqueFd_posix.h"
#include "util/process/ChildStart_posix.h"
#include "util/process/ConsoleFile_posix.h"
#include "util/text/ConsoleText.h"

// Passes on keys, output and the window's size, and keeps what is printed. In a terminal the
// program has the pseudo terminal as its own, so that the keys that interrupt it work as ever;
// without one only its output goes there. For a process of one thread that does nothing else.
class ConsoleRelay {
 public:
  // `shown`: what is printed goes to our standard output, too.
  explicit ConsoleRelay(bool shown) : shown_(shown) {}
  ~ConsoleRelay() { Restore(); }
  ConsoleRelay(const ConsoleRelay&) = delete;
  ConsoleRelay& operator=(const ConsoleRelay&) = delete;

  // False when there is no pseudo terminal to have. Else the relay has the signals that tell of
  // children, of the window and of our end.
  bool Open();
  // How a program is to be started that runs in it.
  void Describe(ChildStart& start) const;
  // Until the program has ended: its exit code. What it has left running is not waited for, even
  // where that goes on printing. `file` takes what is printed; it may be impossible.
  int Run(pid_t child, const std::string& file);

 private:
  using Clock = std::chrono::steady_clock;

  void EnterTerminal();
  void Restore();
  void TakeSize() const;
  void Look();
  void TakeSignals();
  void CollectChildren();
  void HangUp();
  [[noreturn]] void EndBySignal(int number);
  bool TakeOutput();
  void TakeKeys();
  void Show();
  void GiveKeys();
  void Drain();

  const bool shown_;
  UniqueFd master_, slave_, signals_;
  UniqueFd terminal_;  // around us; none where that is no terminal
  UniqueFd screen_;    // where output goes
  bool listens_ = false;
  bool hungUp_ = false;
  std::string toScreen_, toProgram_;
  ConsoleText text_;
  ConsoleFile file_;
  pid_t child_ = 0;
  int exitCode_ = -1;  // once it has ended
};

// Collects children, those too that have become ours meanwhile, until this one has ended.
int WaitForChild(pid_t pid);

#endif
