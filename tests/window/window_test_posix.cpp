// The program's window, driven through real keys and clicks; what comes of it is looked up in
// files.

#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <regex>
#include <string>

#include "window/WindowFixture.h"

namespace {

class Window : public WindowFixture {};

TEST_F(Window, OptionsSubmitReportAndQuit) {
  const std::string good = desktop_.Deck("good", "$ standin: run 1\n");
  const std::string bad = desktop_.Deck("bad", "$ standin: fail\n");
  const std::string report = desktop_.Scratch() / "report.txt";
  const std::vector<std::string> options = {"--submit", "--report=" + report, "--quit-when-done"};
  Copy copy = desktop_.Start({options[0], options[1], options[2], good});
  EXPECT_EQ(desktop_.WaitExit(copy, kPoll + kRun), 0) << TempFolder::Read(copy.output);
  const std::string time = "[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9:]{8}";
  std::string text = TempFolder::Read(report);
  EXPECT_TRUE(
      std::regex_match(text, std::regex(good + "\tFinished\tLS-DYNA \\(S\\)\t" + FolderOf(good) +
                                        "/messag.krb\t" + time + "\t" + time + "\t[1-9]\n")))
      << text;

  // A second copy has no run of its own.
  copy = desktop_.Start({options[0], options[1], options[2], bad, good});
  ASSERT_TRUE(desktop_.OpenMain());
  const Copy second = desktop_.Start({options[2], good});
  EXPECT_EQ(desktop_.WaitExit(second, 5), 8);
  EXPECT_EQ(desktop_.WaitExit(copy, kPoll + kRun), 4) << TempFolder::Read(copy.output);
  text = TempFolder::Read(report);
  EXPECT_EQ(text.rfind(bad + "\tAborted\tLS-DYNA (S)\t", 0), 0U) << text;
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 2) << text;

  // What is not Finished when the program has to end, and a report that cannot be written.
  const std::string longJob = desktop_.Deck("long", "$ standin: run 60\n");
  std::filesystem::remove(report);
  std::filesystem::create_directory(report);
  copy = desktop_.Start({options[0], options[1], longJob});
  ASSERT_TRUE(Desktop::WaitFor([&] { return Began(longJob); }, kPoll + kRun));
  kill(copy.pid, SIGTERM);
  EXPECT_EQ(desktop_.WaitExit(copy, 20), 4);
  EXPECT_EQ(TempFolder::Read(copy.output), "Write report file [" + report + "] failed\n");
  EXPECT_EQ(Groups(), "Group1=\n");
}

TEST_F(Window, SecondCopyHandsItsJobOverAndRaisesTheWindow) {
  const std::string own = desktop_.Deck("own", ""), deck = desktop_.Deck("handed", "");
  StartWith({own});
  const std::string window = desktop_.ActiveWindow();
  desktop_.Command("sh -c 'xterm -e sleep 60 >/dev/null 2>&1 & echo $!'");
  ASSERT_TRUE(Desktop::WaitFor([&] { return desktop_.ActiveWindow() != window; }, 10));
  const Copy second = desktop_.Start({deck});
  EXPECT_EQ(desktop_.WaitExit(second, 10), 0) << TempFolder::Read(second.output);
  EXPECT_TRUE(Desktop::WaitFor([&] { return desktop_.ActiveWindow() == window; }, 4));
  EXPECT_TRUE(WaitUntilTaken());
  desktop_.Key("ctrl+Return");
  EXPECT_TRUE(Desktop::WaitFor([&] { return HasRun(own) && HasRun(deck); }, kRun));
}

