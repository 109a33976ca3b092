// The window of a real second process, raised as a second copy of the program does it.
#include <windows.h>

#include "core/SystemServices.h"
#include "CoreFixture.h"
#include "util/process/PTWrapper.h"

namespace {

constexpr char kTitleVariable[] = "KR_TEST_WINDOW";

// Takes the place of the tests in a process that only shows a minimised window.
class WindowProcess : public testing::Environment {
 public:
  void SetUp() override {
    const char* title = std::getenv(kTitleVariable);
    if (title == nullptr || *title == '\0') return;
    const HWND window = CreateWindowA("STATIC", title, WS_OVERLAPPEDWINDOW, 0, 0, 200, 100, nullptr,
                                      nullptr, nullptr, nullptr);
    ShowWindow(window, SW_SHOWMINIMIZED);
    MSG message;
    while (GetMessageA(&message, nullptr, 0, 0) > 0) DispatchMessageA(&message);
    std::_Exit(0);
  }
};
[[maybe_unused]] const auto* const process = testing::AddGlobalTestEnvironment(new WindowProcess);

TEST(RaiseWindowWin32, ShowsTheMinimisedWindowOfAnotherProcess) {
  const std::string title = "Kestrun of test " + std::to_string(GetCurrentProcessId());
  EXPECT_FALSE(RaiseWindow(title));
  PTWrapperProcess other;
  {
    const ScopedVariable variable(kTitleVariable, title);
    ASSERT_TRUE(other.Create(FileDirWrapper::ProgramPath(), "window", "", false, 0, "", true));
  }
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
