#include <algorithm>

#include "util/process/ProcessByName.h"
#include "util/process/PTWrapper.h"
#include "util/text/PlainText.h"

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
    return SameButForCase(process.exeName, "explorer.exe") &&
           GetProcessUser(process.processId, user);
  });
}
