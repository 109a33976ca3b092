#include <windows.h>
// After windows.h, whose types they need.
#include <psapi.h>
#include <tlhelp32.h>

#include <unordered_map>
#include <unordered_set>

#include "util/process/ProcessUse.h"

namespace {

std::uint64_t Whole(const FILETIME& time) {
  return (std::uint64_t{time.dwHighDateTime} << 32) | time.dwLowDateTime;
}

struct Times {
  std::uint64_t start = 0;
  double processorSeconds = 0;
};

class Opened {
 public:
  explicit Opened(DWORD pid)
      : handle_(OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, pid)) {}
  ~Opened() {
    if (handle_ != nullptr) CloseHandle(handle_);
  }
  Opened(const Opened&) = delete;
  Opened& operator=(const Opened&) = delete;

  std::optional<Times> ReadTimes() const {
    constexpr double kUnits = 1e7;
    FILETIME start{}, end{}, kernel{}, user{};
    if (handle_ == nullptr || !GetProcessTimes(handle_, &start, &end, &kernel, &user)) return {};
    return Times{Whole(start), static_cast<double>(Whole(kernel) + Whole(user)) / kUnits};
  }
  std::uint64_t Memory() const {
    PROCESS_MEMORY_COUNTERS counters{};
    const bool read = K32GetProcessMemoryInfo(handle_, &counters, sizeof counters);
    return read ? counters.WorkingSetSize : 0;
  }

 private:
  const HANDLE handle_;
};

using Children = std::unordered_multimap<DWORD, DWORD>;

Children ListChildren() {
  Children children;
  const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
  if (snapshot == INVALID_HANDLE_VALUE) return children;
  PROCESSENTRY32 entry{};
  entry.dwSize = sizeof entry;
  for (BOOL more = Process32First(snapshot, &entry); more; more = Process32Next(snapshot, &entry)) {
    children.emplace(entry.th32ParentProcessID, entry.th32ProcessID);
  }
  CloseHandle(snapshot);
  return children;
}

// A child names its parent by an id that may be another's by now: who is older is no child.
void Add(DWORD pid, std::uint64_t notBefore, const Children& children,
         std::unordered_set<DWORD>& seen, ProcessUse& use) {
  if (!seen.insert(pid).second) return;
  const Opened process(pid);
  const std::optional<Times> times = process.ReadTimes();
  if (!times || times->start < notBefore) return;
  use.processorSeconds += times->processorSeconds;
  use.memory += process.Memory();
  ++use.processes;
  const auto [begin, end] = children.equal_range(pid);
  for (auto child = begin; child != end; ++child) {
    Add(child->second, times->start, children, seen, use);
  }
}

}  // namespace

std::vector<std::optional<ProcessUse>> UseOfTrees(const std::vector<ProcessIdentity>& roots) {
  std::vector<std::optional<ProcessUse>> uses(roots.size());
  const Children children = ListChildren();
  for (std::size_t i = 0; i < roots.size(); ++i) {
    if (roots[i].id <= 1 || !Runs(roots[i])) continue;
    std::unordered_set<DWORD> seen;
    Add(static_cast<DWORD>(roots[i].id), 0, children, seen, uses[i].emplace());
  }
  return uses;
}
