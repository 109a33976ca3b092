// A whole working day at the window, in both languages, and a job with stages.

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "window/WindowFixture.h"

namespace {

class Session : public WindowFixture, public ::testing::WithParamInterface<int> {
 protected:
  void StartIn(int language) {
    std::string settings = TempFolder::Read(desktop_.Settings());
    const std::string section = "[GENERAL]\n";
    const std::size_t at = settings.find(section);
    ASSERT_NE(at, std::string::npos) << settings;
    settings.insert(at + section.size(), "language=" + std::to_string(language) + "\n");
    std::ofstream(desktop_.Settings()) << settings;
    copy_ = desktop_.Start({});
    ASSERT_TRUE(desktop_.OpenMain()) << TempFolder::Read(copy_.output);
  }

  // Through the file chooser, whose field takes a path that is typed.
  void Add(const std::string& deck) {
    desktop_.Key("ctrl+o");
    const std::vector<std::string> choosers = desktop_.Windows("KestrunChooser");
    ASSERT_FALSE(choosers.empty());
    ASSERT_TRUE(Desktop::WaitFor([&] { return desktop_.ActiveWindow() == choosers.front(); }, 5));
    desktop_.Key("ctrl+a");
    desktop_.Type(deck);
    desktop_.Key("Return");
    ASSERT_TRUE(Closed("KestrunChooser"));
    ASSERT_TRUE(desktop_.OpenMain());
    usleep(500000);  // it is read
  }

  // Opens a window by a key, holds its title against the language's, and closes it.
  void Look(const std::string& key, const std::string& windowClass, const std::string& title) {
    desktop_.Key(key);
    const std::vector<std::string> windows = desktop_.Windows(windowClass);
    ASSERT_FALSE(windows.empty()) << key;
    const std::string shown = desktop_.Command("xdotool getwindowname " + windows.front());
    EXPECT_NE(shown.find(title), std::string::npos) << shown;
    ASSERT_TRUE(Desktop::WaitFor([&] { return desktop_.ActiveWindow() == windows.front(); }, 5));
    desktop_.Key("Escape");
    ASSERT_TRUE(Closed(windowClass));
    ASSERT_TRUE(desktop_.OpenMain());
  }

  void RunUntil(const std::string& file) {
    desktop_.Key("ctrl+Return");
    ASSERT_TRUE(Desktop::WaitFor([&] { return Exists(file); }, kRun)) << file;
    usleep(700000);  // the window hears of it
  }

