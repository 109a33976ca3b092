#include "util/process/ConsoleKeeper_win32.h"

#include <windows.h>

#include <chrono>
#include <iterator>

#include "util/process/ConsoleLines.h"
#include "util/text/ConsoleText.h"

namespace {

// A program has its console soon, or never.
constexpr DWORD kLookMilliseconds = 2;
// At first it is looked for more often than the system lets a thread sleep.
constexpr ULONGLONG kAtOnceMilliseconds = 500;
constexpr std::chrono::microseconds kShortestPause{500};
constexpr DWORD kLateMilliseconds = 1000;
constexpr ULONGLONG kSoonMilliseconds = 10000;
// The system ends who has not done so some seconds after the console was closed.
constexpr DWORD kClosingMilliseconds = 4000;
constexpr int kMostOld = 99;

HANDLE theClosing = nullptr;

// Keys are for the program. A closing console is read first: the process ends when this returns.
BOOL WINAPI TakeControl(DWORD event) {
  if (event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT) return TRUE;
  SetEvent(theClosing);
  Sleep(kClosingMilliseconds);
  return TRUE;
}

void TellReady(const std::string& name) {
  if (name.empty()) return;
  const HANDLE event = OpenEventA(EVENT_MODIFY_STATE, FALSE, name.c_str());
  if (event == nullptr) return;
  SetEvent(event);
  CloseHandle(event);
}

// Escape sequences are shown as what they mean, where the system can.
void ShowColours() {
  const HANDLE screen =
      CreateFileA("CONOUT$", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                  nullptr, OPEN_EXISTING, 0, nullptr);
  if (screen == INVALID_HANDLE_VALUE) return;
  DWORD mode = 0;
  if (GetConsoleMode(screen, &mode))
    SetConsoleMode(screen, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
  CloseHandle(screen);
}

void PauseShortly() {
  const auto end = std::chrono::steady_clock::now() + kShortestPause;
  while (std::chrono::steady_clock::now() < end) SwitchToThread();
}

bool Enter(DWORD id, HANDLE process) {
  const ULONGLONG begun = GetTickCount64();
  while (!AttachConsole(id)) {
    const ULONGLONG waited = GetTickCount64() - begun;
    if (waited < kAtOnceMilliseconds) PauseShortly();
    const DWORD pause = waited < kAtOnceMilliseconds ? 0
                        : waited < kSoonMilliseconds ? kLookMilliseconds
                                                     : kLateMilliseconds;
    if (WaitForSingleObject(process, pause) != WAIT_TIMEOUT) return false;
  }
  return SetConsoleCtrlHandler(TakeControl, TRUE);
}

std::string InCodePage(const std::wstring& text) {
  const int size = static_cast<int>(text.size());
  const int bytes = WideCharToMultiByte(CP_ACP, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
  std::string converted(static_cast<std::size_t>(bytes), '\0');
  WideCharToMultiByte(CP_ACP, 0, text.data(), size, converted.data(), bytes, nullptr, nullptr);
  return converted;
}

// A console that does not know escape sequences shows them.
std::string WithLineEnds(const std::string& shown) {
  ConsoleText plain;
  std::string lines;
  plain.Take(shown, lines);
  std::string text;
  for (const char c : lines) text += c == '\n' ? "\r\n" : std::string(1, c);
  return text;
}

// Up to the line of the cursor.
std::string ReadBuffer() {
  const HANDLE screen =
      CreateFileA("CONOUT$", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                  nullptr, OPEN_EXISTING, 0, nullptr);
  if (screen == INVALID_HANDLE_VALUE) return {};
  CONSOLE_SCREEN_BUFFER_INFO info{};
  GetConsoleScreenBufferInfo(screen, &info);
  std::string text;
  for (SHORT row = 0; row <= info.dwCursorPosition.Y; ++row) {
    std::wstring line(static_cast<std::size_t>(info.dwSize.X), L' ');
    DWORD count = 0;
    ReadConsoleOutputCharacterW(screen, line.data(), static_cast<DWORD>(line.size()), {0, row},
                                &count);
    line.resize(count);
    line.resize(line.find_last_not_of(std::wstring(L" \0", 2)) + 1);
    text += InCodePage(line) + '\n';
  }
  CloseHandle(screen);
  return text.substr(0, text.find_last_not_of('\n') + 1) + '\n';
}

// True when nothing has the name any more. A link is not what it leads to.
bool MakeRoom(const std::string& file) {
  WIN32_FILE_ATTRIBUTE_DATA info{};
  if (!GetFileAttributesExA(file.c_str(), GetFileExInfoStandard, &info)) {
    return GetLastError() == ERROR_FILE_NOT_FOUND;
  }
  if (info.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) return false;
  const bool isLink = (info.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
  const bool isEmpty = info.nFileSizeLow == 0 && info.nFileSizeHigh == 0;
  if (isLink || isEmpty || IsConsoleFile(file)) return DeleteFileA(file.c_str());
  for (int number = 1; number <= kMostOld; ++number) {
    const std::string name = file + ".old" + std::to_string(number);
    if (GetFileAttributesA(name.c_str()) == INVALID_FILE_ATTRIBUTES) {
      return MoveFileA(file.c_str(), name.c_str());
    }
  }
  return false;
}

bool Write(const std::string& file, const std::string& text) {
  if (!MakeRoom(file)) return false;
  const HANDLE out = CreateFileA(file.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_NEW,
                                 FILE_ATTRIBUTE_NORMAL, nullptr);
  if (out == INVALID_HANDLE_VALUE) return false;
  DWORD written = 0;
  const bool whole =
      WriteFile(out, text.data(), static_cast<DWORD>(text.size()), &written, nullptr) &&
      written == text.size();
  CloseHandle(out);
  return whole;
}

}  // namespace

bool KeepConsole(unsigned long id, const std::string& file, const std::string& ready) {
  const HANDLE process = OpenProcess(SYNCHRONIZE, FALSE, id);
  theClosing = CreateEventA(nullptr, TRUE, FALSE, nullptr);
  const std::string begun = ConsoleFirstLine();
  TellReady(ready);
  if (process == nullptr || theClosing == nullptr || !Enter(id, process)) return false;
  ShowColours();
  const HANDLE ends[] = {process, theClosing};
  WaitForMultipleObjects(static_cast<DWORD>(std::size(ends)), ends, FALSE, INFINITE);
  return Write(file, WithLineEnds(begun + ReadBuffer()));
}
