#include <windows.h>
// After windows.h, whose types they need.
#include <tlhelp32.h>

#include "util/process/ProcessByName.h"
#include "util/process/PTWrapper.h"

namespace {

constexpr DWORD kNameBytes = 260;

// Closes itself; null and the invalid value are both "none".
class Handle {
 public:
  explicit Handle(HANDLE handle) : handle_(handle == INVALID_HANDLE_VALUE ? nullptr : handle) {}
  ~Handle() {
    if (handle_) CloseHandle(handle_);
  }
  Handle(Handle&& other) noexcept : handle_(other.handle_) { other.handle_ = nullptr; }
  Handle& operator=(const Handle&) = delete;

  HANDLE get() const { return handle_; }
  explicit operator bool() const { return handle_ != nullptr; }

 private:
  HANDLE handle_;
};

Handle OpenToken(HANDLE process, DWORD access) {
  HANDLE token = nullptr;
  return Handle(OpenProcessToken(process, access, &token) ? token : nullptr);
}

// Lets us look into the processes of others, if this account may at all.
bool EnableDebugPrivilege() {
  const Handle token = OpenToken(GetCurrentProcess(), TOKEN_ADJUST_PRIVILEGES | TOKEN_QUERY);
  TOKEN_PRIVILEGES privileges{};
  privileges.PrivilegeCount = 1;
  privileges.Privileges[0].Attributes = SE_PRIVILEGE_ENABLED;
  if (!token || !LookupPrivilegeValueA(nullptr, "SeDebugPrivilege", &privileges.Privileges[0].Luid))
    return false;
  // Succeeds even when it assigns nothing; the last error tells.
  return AdjustTokenPrivileges(token.get(), FALSE, &privileges, 0, nullptr, nullptr) &&
         GetLastError() == ERROR_SUCCESS;
}

Handle OpenForQuery(DWORD pid) {
  Handle process(OpenProcess(PROCESS_QUERY_INFORMATION, FALSE, pid));
  if (process || !EnableDebugPrivilege()) return process;
  return Handle(OpenProcess(PROCESS_QUERY_INFORMATION, FALSE, pid));
}

}  // namespace

bool PTWrapperProcess::FindRunningProcessName(std::vector<PTWrapperProcessInfo>& list) {
  list.clear();
  const Handle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
  PROCESSENTRY32 entry{};
  entry.dwSize = sizeof entry;
  if (!snapshot || !Process32First(snapshot.get(), &entry)) return false;
  do {
    list.push_back({static_cast<std::int32_t>(entry.th32ProcessID), entry.szExeFile});
  } while (Process32Next(snapshot.get(), &entry));
  return true;
}

bool PTWrapperProcess::GetCurrProcessUser(std::string& user) {
  DWORD size = kNameBytes;
  std::vector<char> buffer(size);
  bool known = GetUserNameA(buffer.data(), &size) != 0;
  if (!known && GetLastError() == ERROR_INSUFFICIENT_BUFFER) {
    buffer.resize(size);
    known = GetUserNameA(buffer.data(), &size) != 0;
  }
  if (known) user = buffer.data();
  return known;
}

bool PTWrapperProcess::GetProcessUser(int pid, std::string& user) {
  user.clear();
  const Handle process = OpenForQuery(static_cast<DWORD>(pid));
  if (!process) return false;
  const Handle token = OpenToken(process.get(), TOKEN_QUERY);
  if (!token) return false;

  DWORD size = 0;
  GetTokenInformation(token.get(), TokenUser, nullptr, 0, &size);
  std::vector<std::uint64_t> data(size / sizeof(std::uint64_t) + 1);  // aligned for the structure
  if (size == 0 || !GetTokenInformation(token.get(), TokenUser, data.data(), size, &size))
    return false;
  const auto* identity = reinterpret_cast<const TOKEN_USER*>(data.data());

  char name[kNameBytes] = {}, domain[kNameBytes] = {};
  DWORD nameSize = kNameBytes, domainSize = kNameBytes;
  SID_NAME_USE use{};
  if (!LookupAccountSidA(nullptr, identity->User.Sid, name, &nameSize, domain, &domainSize, &use))
    return false;
  user = name;
  return true;
}

bool PTWrapperProcess::GetProcessPath(int pid, std::string& path) {
  path.clear();
  const Handle process(
      OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, static_cast<DWORD>(pid)));
  std::vector<char> buffer(32768);
  DWORD size = static_cast<DWORD>(buffer.size());
  if (!process || !QueryFullProcessImageNameA(process.get(), 0, buffer.data(), &size)) return false;
  path.assign(buffer.data(), size);
  return true;
}

bool KillProcess(std::int32_t processId) {
  const Handle process(OpenProcess(PROCESS_ALL_ACCESS, FALSE, static_cast<DWORD>(processId)));
  return process && TerminateProcess(process.get(), 0);
}

std::int32_t OwnProcessId() {
  return static_cast<std::int32_t>(GetCurrentProcessId());
}
