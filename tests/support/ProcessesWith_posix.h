// Processes by what stands on their command lines.
#ifndef KR_TESTS_PROCESSESWITH_H
#define KR_TESTS_PROCESSESWITH_H

#include <string>
#include <vector>

#include "support/TempFolder.h"
#include "util/process/ProcessTable_posix.h"

// The living ones.
inline std::vector<ProcessKey> ProcessesWith(const std::string& word) {
  std::vector<ProcessKey> found;
  for (const ProcessEntry& entry : ListProcesses().value_or(std::vector<ProcessEntry>())) {
    const std::string path = "/proc/" + std::to_string(entry.key.pid) + "/cmdline";
    if (TempFolder::Read(path).find(word) != std::string::npos) found.push_back(entry.key);
  }
  return found;
}

#endif
