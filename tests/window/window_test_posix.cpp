// The program's window, driven through real keys and clicks; what comes of it is looked up in
// files.

#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "window/WindowFixture.h"

namespace {

class Window : public WindowFixture {};

TEST_F(Window, JobsOfTheCommandLineRunOnCtrlEnter) {
  const std::string first = desktop_.Deck("first", "");
  const std::string second = desktop_.Deck("second", "");
  StartWith({first, second});
  desktop_.Key("ctrl+Return");
  EXPECT_TRUE(Desktop::WaitFor([&] { return HasRun(first) && HasRun(second); }, kRun));
}

TEST_F(Window, OptionsSubmitReportAndQuit) {
  const std::string good = desktop_.Deck("good", "");
  const std::string bad = desktop_.Deck("bad", "$ standin: fail\n");
  const std::string report = desktop_.Scratch() / "report.txt";
  const Copy copy =
      desktop_.Start({"--submit", "--report=" + report, "--quit-when-done", good, bad});
  EXPECT_EQ(desktop_.WaitExit(copy, kPoll + kRun), 4) << TempFolder::Read(copy.output);
  const std::string text = TempFolder::Read(report);
  EXPECT_EQ(text.rfind(good + "\tFinished\tLS-DYNA (S)\t" + FolderOf(good) + "/messag.krb\n" + bad +
                           "\tAborted\tLS-DYNA (S)\t",
                       0),
            0U)
      << text;
  EXPECT_EQ(Groups(), "Group1=\n");
}

TEST_F(Window, SecondCopyHandsItsJobOverAndRaisesTheWindow) {
  const std::string deck = desktop_.Deck("handed", "");
  StartWith({});
  const std::string window = desktop_.ActiveWindow();
  desktop_.Command("sh -c 'xterm -e sleep 60 >/dev/null 2>&1 & echo $!'");
  ASSERT_TRUE(Desktop::WaitFor([&] { return desktop_.ActiveWindow() != window; }, 10));
  const Copy second = desktop_.Start({deck});
  EXPECT_EQ(desktop_.WaitExit(second, 10), 0) << TempFolder::Read(second.output);
  EXPECT_TRUE(Desktop::WaitFor([&] { return desktop_.ActiveWindow() == window; }, 4));
  EXPECT_TRUE(WaitUntilTaken());
  desktop_.Key("ctrl+Return");
  EXPECT_TRUE(Desktop::WaitFor([&] { return HasRun(deck); }, kRun));
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

TEST_F(Window, LeavingAsksWhileAJobRuns) {
  const std::string deck = desktop_.Deck("long", "$ standin: run 60\n");
  const Copy copy = StartWith({deck});
  desktop_.Key("ctrl+Return");
  ASSERT_TRUE(Desktop::WaitFor([&] { return Began(deck); }, kRun));
  desktop_.Key("ctrl+q");
  EXPECT_TRUE(desktop_.Answer("Escape"));
  usleep(500000);
  EXPECT_TRUE(Desktop::Runs(copy));
  ASSERT_TRUE(desktop_.OpenMain());
  desktop_.Key("ctrl+q");
  EXPECT_TRUE(desktop_.Answer("Return"));
  EXPECT_EQ(desktop_.WaitExit(copy, kRun), 0);
  EXPECT_FALSE(desktop_.SolverRuns("long.k")) << "the solver still runs";
  EXPECT_EQ(Groups(), "Group1=\n");
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

TEST_F(Window, StopEndsTheRunningJobOnly) {
  const std::string running = desktop_.Deck("running", "$ standin: run 60\n");
  const std::string queued = desktop_.Deck("queued", "");
  const Copy copy = StartWith({running, queued});
  desktop_.Key("ctrl+Return");
  ASSERT_TRUE(Desktop::WaitFor([&] { return Began(running); }, kRun));
  EXPECT_TRUE(desktop_.SolverRuns("running.k"));
  desktop_.Key("ctrl+period");
  EXPECT_TRUE(Desktop::WaitFor([&] { return !desktop_.SolverRuns("running.k"); }, 10));
  usleep(500000);
  EXPECT_FALSE(HasRun(queued));
  desktop_.Key("ctrl+q");  // asks nothing: no job runs
  EXPECT_EQ(desktop_.WaitExit(copy, 10), 0);
}

TEST_F(Window, DeletingAsks) {
  const std::string dropped = desktop_.Deck("dropped", "");
  const std::string kept = desktop_.Deck("kept", "");
  StartWith({dropped, kept});
  desktop_.Key("Delete");  // nothing is selected: a message
  EXPECT_TRUE(desktop_.Answer("Return"));
  desktop_.Key("Home Delete");
  EXPECT_TRUE(desktop_.Answer("Return"));
  desktop_.Click(60, Layout::RowY(0, kWidth));
  ClickTool(Layout::kDeleteJob);
  EXPECT_TRUE(desktop_.Answer("Escape"));
  desktop_.Key("ctrl+Return");
  EXPECT_TRUE(Desktop::WaitFor([&] { return HasRun(kept); }, kRun));
  EXPECT_FALSE(HasRun(dropped));
}

TEST_F(Window, JobsAreMovedAndTheQueueIsEmptied) {
  const std::string first = desktop_.Deck("first", "");
  const std::string second = desktop_.Deck("second", "");
  const std::string third = desktop_.Deck("third", "");
  const std::string folder = FolderOf(desktop_.Deck("endless", "$ standin: run 60\n"));
  const Copy copy = StartWith({first, second, third});
  desktop_.Key("Home ctrl+Up ctrl+Down");  // the first job does not move up
  desktop_.Click(60, Layout::RowY(2, kWidth));
  ClickTool(Layout::kMoveUp);
  desktop_.Key("ctrl+Return");
  ASSERT_TRUE(Desktop::WaitFor([&] { return HasRun(first) && HasRun(third); }, kRun));
  const auto begun = [](const std::string& deck) {
    return std::filesystem::last_write_time(FolderOf(deck) + "/messag.krb");
  };
  EXPECT_LT(begun(second), begun(third));
  EXPECT_LT(begun(third), begun(first));

  desktop_.Key("ctrl+shift+o");
  ASSERT_FALSE(desktop_.Windows("KestrunChooser").empty());
  desktop_.Key("ctrl+a");
  desktop_.Type(folder);
  desktop_.Key("Return");  // enters it
  usleep(300000);
  desktop_.Key("Return");
  ASSERT_TRUE(Closed("KestrunChooser"));
  ASSERT_TRUE(desktop_.OpenMain());
  usleep(500000);
  desktop_.Key("ctrl+Return");
  ASSERT_TRUE(Desktop::WaitFor([&] { return Began(folder + "/endless.k"); }, kRun));
  ClickTool(Layout::kDeleteAll);
  EXPECT_TRUE(desktop_.Answer("Escape"));
  EXPECT_TRUE(desktop_.SolverRuns("endless.k"));
  ClickTool(Layout::kDeleteAll);
  EXPECT_TRUE(desktop_.Answer("Return"));
  EXPECT_TRUE(Desktop::WaitFor([&] { return !desktop_.SolverRuns("endless.k"); }, 10));
  ASSERT_TRUE(desktop_.OpenMain());
  ClickTool(Layout::kDeleteAll);  // asks nothing about an empty group
  desktop_.Key("ctrl+m");
  EXPECT_TRUE(desktop_.Answer("Return")) << "no job is left to view";

  ClickTool(Layout::kDeleteGroup);  // nor about the only group
  usleep(500000);
  EXPECT_TRUE(desktop_.Windows("KestrunMessage", 0).empty());
  desktop_.Key("ctrl+t");
  usleep(300000);
  ClickTool(Layout::kDeleteGroup);
  EXPECT_TRUE(desktop_.Answer("Escape"));
  desktop_.Key("ctrl+Tab");
  usleep(300000);
  ClickTool(Layout::kDeleteGroup);
  EXPECT_TRUE(desktop_.Answer("Return"));
  desktop_.Key("ctrl+q");
  EXPECT_EQ(desktop_.WaitExit(copy, 10), 0);
  EXPECT_EQ(Groups(), "Group2=\n");
}

TEST_F(Window, GroupsAreAddedRenamedAndKept) {
  const Copy copy = StartWith({});
  desktop_.Key("F2");
  ASSERT_FALSE(desktop_.Windows("KestrunDialog").empty());
  desktop_.Key("ctrl+a");
  desktop_.Type("Door panels");
  desktop_.Key("Return ctrl+t");  // the second one is Group1 again
  usleep(300000);
  desktop_.Key("F2");
  ASSERT_FALSE(desktop_.Windows("KestrunDialog").empty());
  desktop_.Key("ctrl+a");
  desktop_.Type("Door panels");
  desktop_.Key("Return");
  EXPECT_TRUE(desktop_.Answer("Return")) << "the name is taken";
  // The first tab, by a double click.
  desktop_.Click(Layout::kMargin + 30, Layout::TabsY(kWidth) + Layout::kTabHeight / 2, 2);
  ASSERT_FALSE(desktop_.Windows("KestrunDialog").empty());
  desktop_.Key("End");
  desktop_.Type(" 2");
  desktop_.Key("Return");
  EXPECT_TRUE(Closed("KestrunDialog"));
  kill(copy.pid, SIGTERM);
  EXPECT_EQ(desktop_.WaitExit(copy, 10), 0);
  EXPECT_EQ(Groups(), "Door panels 2=\nGroup1=\n");
}

TEST_F(Window, SettingsAreEditedInPlace) {
  const std::string deck = desktop_.Deck("edited", "$ standin: echo\n");
  const Copy copy = StartWith({deck});
  const int y = Layout::ParameterRowY(kWidth);
  TypeInto(Layout::MemoryX(kWidth), y, "750");
  TypeInto(Layout::CpuX(kWidth), y, "many");
  TypeInto(Layout::PauseX(kWidth), y, "1");
  // With a job selected the same fields belong to the job.
  desktop_.Click(60, Layout::RowY(0, kWidth));
  TypeInto(Layout::CpuX(kWidth), y, "3");
  TypeInto(Layout::kFieldX, Layout::CommandRowY(), "extra=1");
  desktop_.Key("ctrl+Return");
  EXPECT_TRUE(Desktop::WaitFor([&] { return HasRun(deck); }, kRun));
  const std::string arguments = TempFolder::Read(FolderOf(deck) + "/standin_echo.txt");
  EXPECT_NE(arguments.find("ncpu=3\n"), std::string::npos) << arguments;
  EXPECT_NE(arguments.find("extra=1\n"), std::string::npos) << arguments;
  desktop_.Key("ctrl+q");
  EXPECT_EQ(desktop_.WaitExit(copy, 10), 0);
  EXPECT_NE(Settings().find("memory_size=750"), std::string::npos);
  EXPECT_NE(Settings().find("cpu_count=1"), std::string::npos);
  EXPECT_NE(Settings().find("pause_time=1"), std::string::npos);
}

TEST_F(Window, MessageFileIsShownOnceThereIsOne) {
  const std::string deck = desktop_.Deck("viewed", "");
  const Copy copy = StartWith({deck});
  desktop_.Key("Home ctrl+m");  // queued: nothing to view yet
  EXPECT_TRUE(desktop_.Answer("Return"));
  EXPECT_TRUE(desktop_.Windows("KestrunText", 0).empty());
  desktop_.Key("ctrl+Return");
  ASSERT_TRUE(Desktop::WaitFor([&] { return HasRun(deck); }, kRun));
  usleep(300000);
  desktop_.Key("ctrl+m");
  EXPECT_FALSE(desktop_.Windows("KestrunText").empty());
  // Escape closes the text, and in the main window nothing.
  desktop_.Key("Escape");
  EXPECT_TRUE(Closed("KestrunText"));
  ASSERT_TRUE(desktop_.OpenMain());
  desktop_.Key("Escape Escape");
  usleep(300000);
  EXPECT_TRUE(Desktop::Runs(copy));
}

TEST_F(Window, SummaryOpensForAJobThatHasEnded) {
  const std::string deck = desktop_.Deck("done", "");
  StartWith({deck});
  const auto openInformation = [&] {
    return !desktop_.Command("xdotool search --onlyvisible --name '^Show Job Information$'")
                .empty();
  };
  desktop_.Click(30, Layout::RowY(0, kWidth));
  desktop_.Key("ctrl+i");  // still queued
  EXPECT_TRUE(desktop_.Answer("Return"));
  EXPECT_FALSE(openInformation());
  desktop_.Key("ctrl+Return");
  ASSERT_TRUE(Desktop::WaitFor([&] { return HasRun(deck); }, kRun));
  usleep(500000);
  for (const char* key : {"Return", "Escape"}) {
    ClickTool(Layout::kViewSummary);
    ASSERT_TRUE(Desktop::WaitFor(openInformation, 5));
    desktop_.Key(key);
    EXPECT_TRUE(Desktop::WaitFor([&] { return !openInformation(); }, 5)) << key;
  }
}

TEST_F(Window, ScrolledRowsLookLikeRowsDrawnAnew) {
  std::vector<std::string> decks;
  for (int i = 0; i < 20; ++i) decks.push_back(desktop_.Deck("scrolled" + std::to_string(i), ""));
  StartWith(decks);
  const auto picture = [&] {
    usleep(200000);
    return desktop_.Command("import -silent -window " + desktop_.Main() + " rgb:- | md5sum");
  };
  std::string before = picture();
  for (const char* keys : {"Home Down Down Down Down Down Down Down Down Down Down Down Down",
                           "Page_Down", "Up Up Up Up Up Up Up Up Up Up Up Up"}) {
    desktop_.Key(keys);
    const std::string scrolled = picture();
    EXPECT_NE(scrolled, before);
    desktop_.Key("F5");
    before = picture();
    EXPECT_EQ(scrolled, before) << keys;
  }
}

TEST_F(Window, TerminationEndsItFromInsideAMenuOrAQuestion) {
  for (const char* key : {"Menu BackSpace", "Home Delete"}) {
    const std::string deck = desktop_.Deck("kept", "");
    const Copy copy = StartWith({deck});
    desktop_.Click(5, -5);  // the mouse is away from the menu
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

TEST_F(Window, ColumnsAreResizedByDragging) {
  constexpr int kMessageColumn = 6;  // its cells open a message box while the job is queued
  constexpr int kBy = 60;            // less than that column's width
  const int x = Layout::ColumnX(kMessageColumn) + 20;
  const int y = Layout::RowY(0, Layout::kColumnsWindowWidth);
  StartWith({desktop_.Deck("columns", "")});
  desktop_.Resize(Layout::kColumnsWindowWidth, Layout::kWindowHeight);
  desktop_.Click(x, y);
  EXPECT_TRUE(desktop_.Answer("Return"));
  const int edge = Layout::ColumnX(1) - 1;
  const int headY = Layout::TableY(Layout::kColumnsWindowWidth) + Layout::kHeaderHeight / 2;
  desktop_.Drag(edge, headY, edge + kBy, headY);
  desktop_.Click(x, y);
  usleep(700000);
  EXPECT_TRUE(desktop_.Windows("KestrunMessage", 0).empty()) << "the column has not moved";
  desktop_.Click(x + kBy, y);
  EXPECT_TRUE(desktop_.Answer("Return"));
}

TEST_F(Window, FileChooserOpensOverTheWindowForEnabledSolversOnly) {
  const Copy other = StartWith({"#solver=inc"});
  desktop_.Key("ctrl+o");
  usleep(700000);
  EXPECT_TRUE(desktop_.Windows("KestrunChooser", 0).empty());
  desktop_.Key("ctrl+q");
  ASSERT_EQ(desktop_.WaitExit(other, 10), 0);

  const Copy copy = StartWith({});
  // A chooser that a tool button has opened gives the keys back to the table.
  ClickTool(Layout::kAddDyna);
  ASSERT_FALSE(desktop_.Windows("KestrunChooser").empty());
  desktop_.Key("Escape");
  usleep(500000);
  desktop_.Key("space");
  usleep(700000);
  EXPECT_TRUE(desktop_.Windows("KestrunChooser", 0).empty());
  desktop_.Key("ctrl+o");
  const std::vector<std::string> choosers = desktop_.Windows("KestrunChooser");
  ASSERT_FALSE(choosers.empty());
  const Area chooser = desktop_.AreaOf(choosers.front());
  const Area window = desktop_.AreaOf(desktop_.Main());
  EXPECT_NEAR(chooser.x + chooser.w / 2, window.x + window.w / 2, 30);
  EXPECT_NEAR(chooser.y + chooser.h / 2, window.y + window.h / 2, 30);
  // Ending the program from inside the chooser adds nothing.
  kill(copy.pid, SIGTERM);
  EXPECT_EQ(desktop_.WaitExit(copy, 5), 0);
}

TEST_F(Window, SurvivesEverySize) {
  const std::string deck = desktop_.Deck("sized", "");
  const Copy copy = StartWith({deck});
  const std::string window = desktop_.ActiveWindow();
  for (const char* size : {"700 320", "1270 760", "701 760", "1270 320"}) {
    desktop_.Command("xdotool windowsize --sync " + window + " " + size);
    desktop_.Key("Home ctrl+t ctrl+Tab F5");
  }
  EXPECT_TRUE(Desktop::Runs(copy));
  desktop_.Key("ctrl+Return ctrl+Tab ctrl+Return ctrl+Tab ctrl+Return");
  EXPECT_TRUE(Desktop::Runs(copy));
}

}  // namespace
