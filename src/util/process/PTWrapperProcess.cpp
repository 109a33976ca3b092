#include <algorithm>
#include <cctype>

#include "util/process/ProcessByName.h"
#include "util/process/PTWrapper.h"

namespace {

bool EqualIgnoringCase(const std::string& a, const std::string& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](unsigned char x, unsigned char y) {
    return std::tolower(x) == std::tolower(y);
  });
}

}  // namespace

bool PTWrapperProcess::Terminate(const std::string& exeName) {
  std::vector<PTWrapperProcessInfo> list;
  if (exeName.empty() || !FindRunningProcessName(list)) return false;
  for (const PTWrapperProcessInfo& process : list) {
    if (process.processId == OwnProcessId()) continue;
    if (process.exeName.find(exeName) != std::string::npos) return KillProcess(process.processId);
  }
  return false;
}

bool PTWrapperProcess::GetLoginUser(std::string& user) {
  user.clear();
  std::vector<PTWrapperProcessInfo> list;
  FindRunningProcessName(list);
  return std::any_of(list.begin(), list.end(), [&](const PTWrapperProcessInfo& process) {
    return EqualIgnoringCase(process.exeName, "explorer.exe") &&
           GetProcessUser(process.processId, user);
  });
}
