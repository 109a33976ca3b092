// What running programs take of the machine.
#ifndef KR_UTIL_PROCESS_PROCESSUSE_H
#define KR_UTIL_PROCESS_PROCESSUSE_H

#include <cstdint>
#include <optional>
#include <vector>

#include "util/process/ProcessIdentity.h"

// Of a process and all that descends from it, on this machine.
struct ProcessUse {
  double processorSeconds = 0;  // since they were started
  std::uint64_t memory = 0;  // bytes in memory; what several share counts once, where that is told
  int processes = 0;
};

// For each of `roots`, in their order; none for one that does not run or names no process of a user
// (ids up to 1). Who has lost his parent is found by his session or console host where there is
// one. Looks at all processes once: some milliseconds. It ends nobody. Any thread.
std::vector<std::optional<ProcessUse>> UseOfTrees(const std::vector<ProcessIdentity>& roots);

#endif
