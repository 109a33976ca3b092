// Ends a started program together with everything that it started.
//
// Descendants are found by what cannot be shaken off all at once: the token in the environment
// that they inherited, their parents, and the sessions of those already found. So programs that
// left their session, or lost their parent, or cleared their environment, are found too.
#ifndef KR_UTIL_PROCESS_PROCESSTREE_POSIX_H
#define KR_UTIL_PROCESS_PROCESSTREE_POSIX_H

#include <chrono>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "util/process/ProcessTable_posix.h"

class ProcessTree {
 public:
  // The token is a text that only environments of this tree hold.
  explicit ProcessTree(std::string token);

  void AddRoot(const ProcessKey& key);
  // A root that leads a session. It may have ended, but must not have been collected.
  void AddLeader(const ProcessKey& key);
  // The terminal, or the program in it that waits for the solver: these end last, so that the
  // others do not lose their console while they finish politely.
  void AddConsole(const ProcessKey& key);

  // SIGTERM first, then force. True when no living process is left, false also when the processes
  // cannot be seen for want of descriptors; returns by `limit`.
  bool End(std::chrono::milliseconds limit);

 private:
  using Clock = std::chrono::steady_clock;

  std::vector<ProcessEntry> Scan();
  bool IsCandidate(const ProcessEntry& process) const;
  bool IsRelated(const ProcessEntry& process) const;
  void Remember(const ProcessEntry& process);
  void MarkConsoleParents();
  bool IsConsole(const ProcessEntry& process) const;
  std::vector<ProcessKey> Select(bool consoles);
  bool EndPolitely(bool consoles, Clock::time_point until);
  void KillAll();

  std::string token_;
  std::uint64_t earliest_ = UINT64_MAX;  // nothing older belongs to the tree
  std::unordered_map<pid_t, std::uint64_t> members_;
  std::unordered_map<pid_t, std::uint64_t> consoles_;
  std::unordered_set<pid_t> sessions_;
  bool blind_ = false;  // the last scan could not see the processes
};

#endif
