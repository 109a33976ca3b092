#include "util/process/ProcessTree_posix.h"

#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <thread>

namespace {

constexpr char kConsoleHost[] = "krconsole";
constexpr std::chrono::milliseconds kPoliteTime{700};
constexpr std::chrono::milliseconds kConsoleTime{250};
constexpr std::chrono::milliseconds kScanPause{10};

bool HasProcess(const std::unordered_map<pid_t, std::uint64_t>& set, const ProcessKey& key) {
  const auto found = set.find(key.pid);
  return found != set.end() && found->second == key.start;
}

}  // namespace

ProcessTree::ProcessTree(std::string token) : token_(std::move(token)) {}

// Never the first process, nor "none": everything that runs is below them.
void ProcessTree::AddRoot(const ProcessKey& key) {
  if (key.pid <= 1) return;
  members_[key.pid] = roots_[key.pid] = key.start;
  earliest_ = std::min(earliest_, key.start);
}

void ProcessTree::AddLeader(const ProcessKey& key) {
  AddRoot(key);
  if (key.pid > 1) sessions_.insert(key.pid);
}

void ProcessTree::AddConsole(const ProcessKey& key) {
  if (key.pid <= 1) return;
  AddRoot(key);
  consoles_[key.pid] = key.start;
}

void ProcessTree::AddFound(const ProcessKey& key) {
  if (key.pid <= 1) return;
  AddRoot(key);
  const std::optional<ProcessEntry> found = ReadProcess(key.pid);
  if (!found || found->key != key) return;
  if (found->session == key.pid) sessions_.insert(key.pid);
  std::optional<ProcessEntry> above = ReadProcess(found->parent);
  if (!above || ExecutableName(*above) != kConsoleHost) return;
  // Who lost his own host may have come to the one that we run below ourselves. Without the token a
  // host is known by its program when that is in its session, as it is where there is no terminal.
  if (above->session != found->session && !IsOfToken(*above)) return;
  // The host, and the terminal around it.
  do {
    AddConsole(above->key);
    above = ReadProcess(above->parent);
  } while (above && IsOfToken(*above));
}

bool ProcessTree::End(std::chrono::milliseconds limit) {
  const Clock::time_point deadline = Clock::now() + limit;
  MarkConsoleParents();
  SpareOtherWindows();
  if (!EndPolitely(Which::kOthers, std::min(deadline, Clock::now() + kPoliteTime))) {
    Kill(Which::kOthers);
  }
  EndPolitely(Which::kConsoles, std::min(deadline, Clock::now() + kConsoleTime));
  // Nobody is spared now: a terminal may start its program anew as often as that ends.
  for (;;) {
    const bool isEmpty = Scan().empty() && !blind_;
    if (isEmpty && !unsure_) return true;
    if (Clock::now() >= deadline) return isEmpty;
    Kill(Which::kAll);
    std::this_thread::sleep_for(kScanPause);
  }
}

