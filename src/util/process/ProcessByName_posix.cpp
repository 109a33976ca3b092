#include <pwd.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "util/process/ProcessByName.h"
#include "util/process/ProcessTable_posix.h"
#include "util/process/PTWrapper.h"

namespace {

// The account's name; its number as text when it has none.
std::string UserName(uid_t id) {
  std::vector<char> buffer(1024);
  passwd entry{};
  passwd* found = nullptr;
  while (getpwuid_r(id, &entry, buffer.data(), buffer.size(), &found) == ERANGE &&
         buffer.size() < (1u << 20))
    buffer.resize(buffer.size() * 2);
  return found && *found->pw_name ? found->pw_name : std::to_string(id);
}

}  // namespace

bool PTWrapperProcess::FindRunningProcessName(std::vector<PTWrapperProcessInfo>& list) {
  list.clear();
  const std::optional<std::vector<ProcessEntry>> processes = ListProcesses();
  if (!processes) return false;
  for (const ProcessEntry& process : *processes)
    list.push_back({process.key.pid, ExecutableName(process)});
  return true;
}

bool PTWrapperProcess::GetCurrProcessUser(std::string& user) {
  user = UserName(geteuid());
  return true;
}

bool PTWrapperProcess::GetProcessUser(int pid, std::string& user) {
  user.clear();
  const std::optional<uid_t> id = ProcessUserId(pid);
  if (!id) return false;
  user = UserName(*id);
  return true;
}

bool PTWrapperProcess::GetProcessPath(int pid, std::string& path) {
  path.clear();
  std::error_code failed;
  path = std::filesystem::read_symlink("/proc/" + std::to_string(pid) + "/exe", failed).string();
  return !failed;
}

bool KillProcess(std::int32_t processId) {
  const std::optional<ProcessEntry> process = ReadProcess(processId);
  return process && SignalProcess(process->key, SIGKILL);
}

std::int32_t OwnProcessId() {
  return getpid();
}
