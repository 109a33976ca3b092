// The program's window in Chinese, driven through real keys.

#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "window/WindowFixture.h"

namespace {

class ChineseWindow : public WindowFixture {
 protected:
  Copy StartIn(int language) {
    std::filesystem::create_directories(desktop_.WorkFolder());
    std::ofstream(desktop_.Settings()) << "[GENERAL]\nlanguage=" << language << "\n";
    const Copy copy = desktop_.Start({});
    EXPECT_TRUE(desktop_.OpenMain()) << TempFolder::Read(copy.output);
    return copy;
  }

  std::string TitleOf(const std::string& window) const {
    return desktop_.Command("xdotool getwindowname " + window);
  }

  // Renames the current group by typing and answers what comes of it.
  void RenameTo(const std::string& name) {
    desktop_.Key("F2");
    ASSERT_FALSE(desktop_.Windows("KestrunDialog").empty());
    desktop_.Key("ctrl+a");
    desktop_.Type(name);
    usleep(300000);
    desktop_.Key("Return");
    EXPECT_TRUE(Closed("KestrunDialog"));
  }
};

TEST_F(ChineseWindow, TakesAndKeepsChineseNames) {
  // Keys of their own for the characters typed below: a key that xdotool has to map while it types
  // may arrive before the window has heard of it.
  desktop_.Command(
      "xmodmap -e 'keycode 230 = U95E8' -e 'keycode 231 = U677F' -e 'keycode 232 = U0434' "
      "-e 'keycode 233 = U0432' -e 'keycode 234 = U0435' -e 'keycode 235 = U0440' "
      "-e 'keycode 236 = U044C'");
  const Copy copy = StartIn(1);
  desktop_.Key("F2");
  const std::vector<std::string> dialogs = desktop_.Windows("KestrunDialog");
  ASSERT_FALSE(dialogs.empty());
  EXPECT_EQ(TitleOf(dialogs.front()), "重命名任务组\n");
  desktop_.Key("Escape");
  ASSERT_TRUE(Closed("KestrunDialog"));
  RenameTo("门板 дверь");
  desktop_.Key("ctrl+t");
  usleep(300000);
  RenameTo("门板 дверь");
  EXPECT_TRUE(desktop_.Answer("Return")) << "the name is taken";
  kill(copy.pid, SIGTERM);
  EXPECT_EQ(desktop_.WaitExit(copy, 10), 0);
  EXPECT_EQ(TempFolder::Read(desktop_.Groups()), "门板 дверь=\nGroup1=\n");
}

}  // namespace