  Copy copy_;
};

TEST_P(Session, FromTheFirstDeckToTheQuestionAtTheEnd) {
  const bool chinese = GetParam() == 1;
  StartIn(GetParam());
  const std::string deck = desktop_.Deck("first", "$ standin: echo\n");
  const std::string kept = KeptMessage(deck);
  Add(deck);
  desktop_.Key("Home");
  TypeInto(Layout::CpuX(kWidth), Layout::ParameterRowY(kWidth), "3");
  RunUntil(kept);
  EXPECT_NE(TempFolder::Read(FolderOf(deck) + "/standin_echo.txt").find("ncpu=3\n"),
            std::string::npos);
  Look("ctrl+m", "KestrunText", "messag.krb");
  Look("ctrl+i", "KestrunDialog", chinese ? "查看任务信息" : "Show Job Information");
  Look("ctrl+l", "KestrunText", "kr.log");

  // Once more, as a new job.
  std::filesystem::remove(kept);
  desktop_.Key("ctrl+r");
  RunUntil(kept);

  desktop_.Key("F2");
  ASSERT_FALSE(desktop_.Windows("KestrunDialog").empty());
  desktop_.Key("ctrl+a");
  desktop_.Type("Night run");
  desktop_.Key("Return");
  ASSERT_TRUE(Closed("KestrunDialog"));

  desktop_.Click(60, Layout::RowY(0, kWidth));
  desktop_.Key("Delete");
  EXPECT_TRUE(desktop_.Answer("Escape"));  // no: it is still there to be looked at
  Look("ctrl+i", "KestrunDialog", chinese ? "查看任务信息" : "Show Job Information");
  desktop_.Key("Delete");
  EXPECT_TRUE(desktop_.Answer("Return"));
  desktop_.Key("ctrl+i");  // no job is left
  EXPECT_TRUE(desktop_.Answer("Return"));

  const std::string longDeck = desktop_.Deck("long", "$ standin: run 60\n");
  Add(longDeck);
  RunUntil(FolderOf(longDeck) + "/messag");
  desktop_.Key("ctrl+q");
  EXPECT_TRUE(desktop_.Answer("Escape"));
  ASSERT_TRUE(desktop_.OpenMain());
  EXPECT_TRUE(desktop_.SolverRuns("long.k"));
  desktop_.Key("ctrl+q");
  EXPECT_TRUE(desktop_.Answer("Return"));
  EXPECT_EQ(desktop_.WaitExit(copy_, kRun), 0);
  EXPECT_FALSE(desktop_.SolverRuns("long.k"));
  EXPECT_EQ(TempFolder::Read(desktop_.Groups()), "Night run=\n");
}

TEST_P(Session, StagesAreMovedRemovedAndRun) {
  StartIn(GetParam());
  const TempFolder& scratch = desktop_.Scratch();
  for (const char* stage : {"one", "two", "three"}) {
    std::filesystem::create_directories(scratch / (std::string("stages/") + stage));
    scratch.Write(std::string("stages/") + stage + "/" + stage + ".k",
                  "*KEYWORD\n*CONTROL_TERMINATION\n       1.0\n*END\n");
  }
  const auto ran = [&](const std::string& stage) {
    return Exists(scratch / ("stages/" + stage + "/messag.krb"));
  };
  Add(scratch.Write("stages/main.k",
                    "$ RUNFIRST: 1\n*KEYWORD\n*INCLUDE\none/one.k\n*INCLUDE\ntwo/two.k\n"
                    "*INCLUDE\nthree/three.k\n*END\n"));
  desktop_.Key("Home ctrl+e");
  const std::vector<std::string> dialogs = desktop_.Windows("KestrunDialog");
  ASSERT_FALSE(dialogs.empty());
  ASSERT_TRUE(Desktop::WaitFor([&] { return desktop_.ActiveWindow() == dialogs.front(); }, 5));
  constexpr int kFirstRow = 34 + Layout::kHeaderHeight + Layout::kRowHeight / 2;
  ClickIn(dialogs.front(), 60, kFirstRow + 2 * Layout::kRowHeight);
  ClickIn(dialogs.front(), 222, 327);  // the third stage goes up
  ClickIn(dialogs.front(), 60, kFirstRow);
  ClickIn(dialogs.front(), 134, 327);  // the first one goes: three, two are left
  ClickIn(dialogs.front(), 200, 276);  // begin with the second
  desktop_.Key("Down Return");
  ClickIn(dialogs.front(), 712, 327);
  ASSERT_TRUE(Closed("KestrunDialog"));
  ASSERT_TRUE(desktop_.OpenMain());
  desktop_.Key("ctrl+Return");
  EXPECT_TRUE(Desktop::WaitFor([&] { return ran("two"); }, kRun));
  desktop_.Key("Home ctrl+e");
  const std::vector<std::string> again = desktop_.Windows("KestrunDialog");
  ASSERT_FALSE(again.empty());
  ClickIn(again.front(), 60, kFirstRow + Layout::kRowHeight);
  ClickIn(again.front(), 440, 327);  // the message file of the stage that ran
  EXPECT_FALSE(desktop_.Windows("KestrunText").empty());
  EXPECT_FALSE(ran("one"));
  EXPECT_FALSE(ran("three"));
}

INSTANTIATE_TEST_SUITE_P(Languages, Session, ::testing::Values(0, 1), [](const auto& tested) {
  return tested.param == 1 ? "Chinese" : "English";
});

}  // namespace
