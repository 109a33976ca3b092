#include <windows.h>

#include <shellapi.h>

#include "core/SystemServices.h"

// The system looks in more places than a search could know of; its own answer is what counts.
bool ProgramExists(const std::string& commandLine) {
  return !commandLine.empty();
}

bool OpenWithDesktop(const std::string& path) {
  const auto open = [&path](const char* verb) {
    return ShellExecuteA(nullptr, verb, path.c_str(), nullptr, nullptr, SW_SHOWNORMAL);
  };
  constexpr INT_PTR kLeastSuccess = 33;  // smaller values are error codes
  const auto result = reinterpret_cast<INT_PTR>(open("open"));
  // For a kind of file that no program is known for, the system asks for one.
  if (result != SE_ERR_NOASSOC) return result >= kLeastSuccess;
  return reinterpret_cast<INT_PTR>(open("openas")) >= kLeastSuccess;
}

bool HasDisplay() {
  return true;
}

void LeaveProcess(int exitCode) {
  TerminateProcess(GetCurrentProcess(), static_cast<UINT>(exitCode));
  for (;;) Sleep(INFINITE);
}
