#include "util/process/ProcessTree_posix.h"

#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <thread>

namespace {

constexpr std::chrono::milliseconds kPoliteTime{700};
constexpr std::chrono::milliseconds kConsoleTime{250};
constexpr std::chrono::milliseconds kScanPause{10};

bool HasProcess(const std::unordered_map<pid_t, std::uint64_t>& set, const ProcessKey& key) {
  const auto found = set.find(key.pid);
  return found != set.end() && found->second == key.start;
}

}  // namespace

ProcessTree::ProcessTree(std::string token) : token_(std::move(token)) {}

void ProcessTree::AddRoot(const ProcessKey& key) {
  members_[key.pid] = key.start;
  earliest_ = std::min(earliest_, key.start);
}

void ProcessTree::AddLeader(const ProcessKey& key) {
  AddRoot(key);
  sessions_.insert(key.pid);
}

void ProcessTree::AddConsole(const ProcessKey& key) {
  AddRoot(key);
  consoles_[key.pid] = key.start;
}

bool ProcessTree::End(std::chrono::milliseconds limit) {
  const Clock::time_point deadline = Clock::now() + limit;
  MarkConsoleParents();
  EndPolitely(false, std::min(deadline, Clock::now() + kPoliteTime));
  if (!Select(false).empty()) KillAll();
  EndPolitely(true, std::min(deadline, Clock::now() + kConsoleTime));
  for (;;) {
    if (Scan().empty() && !blind_) return true;
    if (Clock::now() >= deadline) return false;
    KillAll();
    std::this_thread::sleep_for(kScanPause);
  }
}

// Between the terminal that we started and the program waiting in it there may be wrappers.
void ProcessTree::MarkConsoleParents() {
  std::unordered_map<pid_t, ProcessEntry> byId;
  for (ProcessEntry& process : Scan()) byId.emplace(process.key.pid, std::move(process));
  const auto hosts = consoles_;
  for (const auto& [pid, start] : hosts) {
    auto at = byId.find(pid);
    while (at != byId.end() && at->second.key.start >= earliest_) {
      consoles_[at->second.key.pid] = at->second.key.start;
      const pid_t parent = at->second.parent;
      byId.erase(at);
      at = byId.find(parent);
    }
  }
}

bool ProcessTree::IsConsole(const ProcessEntry& process) const {
  return HasProcess(consoles_, process.key);
}

bool ProcessTree::IsCandidate(const ProcessEntry& process) const {
  return process.key.pid != getpid() && process.key.start >= earliest_;
}

bool ProcessTree::IsRelated(const ProcessEntry& process) const {
  return HasProcess(members_, process.key) || members_.contains(process.parent) ||
         sessions_.contains(process.session);
}

void ProcessTree::Remember(const ProcessEntry& process) {
  members_[process.key.pid] = process.key.start;
  if (process.session == process.key.pid) sessions_.insert(process.session);
}

// The living members. Parents are looked at before children as long as something new is found.
std::vector<ProcessEntry> ProcessTree::Scan() {
  std::optional<std::vector<ProcessEntry>> all = ListProcesses();
  blind_ = !all;
  if (blind_) return {};
  std::vector<ProcessEntry>& others = *all;
  // An id that now names another process must not lead us to that one's children.
  for (const ProcessEntry& process : others) {
    const auto known = members_.find(process.key.pid);
    if (known != members_.end() && known->second != process.key.start) members_.erase(known);
  }
  std::erase_if(others, [this](const ProcessEntry& process) { return !IsCandidate(process); });
  std::vector<ProcessEntry> found;
  bool first = true;  // reading an environment costs the most and tells the same every time
  for (bool grew = true; grew; first = false) {
    const auto firstMember =
        std::stable_partition(others.begin(), others.end(), [&](const ProcessEntry& process) {
          return !IsRelated(process) && !(first && StartEnvironmentHolds(process.key.pid, token_));
        });
    grew = firstMember != others.end();
    std::for_each(firstMember, others.end(), [&](ProcessEntry& process) {
      Remember(process);
      found.push_back(std::move(process));
    });
    others.erase(firstMember, others.end());
  }
  return found;
}

std::vector<ProcessKey> ProcessTree::Select(bool consoles) {
  std::vector<ProcessKey> keys;
  for (const ProcessEntry& process : Scan()) {
    if (IsConsole(process) == consoles) keys.push_back(process.key);
  }
  return keys;
}

// Asks each process once. True when all have gone before the time is over.
bool ProcessTree::EndPolitely(bool consoles, Clock::time_point until) {
  std::vector<ProcessKey> asked;
  for (;;) {
    const std::vector<ProcessKey> living = Select(consoles);
    if (living.empty() && !blind_) return true;
    for (const ProcessKey& key : living) {
      if (std::find(asked.begin(), asked.end(), key) != asked.end()) continue;
      asked.push_back(key);
      SignalProcess(key, SIGTERM);
      SignalProcess(key, SIGCONT);  // a stopped process could not answer
    }
    if (Clock::now() >= until) return false;
    std::this_thread::sleep_for(kScanPause);
  }
}

// Everything is stopped before anything is killed, so that nobody starts a replacement meanwhile.
// The consoles are spared while others live: their turn comes when they are alone.
void ProcessTree::KillAll() {
  std::vector<ProcessKey> stopped = Select(false);
  const bool consoles = stopped.empty();
  if (consoles) stopped = Select(true);
  constexpr int kMostRounds = 20;
  std::size_t done = 0;
  for (int round = 0; round < kMostRounds && done < stopped.size(); ++round) {
    for (; done < stopped.size(); ++done) SignalProcess(stopped[done], SIGSTOP);
    for (const ProcessKey& key : Select(consoles)) {
      if (std::find(stopped.begin(), stopped.end(), key) == stopped.end()) stopped.push_back(key);
    }
  }
  for (const ProcessKey& key : stopped) SignalProcess(key, SIGKILL);
}