TEST_F(Window, TwoUsersEachHaveTheirOwn) {
  if (geteuid() != 0) GTEST_SKIP() << "needs root to become another user";
  const std::vector<std::string> nobody = {"setpriv", "--reuid=65534", "--regid=65534",
                                           "--clear-groups"};
  const std::string reachable =
      desktop_.Command("setpriv --reuid=65534 --regid=65534 --clear-groups test -x " KR_TEST_BIN_DIR
                       "/kestrun && echo yes");
  if (reachable.empty()) GTEST_SKIP() << "another user cannot reach the program";
  const Copy mine = desktop_.Start({});
  ASSERT_TRUE(desktop_.OpenMain());
  const Copy theirs = desktop_.Start({}, nobody, "other");
  EXPECT_TRUE(Desktop::WaitFor([&] { return desktop_.Windows("Kestrun").size() == 2; }, 10))
      << TempFolder::Read(theirs.output);
  EXPECT_TRUE(Desktop::Runs(mine));
  EXPECT_TRUE(Desktop::Runs(theirs));
}

TEST_F(Window, ALostDisplayStopsTheSolverAndKeepsTheGroups) {
  const std::string deck = desktop_.Deck("long", "$ standin: run 60\n");
  const Copy copy = StartWith({deck});
  desktop_.Key("ctrl+t ctrl+shift+Tab ctrl+Return");
  ASSERT_TRUE(Desktop::WaitFor([&] { return Began(deck); }, kRun));
  desktop_.Command("xdotool windowkill " + desktop_.Main());  // ends the connection
  EXPECT_EQ(desktop_.WaitExit(copy, 10), 1);
  EXPECT_FALSE(desktop_.SolverRuns("long.k")) << "the solver still runs";
  EXPECT_EQ(Groups(), "Group1=\nGroup2=\n");
}

TEST_F(Window, JobsThatCannotBeHandedOverAreTold) {
  std::filesystem::create_directories(HandOver());
  const std::string deck = desktop_.Deck("refused", "");
  const Copy script = desktop_.Start({"--submit", "--quit-when-done", deck});
  EXPECT_EQ(desktop_.WaitExit(script, 5), 9);
  const Copy copy = desktop_.Start({deck});
  ASSERT_TRUE(desktop_.OpenMain());
  for (const Copy& one : {script, copy}) {
    EXPECT_EQ(TempFolder::Read(one.output), "Hand-over file [" + HandOver() +
                                                "] refused\nWrite tmp file [" + HandOver() +
                                                "] failed\n");
  }
  kill(copy.pid, SIGTERM);
  EXPECT_EQ(desktop_.WaitExit(copy, 10), 9);
}

TEST_F(Window, TerminationEndsItFromInsideAMenuQuestionOrChooser) {
  for (const char* key : {"Menu BackSpace", "Home Delete", "ctrl+o"}) {
    const std::string deck = desktop_.Deck("kept", "");
    const Copy copy = StartWith({deck});
    desktop_.Command("xdotool mousemove 0 0");  // away from the menu
    desktop_.Key(key);
    usleep(500000);
    kill(copy.pid, SIGTERM);
    EXPECT_EQ(desktop_.WaitExit(copy, 5), 0) << key;
    EXPECT_EQ(Groups(), "Group1=\n");
  }
}

TEST_F(Window, TakesDroppedFilesAndFolders) {
  const std::string file = desktop_.Deck("a file", "");
  const std::string folder = FolderOf(desktop_.Deck("folder", ""));
  const Copy copy = StartWith({});
  std::string address = "file://" + file;
  address.replace(address.find(' '), 1, "%20");
  address.replace(address.rfind(' '), 1, "%20");
  const std::string source =
      desktop_.StartDragSource({address, "file://" + folder, "file:///gone.k"});
  ASSERT_FALSE(source.empty());
  desktop_.Drag(20, 20, 500, Layout::RowY(2, kWidth), source);
  EXPECT_TRUE(desktop_.Answer("Return")) << "one of the files does not exist";
  ASSERT_TRUE(desktop_.OpenMain());
  usleep(300000);
  desktop_.Key("ctrl+Return");
  EXPECT_TRUE(Desktop::WaitFor([&] { return HasRun(file) && HasRun(folder + "/folder.k"); }, kRun));
  EXPECT_TRUE(Desktop::Runs(copy));
}

}  // namespace
