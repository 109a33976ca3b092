// The window of a real second process, raised as a second copy of the program does it.
#include <windows.h>

#include "core/SystemServices.h"
#include "CoreFixture.h"
#include "support/OwnProgram.h"

namespace {

constexpr char kTitleVariable[] = "KR_TEST_WINDOW";

int ShowMinimised(const std::string& title) {
  const HWND window = CreateWindowA("STATIC", title.c_str(), WS_OVERLAPPEDWINDOW, 0, 0, 200, 100,
                                    nullptr, nullptr, nullptr, nullptr);
  ShowWindow(window, SW_SHOWMINIMIZED);
  MSG message;
  while (GetMessageA(&message, nullptr, 0, 0) > 0) DispatchMessageA(&message);
  return 0;
}

const OwnProgramChild child(kTitleVariable, ShowMinimised);

TEST(RaiseWindowWin32, ShowsTheMinimisedWindowOfAnotherProcess) {
  const std::string title = "Kestrun of test " + std::to_string(GetCurrentProcessId());
  EXPECT_FALSE(RaiseWindow(title));
  PTWrapperProcess other;
  PTWrapperProcessStart start = OwnProgram(kTitleVariable, title);
  start.showWindow = true;
  ASSERT_TRUE(other.Create(start));
  HWND window = nullptr;
  ASSERT_TRUE(WaitUntil([&] {
    window = FindWindowA(nullptr, title.c_str());
    return window != nullptr && IsIconic(window);
  }));
  EXPECT_TRUE(RaiseWindow(title));
  EXPECT_TRUE(WaitUntil([&] { return !IsIconic(window) && IsWindowVisible(window); }));
  EXPECT_TRUE(WaitUntil([&] { return GetForegroundWindow() == window; }));
  EXPECT_TRUE(other.Terminate());
}

}  // namespace
