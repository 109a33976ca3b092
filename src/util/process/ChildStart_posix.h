// Starting programs without a shell, and collecting those that nobody waits for. Any thread.
#ifndef KR_UTIL_PROCESS_CHILDSTART_POSIX_H
#define KR_UTIL_PROCESS_CHILDSTART_POSIX_H

#include <sys/types.h>

#include <string>
#include <vector>

struct ChildStart {
  std::string program;  // a path
  std::vector<std::string> args;
  std::vector<std::string> environment;  // NAME=value
  std::string folder;                    // the child's current folder; empty for ours
  // Its own session, away from our terminal. Else it stays in ours with our standard files.
  bool ownSession = true;
  // Standard output and error, and standard input, which is above these three; -1 for nowhere, or
  // for ours in our session.
  int output = -1;
  int input = -1;
  // The path of a terminal that becomes that of its own session, and its standard files; may be
  // empty.
  std::string terminal;
};

// Returns 0 or the system's error number. The child starts with no descriptors of
// ours and with all signals at their defaults.
int StartChild(const ChildStart& start, pid_t& pid);

// The path of a program; a name without folder is looked up in PATH. Empty when there is none.
std::string FindProgram(const std::string& name);

std::vector<std::string> CurrentEnvironment();
// Null when it is not set.
const char* FindVariable(const std::vector<std::string>& environment, const std::string& name);
void SetVariable(std::vector<std::string>& environment, const std::string& name,
                 const std::string& value);

// 0 to 255, or 128 + the signal's number, from a wait status.
int ExitCodeOf(int waitStatus);

// Children that were let go while they ran or had not been collected. Each call of SweepChildren
// collects those that have ended.
void LetChildGo(pid_t pid);
void SweepChildren();

#endif
