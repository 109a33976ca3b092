#include "util/process/ProcessUse.h"

#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <unordered_map>
#include <unordered_set>

#include "util/process/ProcessTable_posix.h"

namespace {

constexpr char kConsoleHost[] = "krconsole";

using ById = std::unordered_map<pid_t, const ProcessEntry*>;

// Bytes that are its own, and bytes that it may share.
void ReadMemory(pid_t pid, std::uint64_t& own, std::uint64_t& shared) {
  static const auto page = static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
  std::uint64_t size = 0, resident = 0, mapped = 0;
  std::ifstream("/proc/" + std::to_string(pid) + "/statm") >> size >> resident >> mapped;
  own = (resident - std::min(mapped, resident)) * page;
  shared = mapped * page;
}

// The sessions that belong to the tree alone, and who takes up its orphans: 0 for nobody.
struct Around {
  std::unordered_set<pid_t> sessions;
  pid_t host = 0;
};

Around AroundOf(const ProcessEntry& root, const ById& byId) {
  Around around;
  if (root.session == root.key.pid) around.sessions.insert(root.session);
  const auto above = byId.find(root.parent);
  if (above == byId.end() || ExecutableName(*above->second) != kConsoleHost) return around;
  around.host = above->first;
  if (above->second->session == around.host) around.sessions.insert(around.host);
  return around;
}

ProcessUse UseOf(const ProcessEntry& root, const std::vector<ProcessEntry>& all, const ById& byId) {
  static const auto ticks = static_cast<double>(sysconf(_SC_CLK_TCK));
  const Around around = AroundOf(root, byId);
  std::unordered_set<pid_t> members = {root.key.pid};
  const auto belongs = [&](const ProcessEntry& process) {
    if (process.key.pid <= 1 || process.key.pid == around.host) return false;
    // Nobody older: an id may have been another's.
    if (process.key.start < root.key.start) return false;
    return members.contains(process.parent) || around.sessions.contains(process.session) ||
           (around.host > 1 && process.parent == around.host);
  };
  for (std::size_t before = 0; before != members.size();) {
    before = members.size();
    for (const ProcessEntry& process : all) {
      if (belongs(process)) members.insert(process.key.pid);
    }
  }
  ProcessUse use;
  std::uint64_t mostShared = 0;
  for (const pid_t pid : members) {
    use.processorSeconds += static_cast<double>(byId.at(pid)->cpu) / ticks;
    std::uint64_t own = 0, shared = 0;
    ReadMemory(pid, own, shared);
    use.memory += own;
    mostShared = std::max(mostShared, shared);
    ++use.processes;
  }
  use.memory += mostShared;
  return use;
}

}  // namespace

std::vector<std::optional<ProcessUse>> UseOfTrees(const std::vector<ProcessIdentity>& roots) {
  std::vector<std::optional<ProcessUse>> uses(roots.size());
  const std::optional<std::vector<ProcessEntry>> all = ListProcesses();
  if (!all) return uses;
  ById byId;
  for (const ProcessEntry& process : *all) byId.emplace(process.key.pid, &process);
  for (std::size_t i = 0; i < roots.size(); ++i) {
    const auto root = byId.find(roots[i].id);
    if (roots[i].id <= 1 || root == byId.end() || !Runs(roots[i])) continue;
    uses[i] = UseOf(*root->second, *all, byId);
  }
  return uses;
}