pid_t ProcessTree::Living() {
  for (const Which which : {Which::kOthers, Which::kConsoles}) {
    const std::vector<ProcessKey> living = Select(which);
    if (!living.empty()) return living.front().pid;
  }
  return 0;
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

// A terminal may show the windows of several runs, and of others, from one process. Each is a
// session that the terminal started. Then it is not ended, nor what runs in the others; our window
// goes with its host.
void ProcessTree::SpareOtherWindows() {
  std::unordered_set<pid_t> ours;
  for (const auto& [pid, start] : roots_) {
    const std::optional<ProcessEntry> root = ReadProcess(pid);
    if (root && root->key.start == start && !IsConsole(*root)) ours.insert(root->session);
  }
  std::unordered_map<pid_t, ProcessEntry> byId;
  for (ProcessEntry& process : Scan()) byId.emplace(process.key.pid, std::move(process));
  for (const auto& [pid, process] : byId) {
    // A console that is none of the roots is one that our own window has between.
    if (process.session != pid || ours.contains(pid) || IsConsole(process) ||
        HasProcess(roots_, process.key)) {
      continue;
    }
    auto above = byId.find(process.parent);
    if (above == byId.end() || !IsConsole(above->second) ||
        ExecutableName(above->second) == kConsoleHost) {
      continue;
    }
    otherWindows_[pid] = process.key.start;
    for (; above != byId.end() && IsConsole(above->second);
         above = byId.find(above->second.parent)) {
      spared_[above->first] = above->second.key.start;
    }
  }
  for (const auto& set : {spared_, otherWindows_}) {
    for (const auto& [pid, start] : set) {
      members_.erase(pid);
      consoles_.erase(pid);
      sessions_.erase(pid);
    }
  }
}

// Without what runs in other windows of our terminal.
void ProcessTree::LeaveOutSpared(std::vector<ProcessEntry>& processes) const {
  if (spared_.empty()) return;
  std::unordered_set<pid_t> apart;
  std::size_t before = 0;
  do {
    before = processes.size();
    std::erase_if(processes, [&](const ProcessEntry& process) {
      const bool isOther = HasProcess(otherWindows_, process.key) || apart.contains(process.parent);
      if (isOther) apart.insert(process.key.pid);
      return isOther || HasProcess(spared_, process.key);
    });
  } while (processes.size() != before);
}

bool ProcessTree::IsConsole(const ProcessEntry& process) const {
  return HasProcess(consoles_, process.key);
}

bool ProcessTree::IsOfToken(const ProcessEntry& process) const {
  return LookForToken(process.key.pid, token_) == TokenSeen::kYes;
}

bool ProcessTree::IsFoundByToken(const ProcessEntry& process) {
  const TokenSeen seen = LookForToken(process.key.pid, token_);
  unsure_ = unsure_ || seen == TokenSeen::kNotYet;
  return seen == TokenSeen::kYes;
}

bool ProcessTree::IsCandidate(const ProcessEntry& process) const {
  return process.key.pid > 1 && process.key.pid != getpid() && process.key.start >= earliest_;
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
  unsure_ = false;
  if (blind_) return {};
  std::vector<ProcessEntry>& others = *all;
  // An id that now names another process must not lead us to that one's children.
  for (const ProcessEntry& process : others) {
    const auto known = members_.find(process.key.pid);
    if (known == members_.end() || known->second == process.key.start) continue;
    members_.erase(known);
    sessions_.erase(process.key.pid);  // an id is not given anew while its session lasts
  }
  std::erase_if(others, [this](const ProcessEntry& process) { return !IsCandidate(process); });
  LeaveOutSpared(others);
  std::vector<ProcessEntry> found;
  bool first = true;  // reading an environment costs the most and tells the same every time
  for (bool grew = true; grew; first = false) {
    const auto firstMember =
        std::stable_partition(others.begin(), others.end(), [&](const ProcessEntry& process) {
          return !IsRelated(process) && !(first && IsFoundByToken(process));
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

std::vector<ProcessKey> ProcessTree::Select(Which which) {
  std::vector<ProcessKey> keys;
  for (const ProcessEntry& process : Scan()) {
    if (which == Which::kAll || IsConsole(process) == (which == Which::kConsoles)) {
      keys.push_back(process.key);
    }
  }
  return keys;
}

// Asks each process once. True when all have gone before the time is over.
bool ProcessTree::EndPolitely(Which which, Clock::time_point until) {
  std::vector<ProcessKey> asked;
  for (;;) {
    const std::vector<ProcessKey> living = Select(which);
    if (living.empty() && !blind_ && !unsure_) return true;
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
void ProcessTree::Kill(Which which) {
  std::vector<ProcessKey> stopped = Select(which);
  constexpr int kMostRounds = 20;
  std::size_t done = 0;
  for (int round = 0; round < kMostRounds && done < stopped.size(); ++round) {
    for (; done < stopped.size(); ++done) SignalProcess(stopped[done], SIGSTOP);
    for (const ProcessKey& key : Select(which)) {
      if (std::find(stopped.begin(), stopped.end(), key) == stopped.end()) stopped.push_back(key);
    }
  }
  for (const ProcessKey& key : stopped) SignalProcess(key, SIGKILL);
}
