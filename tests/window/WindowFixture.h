// What the tests of the window share.
#ifndef KR_TESTS_WINDOW_WINDOWFIXTURE_H
#define KR_TESTS_WINDOW_WINDOWFIXTURE_H

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "ui/window/Layout.h"
#include "window/Desktop.h"

// Seconds. The poll that takes jobs in comes every three seconds.
inline constexpr double kPoll = 8;
inline constexpr double kRun = 20;
inline constexpr int kWidth = Layout::kWindowWidth;

inline bool Exists(const std::string& path) {
  return std::filesystem::exists(path);
}

inline std::string FolderOf(const std::string& deck) {
  return std::filesystem::path(deck).parent_path().string();
}

// The message file that a run leaves when its end has been judged.
inline std::string KeptMessage(const std::string& deck) {
  return FolderOf(deck) + "/messag.krb";
}

inline bool HasRun(const std::string& deck) {
  return Exists(KeptMessage(deck));
}

inline bool Began(const std::string& deck) {
  return Exists(FolderOf(deck) + "/messag");
}

class WindowFixture : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(desktop_.Ready()) << "no display could be started";
    // Only one copy of a user shows a window; another test run's ends soon, a person's does not.
    ASSERT_TRUE(Desktop::WaitFor([&] { return !desktop_.AnotherCopyRuns(); }, 30))
        << "end the copy of the program that runs already";
  }

  // Starts the program with jobs and waits until it has taken them in.
  Copy StartWith(const std::vector<std::string>& arguments) {
    const Copy copy = desktop_.Start(arguments);
    EXPECT_TRUE(desktop_.OpenMain()) << TempFolder::Read(copy.output);
    EXPECT_TRUE(WaitUntilTaken());
    return copy;
  }

  std::string HandOver() const {
    return desktop_.Scratch() / "home/handover/~kestrun_tmp_2014 R1.txt";
  }

  bool WaitUntilTaken() const {
    const bool gone = Desktop::WaitFor([&] { return !Exists(HandOver()); }, kPoll);
    usleep(300000);  // small decks are read at once, and what changed is shown
    return gone;
  }

  // No window of this class is left.
  bool Closed(const std::string& windowClass) const {
    return Desktop::WaitFor([&] { return desktop_.Windows(windowClass, 0).empty(); }, 5);
  }

  void ClickTool(Action tool) const {
    desktop_.Click(Layout::ToolX(tool, kWidth) + Layout::kToolSize / 2,
                   Layout::kToolY + Layout::kToolSize / 2);
  }

  // In the coordinates of a window other than the main one.
  void ClickIn(const std::string& window, int x, int y) const {
    desktop_.Command("xdotool mousemove --window " + window + " " + std::to_string(x) + " " +
                     std::to_string(y) + " click 1");
    usleep(200000);
  }

  // Selects the text of a field of the main window and types over it.
  void TypeInto(int x, int y, const std::string& text) const {
    desktop_.Click(x + 10, y + Layout::kFieldHeight / 2);
    desktop_.Key("ctrl+a");
    desktop_.Type(text);
    desktop_.Key("Return");
  }

  std::string Groups() const { return TempFolder::Read(desktop_.Groups()); }
  std::string Settings() const { return TempFolder::Read(desktop_.Settings()); }

  Desktop desktop_;
};

#endif
