#include <algorithm>

#include "util/process/ProcessByName.h"
#include "util/process/PTWrapper.h"
#include "util/text/PlainText.h"

bool PTWrapperProcess::Create(const PTWrapperProcessStart& start) {
  return Launch(start, {});
}

bool PTWrapperProcess::Create(const std::string& exePath, const std::string& commandLine,
                              const std::string& label, bool, unsigned creationFlags,
                              const std::string& workDir, bool showWindow) {
  PTWrapperProcessStart start;
  start.program = exePath;
  start.commandLine = commandLine;
  start.title = label;
  start.creationFlags = creationFlags;
  start.showWindow = showWindow;
  return Launch(start, workDir);
}

bool PTWrapperProcess::Open(std::int32_t processId) {
  return Open(IdentityOfProcess(processId));
}

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
