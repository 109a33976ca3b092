#include <windows.h>

#include "System.h"

// The arguments stay as they came: no file names in the place of "*" and "?".
extern "C" {
int _dowildcard = 0;
}

namespace {

// Windows gives a handler of a closing console some seconds and then ends the process whatever it
// does; not returning is all the resistance there is.
BOOL WINAPI IgnoreControl(DWORD event) {
  if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) Sleep(INFINITE);
  return TRUE;
}

std::string ProgramPath() {
  char buffer[MAX_PATH];
  const DWORD length = GetModuleFileNameA(nullptr, buffer, sizeof buffer);
  return length > 0 && length < sizeof buffer ? std::string(buffer, length) : std::string();
}

}  // namespace

void IgnorePoliteTermination() {
  SetConsoleCtrlHandler(IgnoreControl, TRUE);
}

long StartSleepingChild() {
  std::string commandLine = "\"" + ProgramPath() + "\" standin-sleep=600";
  STARTUPINFOA startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION child{};
  if (!CreateProcessA(nullptr, commandLine.data(), nullptr, nullptr, FALSE,
                      CREATE_NEW_PROCESS_GROUP | DETACHED_PROCESS, nullptr, nullptr, &startup,
                      &child)) {
    return 0;
  }
  CloseHandle(child.hThread);
  CloseHandle(child.hProcess);
  return static_cast<long>(child.dwProcessId);
}

void Crash() {
  constexpr UINT kAccessViolation = 0xC0000005;
  TerminateProcess(GetCurrentProcess(), kAccessViolation);
  ExitProcess(kAccessViolation);
}

void DieBySignal(int) {
  constexpr UINT kControlC = 0xC000013A;
  TerminateProcess(GetCurrentProcess(), kControlC);
}

bool ReadWindowSize(int& lines, int& columns) {
  CONSOLE_SCREEN_BUFFER_INFO info{};
  if (!GetConsoleScreenBufferInfo(GetStdHandle(STD_OUTPUT_HANDLE), &info)) return false;
  lines = info.srWindow.Bottom - info.srWindow.Top + 1;
  columns = info.srWindow.Right - info.srWindow.Left + 1;
  return true;
}

bool IsFolder(const std::string& path) {
  const DWORD attributes = GetFileAttributesA(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

std::string CurrentFolder() {
  char buffer[MAX_PATH];
  const DWORD length = GetCurrentDirectoryA(sizeof buffer, buffer);
  return length > 0 && length < sizeof buffer ? std::string(buffer, length) : ".";
}

std::string ProgramFolder() {
  const std::string path = ProgramPath();
  const std::size_t separator = path.find_last_of("\\/");
  return separator == std::string::npos ? "." : path.substr(0, separator);
}

void KeepRunningWithoutOutput() {}
