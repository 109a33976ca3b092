// The whole program as a process on a desktop: what needs a second copy, another user, real drags
// and keys, signals, or the end of the display. Widgets are reached by keys, windows found by
// class.

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <regex>
#include <string>

#include "util/process/ProcessTable_posix.h"
#include "window/ProgramFixture.h"

namespace {

TEST_F(ProgramTest, OptionsSubmitReportAndQuit) {
  const std::string good = Deck("good", "run 1"), bad = Deck("bad", "fail");
  const std::string report = scratch_ / "report.txt";
  const std::string submit = "--submit --report=" + report, quit = " --quit-when-done ";
  Copy copy = StartCopy("--report=" + report + quit + good);
  EXPECT_EQ(WaitExit(copy), 8);
  EXPECT_EQ(TempFolder::Read(copy.output),
            "--report and --quit-when-done need --submit; nothing is queued\n");
  copy = StartCopy(submit + quit + good);
  EXPECT_EQ(WaitExit(copy, kRun), 0) << TempFolder::Read(copy.output);
  const std::string time = "[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9:]{8}";
  std::string text = TempFolder::Read(report);
  EXPECT_TRUE(
      std::regex_match(text, std::regex(good + "\tFinished\tLS-DYNA \\(S\\)\t" + KeptMessage(good) +
                                        "\t" + time + "\t" + time + "\t[1-9]\n")))
      << text;

  // A second copy has no run of its own. The report that the settings ask for is not lost.
  const std::string asked = scratch_ / "asked.txt";
  Command("sed -i 's,^pause_time,report_file=" + asked + "\\n&,' " + scratch_ / "home/config" +
          "/*/*/kr_init.config");
  copy = Start(submit + quit + bad + " " + good);
  EXPECT_EQ(WaitExit(StartCopy("--submit " + good)), 8);
  EXPECT_EQ(WaitExit(copy, kRun), 4) << TempFolder::Read(copy.output);
  text = TempFolder::Read(report);
  EXPECT_EQ(text.rfind(bad + "\tAborted\tLS-DYNA (S)\t", 0), 0U) << text;
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 2) << text;
  EXPECT_EQ(TempFolder::Read(asked), text);
  std::filesystem::remove(asked);
  std::filesystem::create_directory(asked);
  copy = StartCopy("--submit" + quit + good);
  EXPECT_EQ(WaitExit(copy, kRun), 4);
  EXPECT_EQ(TempFolder::Read(copy.output), "Write report file [" + asked + "] failed\n");
  std::filesystem::remove(asked);

  // What is not Finished when the program has to end, and a report that cannot be written.
  std::filesystem::remove(report);
  std::filesystem::create_directory(report);
  copy = StartCopy(submit + " " + Deck("long", "run 60"));
  ASSERT_TRUE(WaitUntil([&] { return SolverRuns("long.k"); }));
  kill(copy.pid, SIGTERM);
  EXPECT_EQ(WaitExit(copy), 4);
  EXPECT_EQ(TempFolder::Read(copy.output), "Write report file [" + report + "] failed\n");
  EXPECT_EQ(Groups(), "Group1=\n");

  // Nobody reads what it prints.
  for (const std::string output : {"<&- >&- 2>&-", "2> >(true)"}) {
    copy = StartCopy(submit + quit + Deck("unread", "run 3"), "home",
                     "bash -c 'exec \"$0\" \"$@\" " + output + "'");
    ASSERT_TRUE(WaitUntil([&] { return SolverRuns("unread.k"); }, kRun));
    const std::string printed = "/proc/" + std::to_string(copy.pid) + "/fd/2";
    EXPECT_FALSE(std::filesystem::is_regular_file(printed))
        << "the text would damage a file of ours";
    EXPECT_EQ(WaitExit(copy, kRun), 4) << output;
  }
}

TEST_F(ProgramTest, SecondCopyHandsItsJobOverAndRaisesTheWindow) {
  const std::string own = Deck("own"), handed = Deck("handed");
  Start(own);
  Spawn("xterm -e sleep 60", "xterm.log");
  const auto active = [&] { return ActiveWindow() == main_; };
  ASSERT_TRUE(WaitUntil([&] { return !active(); }));
  const Copy second = StartCopy(handed);
  EXPECT_EQ(WaitExit(second), 0) << TempFolder::Read(second.output);
  EXPECT_TRUE(WaitUntil(active));
  EXPECT_TRUE(RunUntilAllHaveRun({own, handed}));
}

TEST_F(ProgramTest, TwoUsersEachHaveTheirOwn) {
  if (geteuid() != 0) GTEST_SKIP() << "needs root to become another user";
  const std::string nobody = "setpriv --reuid=65534 --regid=65534 --clear-groups";
  if (Command(nobody + " test -x " KR_TEST_BIN_DIR "/kestrun && echo yes").empty())
    GTEST_SKIP() << "another user cannot reach the program";
  const Copy mine = Start("");
  const Copy theirs = StartCopy("", "other", nobody);
  EXPECT_TRUE(WaitUntil([&] {
    return Command("xdotool search --onlyvisible --class '^Kestrun$' | wc -l") == "2";
  })) << TempFolder::Read(theirs.output);
  for (const Copy& copy : {mine, theirs}) EXPECT_EQ(waitpid(copy.pid, nullptr, WNOHANG), 0);
}

