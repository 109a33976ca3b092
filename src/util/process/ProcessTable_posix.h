// What /proc tells about the running processes. Stateless; any thread.
#ifndef KR_UTIL_PROCESS_PROCESSTABLE_POSIX_H
#define KR_UTIL_PROCESS_PROCESSTABLE_POSIX_H

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "util/files/UniqueFd_posix.h"

// Names one process for ever: a later process with the same id has another start time.
struct ProcessKey {
  pid_t pid = 0;
  std::uint64_t start = 0;  // clock ticks since the machine started

  friend bool operator==(const ProcessKey&, const ProcessKey&) = default;
};

struct ProcessEntry {
  ProcessKey key;
  pid_t parent = 0;
  pid_t session = 0;
  char state = '?';
  int threads = 0;
  std::uint64_t cpu = 0;  // clock ticks, with those of its children that have ended
  std::string threadName;

  // False for one that has ended and only waits to be collected.
  bool IsAlive() const;
};

// Nothing when there is none; errno tells.
std::optional<ProcessEntry> ReadProcess(pid_t pid);

// Of a process that cannot be reused meanwhile, like an own child that was not collected.
ProcessKey KeyOf(pid_t pid);

// The living processes in the system's order. One that ends meanwhile is left out. Nothing when the
// list would not be whole, for want of descriptors.
std::optional<std::vector<ProcessEntry>> ListProcesses();

// For want of descriptors, whether any process has the id.
bool IsProcessAlive(const ProcessKey& key);

// The executable file's name without folder; of a process that may not be looked into, the first
// word of its command line or, when it has none, its thread name.
std::string ExecutableName(const ProcessEntry& process);

// The variable that holds the tokens of a started program and of those around it, the last its own,
// between colons. What it starts inherits them.
constexpr char kTokenVariable[] = "KR_RUN";

// Whether the process was started with the token, whole; with none nobody was. While a process
// becomes another program nobody can see what that is given.
enum class TokenSeen { kNo, kYes, kNotYet };
TokenSeen LookForToken(pid_t pid, const std::string& token);

// A path that leads to the folder that the process is in.
std::string FolderOfProcess(pid_t pid);

// Effective user of the process.
std::optional<uid_t> ProcessUserId(pid_t pid);

// A descriptor that stands for the process with this id and becomes readable at its end.
UniqueFd PinProcess(pid_t pid);

// Sends to exactly this process, never to one that took over its id. True when it was delivered.
bool SignalProcess(const ProcessKey& key, int signal);

#endif
