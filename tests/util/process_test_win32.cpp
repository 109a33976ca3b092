// What a child gets of its console, its window and our handles.
#include <gtest/gtest.h>
#include <windows.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

#include "support/OwnProgram.h"
#include "support/TempFolder.h"
#include "util/files/FileDirWrapper.h"
#include "util/process/ConsoleLines.h"
#include "util/process/PTWrapper.h"

namespace {

constexpr char kReportFile[] = "KR_TEST_CONSOLE_REPORT";
constexpr char kHandle[] = "KR_TEST_CONSOLE_HANDLE";

int Report(const std::string& file) {
  STARTUPINFOA startup{};
  GetStartupInfoA(&startup);
  char title[256] = {};
  GetConsoleTitleA(title, sizeof title);
  const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
  DWORD mode = 0;
  DWORD flags = 0;
  const auto handle = reinterpret_cast<HANDLE>(std::strtoull(std::getenv(kHandle), nullptr, 10));
  std::ofstream report(file);
  report << title << '\n'
         << ((startup.dwFlags & STARTF_USESHOWWINDOW) != 0 ? startup.wShowWindow : SW_SHOW) << ' '
         << (startup.dwFlags & STARTF_USESTDHANDLES) << ' ' << (GetConsoleMode(output, &mode) != 0)
         << ' ' << (GetHandleInformation(handle, &flags) != 0) << '\n';
  return 0;
}

const OwnProgramChild child(kReportFile, Report);

struct Seen {
  std::string title;
  int window = -1;
  int redirected = -1;
  int console = -1;
  int inherited = -1;
};

Seen SeenByChild(bool showWindow) {
  const TempFolder folder;
  SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
  const HANDLE event = CreateEventA(&inheritable, TRUE, FALSE, nullptr);
  PTWrapperProcessStart start = OwnProgram(kReportFile, folder / "report");
  start.variables.emplace_back(kHandle, std::to_string(reinterpret_cast<std::uintptr_t>(event)));
  start.title = "A title; 'of' %TEMP%";
  start.creationFlags = PTWrapperProcess::kNewConsole;
  start.showWindow = showWindow;
  PTWrapperProcess process;
  EXPECT_TRUE(process.Create(start));
  EXPECT_TRUE(process.WaitProc());
  EXPECT_EQ(process.ExitCode(), 0);
  CloseHandle(event);
  Seen seen;
  std::istringstream text(TempFolder::Read(folder / "report"));
  std::getline(text, seen.title);
  if (seen.title.ends_with('\r')) seen.title.pop_back();
  text >> seen.window >> seen.redirected >> seen.console >> seen.inherited;
  return seen;
}

TEST(ProcessWin32, ConsolesAreShownOrHiddenAndGetTheOutput) {
  for (const bool show : {true, false}) {
    const Seen seen = SeenByChild(show);
    EXPECT_EQ(seen.title, "A title; 'of' %TEMP%");
    EXPECT_EQ(seen.window, show ? SW_SHOW : SW_HIDE);
    EXPECT_EQ(seen.redirected, 0);
    EXPECT_EQ(seen.console, 1) << "the output goes to the console, not to us";
    EXPECT_EQ(seen.inherited, 1);
  }
}

// Another user's process may open and set it: its access list is empty, not missing.
TEST(ProcessWin32, GlobalEventsAreOpenToAll) {
  const std::string name = "Global\\KR_TEST_W_" + std::to_string(GetCurrentProcessId());
  PTWrapperSignal signal;
  ASSERT_EQ(signal.CreateEventSignal(name), 1);
  const HANDLE event = OpenEventA(READ_CONTROL, FALSE, name.c_str());
  ASSERT_NE(event, nullptr);
  char descriptor[1024];
  DWORD size = 0;
  ASSERT_TRUE(GetKernelObjectSecurity(event, DACL_SECURITY_INFORMATION, descriptor,
                                      sizeof descriptor, &size));
  BOOL present = FALSE;
  BOOL byDefault = TRUE;
  ACL* list = reinterpret_cast<ACL*>(descriptor);
  EXPECT_TRUE(GetSecurityDescriptorDacl(descriptor, &present, &list, &byDefault));
  EXPECT_TRUE(present);
  EXPECT_EQ(list, nullptr);
  CloseHandle(event);
}

// Twice: what the first run printed gives way, what somebody else put there does not.
TEST(ProcessWin32, KeepsWhatItsConsoleHoldsAtTheEnd) {
  const TempFolder folder;
  folder.Write("a.k", "$ standin: chatter 2\n$ standin: no-licence\n*KEYWORD\n*END\n");
  folder.Write("out", "mine");
  PTWrapperProcessStart start;
  start.program = KR_TEST_BIN_DIR "/standin_solver.exe";
  start.commandLine = "standin_solver i=a.k";
  start.folder = folder.Path();
  start.creationFlags = PTWrapperProcess::kNewConsole;
  start.outputFile = folder / "out";
  PTWrapperProcess process;
  for (int run = 0; run < 2; ++run) {
    ASSERT_TRUE(process.Create(start));
    EXPECT_TRUE(process.WaitProc());
    EXPECT_EQ(process.ExitCode(), 1);
    EXPECT_TRUE(process.Terminate());
    const std::vector<std::string> lines = LastConsoleLines(start.outputFile, 100);
    ASSERT_EQ(lines.size(), 5u);
    EXPECT_TRUE(lines[0].starts_with(" part 1: 100%")) << lines[0];
    EXPECT_EQ(lines[4], " the run ends: no licence");
    EXPECT_TRUE(IsConsoleFile(start.outputFile));
  }
  // Nobody is faster than who keeps the console.
  folder.Write("a.k", "$ standin: no-licence\n*KEYWORD\n*END\n");
  for (int run = 0; run < 5; ++run) {
    std::filesystem::remove(start.outputFile);
    ASSERT_TRUE(process.Create(start));
    EXPECT_TRUE(process.WaitProc());
    EXPECT_TRUE(process.Terminate());
    EXPECT_TRUE(IsConsoleFile(start.outputFile));
  }
  EXPECT_EQ(TempFolder::Read(folder / "out.old1"), "mine");
  EXPECT_FALSE(FileDirWrapper::FileExists(folder / "out.old2"));
}

}  // namespace