// Nobody said stop: the solver runs on, and the next start goes on with it.
TEST_F(ProgramTest, ALostDisplayAndAHangUpLeaveTheSolverToTheNextStart) {
  const std::string deck = Deck("long", "run 60");
  const Copy copy = Start("--submit " + deck);
  ASSERT_TRUE(WaitUntil([&] { return SolverRuns("long.k"); }));
  Key("ctrl+t");
  Command("xdotool windowkill " + main_);  // ends the connection
  EXPECT_EQ(WaitExit(copy), 1);
  EXPECT_EQ(Groups(), "Group1=\nGroup2=\n");
  EXPECT_TRUE(SolverRuns("long.k"));

  const Copy second = Start("--restore");
  kill(second.pid, SIGHUP);
  EXPECT_GE(WaitExit(second), 0);
  EXPECT_TRUE(SolverRuns("long.k"));

  const Copy third = Start("--restore");
  kill(third.pid, SIGTERM);
  EXPECT_GE(WaitExit(third), 0);
  EXPECT_FALSE(SolverRuns("long.k")) << "the one that was taken over is stopped like any other";
}

TEST_F(ProgramTest, AScriptDoesNotStopWhatTheLastSessionLeftRunning) {
  std::string settings = TempFolder::Read(Settings());
  settings.insert(settings.find('\n') + 1, "keep_jobs=2\n");
  std::ofstream(Settings()) << settings;
  const std::string left = Deck("left", "run 8");
  const Copy copy = Start("--submit " + left);
  ASSERT_TRUE(WaitUntil([&] { return SolverRuns("left.k"); }));
  Key("ctrl+t");
  Command("xdotool windowkill " + main_);
  EXPECT_EQ(WaitExit(copy), 1);
  const Copy script = StartCopy("--submit --quit-when-done " + Deck("own", "run 1"));
  EXPECT_EQ(WaitExit(script, kRun), 0) << TempFolder::Read(script.output);
  EXPECT_TRUE(std::filesystem::exists(KeptMessage(left)));
  EXPECT_NE(TempFolder::Read(KeptMessage(left)).find("N o r m a l"), std::string::npos);
}

// Its second stage runs, has started a process in a session of its own, and obeys no signal.
TEST_F(ProgramTest, HoweverItEndsNothingOfAStageIsLeft) {
  const auto quit = [this](const Copy&) {
    Key("ctrl+q");
    Answer("KestrunMessage", "Tab Return");  // "No" comes first while a job runs
  };
  const auto quitAndLogOut = [&](const Copy& copy) {
    quit(copy);
    kill(copy.pid, SIGHUP);
  };
  const auto quitAndLoseDisplay = [&](const Copy& copy) {
    quit(copy);
    Command("xdotool windowkill " + main_);
  };
  const struct {
    const char* name;
    const char* options;
    std::function<void(const Copy& copy)> end;
  } ways[] = {
      {"term", "", [](const Copy& copy) { kill(copy.pid, SIGTERM); }},
      {"int", "", [](const Copy& copy) { kill(copy.pid, SIGINT); }},
      {"both", "",
       [](const Copy& copy) {
         for (const int signal : {SIGSTOP, SIGHUP, SIGTERM, SIGCONT}) kill(copy.pid, signal);
       }},
      {"script", "--quit-when-done ", [](const Copy& copy) { kill(copy.pid, SIGTERM); }},
      {"quit", "", quit},
      {"logout", "", quitAndLogOut},
      {"display", "", quitAndLoseDisplay},
  };
  for (const auto& way : ways) {
    const std::string name = way.name;
    Deck(name);
    scratch_.Write(name + "/one.k", "*KEYWORD\n*END\n");
    const std::string deck =
        scratch_.Write(name + "/main.k", "$ RUNFIRST: 1\n*KEYWORD\n*INCLUDE\none.k\n*INCLUDE\n" +
                                             name + ".k\n*END\n");
    scratch_.Write(name + "/" + name + ".k",
                   "*KEYWORD\n$ standin: run 60\n$ standin: child\n$ standin: ignore-term\n*END\n");
    const Copy copy = Start(std::string("--submit ") + way.options + deck);
    const std::string file = scratch_ / (name + "/standin_child.pid");
    ASSERT_TRUE(WaitUntil([&] { return TempFolder::Read(file).ends_with("\n"); }, kRun)) << name;
    const pid_t left = std::stoi(TempFolder::Read(file));
    EXPECT_EQ(kill(left, 0), 0);
    EXPECT_TRUE(SolverRuns(name + ".k"));
    way.end(copy);
    EXPECT_GE(WaitExit(copy), 0) << name;
    EXPECT_FALSE(SolverRuns(name + ".k")) << name;
    const auto child = ReadProcess(left);
    EXPECT_FALSE(child && child->IsAlive()) << name;
  }
}

