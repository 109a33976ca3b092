// Ends a started program together with everything that it started.
//
// Descendants are found by the token in the environment that they inherited, by their parents, and
// by the sessions of those already found. Who has shaken off all of these is found below a console
// host, which is his parent then.
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
  // The token is a text that only environments of this tree hold; empty: none does.
  explicit ProcessTree(std::string token);

  void AddRoot(const ProcessKey& key);
  // A root that leads a session. It may have ended, but must not have been collected.
  void AddLeader(const ProcessKey& key);
  // The terminal, or the program in it that waits for the solver: these end last, so that the
  // others do not lose their console while they finish politely.
  void AddConsole(const ProcessKey& key);
  // A root that somebody else started, with its session and its console where it has them. Others
  // may have its id when it has ended.
  void AddFound(const ProcessKey& key);

  // SIGTERM first, then force. True when no living process is left, false also when the processes
  // cannot be seen for want of descriptors; returns by `limit`.
  bool End(std::chrono::milliseconds limit);
  // One that still lives, no console where there is another; 0 when there is none to be seen.
  pid_t Living();

 private:
  using Clock = std::chrono::steady_clock;

  std::vector<ProcessEntry> Scan();
  bool IsOfToken(const ProcessEntry& process) const;
  bool IsFoundByToken(const ProcessEntry& process);
  bool IsCandidate(const ProcessEntry& process) const;
  bool IsRelated(const ProcessEntry& process) const;
  void Remember(const ProcessEntry& process);
  void MarkConsoleParents();
  void SpareOtherWindows();
  void LeaveOutSpared(std::vector<ProcessEntry>& processes) const;
  bool IsConsole(const ProcessEntry& process) const;
  enum class Which { kOthers, kConsoles, kAll };
  std::vector<ProcessKey> Select(Which which);
  bool EndPolitely(Which which, Clock::time_point until);
  void Kill(Which which);

  std::string token_;
  std::uint64_t earliest_ = UINT64_MAX;  // nothing older belongs to the tree
  std::unordered_map<pid_t, std::uint64_t> members_;
  std::unordered_map<pid_t, std::uint64_t> consoles_;
  std::unordered_set<pid_t> sessions_;
  std::unordered_map<pid_t, std::uint64_t> roots_;
  std::unordered_map<pid_t, std::uint64_t> spared_;        // a terminal that others use too
  std::unordered_map<pid_t, std::uint64_t> otherWindows_;  // what it started for them
  bool blind_ = false;   // the last scan could not see the processes
  bool unsure_ = false;  // it saw one that is becoming another program, perhaps one of ours
};

#endif
