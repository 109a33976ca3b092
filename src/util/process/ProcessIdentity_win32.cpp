#include <windows.h>

#include <array>

#include "util/process/ProcessIdentity.h"
#include "util/process/SystemId.h"

ProcessIdentity IdentityOfProcess(std::int32_t id) {
  ProcessIdentity identity{id, {}};
  const HANDLE process =
      OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION | SYNCHRONIZE, FALSE, static_cast<DWORD>(id));
  if (process == nullptr) return identity;
  FILETIME start{}, end{}, kernel{}, user{};
  // A process that has ended stays known while somebody holds it.
  if (WaitForSingleObject(process, 0) == WAIT_TIMEOUT &&
      GetProcessTimes(process, &start, &end, &kernel, &user)) {
    identity.mark =
        std::to_string((std::uint64_t{start.dwHighDateTime} << 32) | start.dwLowDateTime);
  }
  CloseHandle(process);
  return identity;
}

std::string SystemId() {
  std::array<char, 64> id{};
  DWORD size = id.size() - 1;
  const LSTATUS status =
      RegGetValueA(HKEY_LOCAL_MACHINE, "SOFTWARE\\Microsoft\\Cryptography", "MachineGuid",
                   RRF_RT_REG_SZ | RRF_SUBKEY_WOW6464KEY, nullptr, id.data(), &size);
  return status == ERROR_SUCCESS ? id.data() : std::string();
}

std::string MachineName() {
  char name[MAX_COMPUTERNAME_LENGTH + 1] = {};
  DWORD size = sizeof name;
  return GetComputerNameA(name, &size) ? std::string(name, size) : std::string();
}