TEST_F(ProgramTest, JobsThatCannotBeHandedOverAreTold) {
  std::filesystem::create_directories(HandOver());
  const std::string deck = Deck("refused");
  const Copy script = StartCopy("--submit --quit-when-done " + deck);
  EXPECT_EQ(WaitExit(script), 9);
  const Copy copy = Start(deck);
  for (const Copy& one : {script, copy}) {
    EXPECT_EQ(TempFolder::Read(one.output), "Hand-over file [" + HandOver() +
                                                "] refused\nWrite tmp file [" + HandOver() +
                                                "] failed\n");
  }
  kill(copy.pid, SIGTERM);
  EXPECT_EQ(WaitExit(copy), 9);
  std::filesystem::remove(HandOver());
  const Copy empty = StartCopy("--submit --quit-when-done ''");
  EXPECT_EQ(WaitExit(empty), 9);
  EXPECT_EQ(TempFolder::Read(empty.output), "An argument is empty; no job was made of it\n");
  // Ended before it had a window.
  const Copy early = StartCopy(deck);
  EXPECT_TRUE(WaitUntil([&] { return std::filesystem::exists(HandOver()); }));
  kill(early.pid, SIGTERM);
  EXPECT_EQ(WaitExit(early), 9);
  EXPECT_NE(TempFolder::Read(early.output).find("they are not queued"), std::string::npos);
}

TEST_F(ProgramTest, TerminationEndsItFromInsideAMenuMessageOrChooser) {
  for (const char* key : {"Menu BackSpace", "Delete", "ctrl+o"}) {
    const Copy copy = Start("");
    Command("xdotool mousemove 0 0");  // away from the menu
    const auto windows = [&] { return Command("xwininfo -root -children"); };
    const std::string before = windows();
    Key(key);
    EXPECT_TRUE(WaitUntil([&] { return windows() != before; })) << key;
    kill(copy.pid, SIGTERM);
    EXPECT_EQ(WaitExit(copy), 0) << key;
    EXPECT_EQ(Groups(), "Group1=\n");
  }
}

TEST_F(ProgramTest, OutlivesItsTerminalUnderNohup) {
  const Copy copy = StartCopy("", "home", "nohup");
  ASSERT_TRUE(Activate());
  kill(copy.pid, SIGHUP);
  Key("F2");
  Opened("KestrunDialog");
  kill(copy.pid, SIGTERM);
  EXPECT_EQ(WaitExit(copy), 0);
}

TEST_F(ProgramTest, TakesDroppedFilesAndFolders) {
  const std::string file = Deck("a file"), deck = Deck("folder");
  Start("");
  std::string address = "file://" + file;
  for (std::size_t at; (at = address.find(' ')) != std::string::npos;)
    address.replace(at, 1, "%20");
  Spawn(KR_TEST_BIN_DIR "/drag_source " + address + " file://" + FolderOf(deck) + " file:///gone.k",
        "source.log");
  ASSERT_TRUE(WaitUntil([&] { return !Window("DragSource").empty(); }));
  Drag(Window("DragSource"), main_);
  Answer("KestrunMessage", "Return");  // one of the files does not exist
  ASSERT_TRUE(Activate());
  EXPECT_TRUE(RunUntilAllHaveRun({file, deck}));
}

TEST_F(ProgramTest, SpeaksTheLanguageOfItsSettings) {
  std::string settings = TempFolder::Read(Settings());
  settings.insert(settings.find('\n') + 1, "language=1\n");
  std::ofstream(Settings()) << settings;
  Start("");
  Key("F2");
  EXPECT_EQ(TitleOf(Opened("KestrunDialog")), "重命名任务组");
}

// Every solver kind, and what became of the token of INC jobs.
TEST_F(ProgramTest, TheDemoEndsAsItsDecksSayAndTellsNoToken) {
  const std::string& scratch = scratch_.Path();
  const std::string output = scratch + "/demo.txt", picture = scratch + "/demo.png";
  const std::string command = "env -u DISPLAY TMPDIR='" + scratch + "' KR_SCREENSHOT='" + picture +
                              "' bash " KR_SOURCE_DIR "/tools/demo.sh " KR_TEST_BIN_DIR " >'" +
                              output + "' 2>&1";
  EXPECT_EQ(std::system(command.c_str()), 0) << TempFolder::Read(output);
  EXPECT_TRUE(std::filesystem::exists(picture));
  std::string withToken;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(scratch)) {
    if (entry.is_regular_file() &&
        TempFolder::Read(entry.path().string()).find("demo.0123456789") != std::string::npos)
      withToken += entry.path().filename().string() + " ";
  }
  EXPECT_EQ(withToken, "kr_init.config ");
}

}  // namespace
