#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <sstream>

#include "support/ScopedVariable.h"
#include "support/TempFolder.h"
#include "support/VirtualDisplay_posix.h"
#include "TestChild.h"
#include "util/files/FileDirWrapper.h"
#include "util/files/UniqueFd_posix.h"
#include "util/process/ChildStart_posix.h"
#include "util/process/ConsoleLines.h"
#include "util/process/ProcessTable_posix.h"
#include "util/process/PTWrapper.h"

namespace {

using std::chrono::seconds;
using Clock = std::chrono::steady_clock;

std::vector<int> NumbersIn(const std::string& file) {
  std::istringstream text(TempFolder::Read(file));
  std::vector<int> numbers;
  for (int number = 0; text >> number;) numbers.push_back(number);
  return numbers;
}

bool IsAlive(pid_t pid) {
  const std::optional<ProcessEntry> entry = ReadProcess(pid);
  return entry && entry->IsAlive();
}

// A loop in the shell's language that outlives any test, but not for ever: what a killed test run
// leaves behind ends by itself.
std::string Loop(const std::string& step) {
  return "for i in 0 1 2 3 4 5 6 7 8 9; do for j in 0 1 2 3 4 5 6 7 8 9; do for k in 0 1 2 3 4; "
         "do " +
         step + "; done; done; done\n";
}

PTWrapperProcessStart ScriptStart(const std::string& script) {
  PTWrapperProcessStart start;
  start.commandLine = "/bin/sh \"" + script + "\"";
  start.title = "A title; 'of' $HOME";
  start.showWindow = false;
  return start;
}

bool StartScript(PTWrapperProcess& process, const std::string& script) {
  return process.Create(ScriptStart(script));
}

// What a console file holds beside its first line.
std::string Kept(const std::string& file) {
  const std::string text = TempFolder::Read(file);
  EXPECT_TRUE(text.empty() || text.starts_with(kConsoleNote)) << text.substr(0, 200);
  return text.substr(std::min(text.find('\n'), text.size() - 1) + 1);
}

TEST(ProcessPosix, ChildIsCutOffFromUs) {
  const TempFolder folder;
  const std::string script = folder.Write(
      "look.sh",
      "ls /proc/self/fd | tr '\\n' ' '; readlink /proc/$$/fd/0; grep SigBlk /proc/self/status;"
      "grep SigIgn /proc/self/status; cut -d' ' -f6 /proc/$$/stat; echo $$");
  const int stray = open("/dev/null", O_RDONLY);  // inheritable on purpose
  signal(SIGUSR1, SIG_IGN);
  PTWrapperProcess process;
  PTWrapperProcessStart start = ScriptStart(script);
  start.outputFile = folder / "out";
  ASSERT_TRUE(process.Create(start));
  ASSERT_TRUE(process.WaitProc());
  signal(SIGUSR1, SIG_DFL);
  close(stray);
  std::istringstream lines(Kept(folder / "out"));
  std::string line, session, pid;
  std::getline(lines, line);
  EXPECT_EQ(line, "0 1 2 3 /dev/null");  // 3 is the listing itself
  std::getline(lines, line);
  EXPECT_EQ(line, "SigBlk:\t0000000000000000");
  std::getline(lines, line);
  // But for the two that the C library keeps for itself.
  EXPECT_EQ(std::stoull(line.substr(8), nullptr, 16) & ~0x180000000ull, 0u);
  std::getline(lines, session);
  std::getline(lines, pid);
  EXPECT_EQ(session, pid);
}

TEST(ProcessPosix, ExitStateOfASignalAndNoZombies) {
  const TempFolder folder;
  PTWrapperProcess process;
  ASSERT_TRUE(StartScript(process, folder.Write("die.sh", "kill -9 $$")));
  ASSERT_TRUE(WaitUntil([&] { return !process.IsActive(); }));
  EXPECT_EQ(process.ExitCode(), 128 + SIGKILL);

  pid_t left = 0;
  {
    PTWrapperProcess forgotten;
    ASSERT_TRUE(StartScript(forgotten, folder.Write("short.sh", "sleep 0.2")));
    left = forgotten.ChildId();
  }
  EXPECT_TRUE(IsAlive(left)) << "the destructor leaves it alone";
  EXPECT_TRUE(WaitUntil([&] {
    process.IsActive();  // any use collects those that were let go
    return !ReadProcess(left);
  }));
}

// Each of them ignores the polite signal. One has left the session and lost its parent, one has no
// environment, one is stopped.
TEST(ProcessPosix, TerminateEndsEverythingThatItStarted) {
  const TempFolder folder;
  const std::string pids = folder / "pids";
  const std::string stubborn = folder.Write(
      "stubborn.sh", "trap '' TERM HUP INT; echo $$ >> " + pids + "; " + Loop("sleep 0.1"));
  const std::string script =
      folder.Write("tree.sh", "trap '' TERM\n(setsid /bin/sh " + stubborn +
                                  " &)\nenv -i setsid /bin/sh " + stubborn + " &\n/bin/sh " +
                                  stubborn + " & kill -STOP $!\nexec /bin/sh " + stubborn);
  PTWrapperProcess process;
  ASSERT_TRUE(StartScript(process, script));
  ASSERT_TRUE(WaitUntil([&] { return NumbersIn(pids).size() >= 3; }));
  const Clock::time_point begin = Clock::now();
  EXPECT_TRUE(process.Terminate());
  EXPECT_LT(Clock::now() - begin, seconds(10));
  for (const pid_t pid : NumbersIn(pids)) EXPECT_FALSE(IsAlive(pid)) << pid;
}

// It has lost its parent, its session and all of its variables.
class DaemonPosix : public testing::Test {
 protected:
  void Start(const std::string& last) {
    const std::string daemon =
        folder.Write("daemon.sh", "trap '' TERM HUP; echo $$ > " + pid + "; " + Loop("sleep 0.1"));
    start = ScriptStart(folder.Write("solver.sh", "(env -i setsid /bin/sh " + daemon +
                                                      " &)\nwhile test ! -s " + pid +
                                                      "; do sleep 0.05; done\n" + last));
    start.creationFlags = PTWrapperProcess::kNewConsole;
    start.console.host = KR_TEST_BIN_DIR "/krconsole";
    ASSERT_TRUE(process.Create(start));
    ASSERT_TRUE(WaitUntil([&] { return NumbersIn(pid).size() == 1; }));
  }
  void TearDown() override {
    for (const pid_t left : NumbersIn(pid)) kill(left, SIGKILL);
  }

  TempFolder folder;
  const std::string pid = folder / "pid";
  PTWrapperProcessStart start;
  PTWrapperProcess process;
};

TEST_F(DaemonPosix, IsEndedByAStop) {
  Start("sleep 30");
  EXPECT_TRUE(process.Terminate());
  EXPECT_FALSE(IsAlive(NumbersIn(pid).front()));
}

TEST_F(DaemonPosix, IsLeftAloneByANormalEnd) {
  Start("exit 3");
  EXPECT_TRUE(process.WaitProc());
  EXPECT_EQ(process.ExitCode(), 3);
  EXPECT_TRUE(process.Terminate());
  EXPECT_TRUE(IsAlive(NumbersIn(pid).front()));
}

TEST_F(DaemonPosix, IsEndedByWhoOpensTheProcess) {
  Start("sleep 30");
  PTWrapperProcess other;
  ASSERT_TRUE(other.Open(process.ChildId()));
  PTWrapperProcess watcher;
  ASSERT_TRUE(watcher.Open(process.ChildId()));
  EXPECT_TRUE(other.Terminate());
  EXPECT_FALSE(IsAlive(NumbersIn(pid).front()));
  EXPECT_FALSE(watcher.IsActive());
  EXPECT_EQ(watcher.ExitCode(), PTWrapperProcess::kUnknownExitCode);
}

// Its parent is a host that it was not started by.
TEST_F(DaemonPosix, DoesNotLeadToTheRunAroundIt) {
  Start("sleep 30");
  PTWrapperProcess inner;
  ASSERT_TRUE(inner.Open(NumbersIn(pid).front()));
  EXPECT_TRUE(inner.Terminate());
  EXPECT_FALSE(IsAlive(NumbersIn(pid).front()));
  EXPECT_TRUE(process.IsActive());
  EXPECT_TRUE(process.Terminate());
}

TEST(ProcessPosix, OnlyAWholeTokenLeadsToWhatWasStarted) {
  const TempFolder folder;
  const std::string script = folder.Write("run.sh", "exec sleep 30");
  PTWrapperProcess first, second;
  ASSERT_TRUE(StartScript(first, script));
  ASSERT_TRUE(StartScript(second, script));
  std::string here;
  FileDirWrapper::CurrentDir(here);
  const std::string token = second.Token();
  EXPECT_TRUE(WaitUntil(  // a program that is just becoming another shows no variables
      [&] { return PTWrapperProcess::FindStarted(token, here) == second.ChildId(); }));
  for (const std::string& part : {token.substr(1), token.substr(0, 31), ':' + token,
                                  std::string("KR_RUN="), std::string("="), std::string()}) {
    EXPECT_EQ(PTWrapperProcess::FindStarted(part, here), 0) << part;
  }
  PTWrapperProcess opened;
  ASSERT_TRUE(opened.Open(IdentityOfProcess(first.ChildId()), "="));
  EXPECT_TRUE(opened.Terminate());
  EXPECT_FALSE(first.IsActive());
  EXPECT_TRUE(second.IsActive()) << "another run's";
  EXPECT_TRUE(first.Terminate() && second.Terminate());
}

// Like the ranks of a launcher that was killed: one beside it, one in a session of its own, and one
// without the environment that it was given.
TEST(ProcessPosix, WhatADeadLauncherLeftRunsOnUntilAllIsToEnd) {
  const TempFolder folder;
  const std::string pids = folder / "pids";
  const std::string rank =
      folder.Write("rank.sh", "trap '' TERM HUP; echo $$ >> " + pids + "; " + Loop("sleep 0.1"));
  const std::string launcher =
      folder.Write("launcher.sh", "/bin/sh " + rank + " & setsid /bin/sh " + rank +
                                      " & env -i /bin/sh " + rank + " &\nwhile test \"$(wc -l < " +
                                      pids + ")\" != 3; do sleep 0.05; done\nkill -9 $$");
  const auto start = [&](PTWrapperProcess& process) {
    folder.Write("pids", "");
    ASSERT_TRUE(StartScript(process, launcher));
    ASSERT_TRUE(WaitUntil([&] { return !process.IsActive(); }));
    ASSERT_EQ(NumbersIn(pids).size(), 3u);
  };
  PTWrapperProcess process;
  start(process);
  EXPECT_TRUE(process.Terminate());
  const std::vector<int> spared = NumbersIn(pids);
  start(process);
  const Clock::time_point begin = Clock::now();
  EXPECT_TRUE(process.TerminateAll());
  EXPECT_LT(Clock::now() - begin, seconds(10));
  for (const pid_t pid : NumbersIn(pids)) EXPECT_FALSE(IsAlive(pid)) << pid;
  for (const pid_t pid : spared) {
    EXPECT_TRUE(IsAlive(pid)) << "another run's";
    kill(pid, SIGKILL);
  }
}

TEST(ProcessPosix, TerminateAsksFirst) {
  const TempFolder folder;
  const std::string script =
      folder.Write("polite.sh", "trap 'sleep 0.2; echo saved > saved; exit 0' TERM\necho > up\n" +
                                    Loop("sleep 0.05"));
  PTWrapperProcess process;
  const InFolder back(folder.Path());
  ASSERT_TRUE(StartScript(process, script));
  ASSERT_TRUE(WaitUntil([] { return FileDirWrapper::FileExists("up"); }));
  EXPECT_TRUE(process.Terminate());
  EXPECT_TRUE(FileDirWrapper::FileExists("saved"));
}

TEST(ProcessPosix, TerminateOutrunsProgramsThatKeepStartingOthers) {
  const TempFolder folder;
  const std::string pids = folder / "pids";
  const std::string script = folder / "again.sh";
  folder.Write("again.sh", "trap '' TERM\necho $$ >> " + pids + "\nsleep 0.05\n(setsid /bin/sh " +
                               script + " &)\nsleep 0.3");
  PTWrapperProcess process;
  ASSERT_TRUE(StartScript(process, folder.Write("first.sh", "/bin/sh " + script + "; sleep 30")));
  ASSERT_TRUE(WaitUntil([&] { return NumbersIn(pids).size() >= 5; }));
  EXPECT_TRUE(process.Terminate());
  const std::string search = "pgrep -f '^/bin/sh " + (folder / "[a]gain.sh") + "'";
  EXPECT_NE(std::system(search.c_str()), 0) << "no process of the script is left";
}

TEST(ProcessPosix, OutputFollowsNoLinksAndHostileFilesStopNothing) {
  const TempFolder folder;
  const std::string script = folder.Write("talk.sh", "echo hello");
  const auto runTo = [&](const std::string& target) {
    PTWrapperProcess process;
    PTWrapperProcessStart start = ScriptStart(script);
    start.outputFile = target;
    ASSERT_TRUE(process.Create(start)) << target;
    EXPECT_TRUE(process.WaitProc());
    EXPECT_EQ(process.ExitCode(), 0);
  };
  ASSERT_EQ(mkfifo((folder / "fifo").c_str(), 0600), 0);
  for (const char* hostile : {"fifo", "", "no/such/folder"}) runTo(folder / hostile);
  folder.Write("kept", "precious");
  folder.Write("own", "mine");
  std::filesystem::create_symlink("kept", folder / "symbolic");
  std::filesystem::create_hard_link(folder / "kept", folder / "hard");
  for (const char* name : {"symbolic", "hard", "own", "own"}) {
    runTo(folder / name);
    EXPECT_EQ(Kept(folder / name), "hello\n") << name;
    EXPECT_EQ(TempFolder::Read(folder / "kept"), "precious") << name;
  }
  EXPECT_EQ(TempFolder::Read(folder / "own.old1"), "mine");
  EXPECT_FALSE(FileDirWrapper::FileExists(folder / "own.old2"));
}

TEST(ProcessPosix, ExitStatesArriveWhereOurParentWantedNone) {
  const auto before = signal(SIGCHLD, SIG_IGN);
  PTWrapperProcess process;
  EXPECT_TRUE(StartTestChild(process, "exit 7"));
  EXPECT_TRUE(process.WaitProc());
  EXPECT_EQ(process.ExitCode(), 7);
  signal(SIGCHLD, before);
}

TEST(ProcessPosix, BackslashesLeadToTheProgramAndToItsOutput) {
  const TempFolder folder;
  const InFolder back(folder.Path());
  std::filesystem::create_directory("bin");
  std::filesystem::copy_file("/bin/sh", "bin/shell");
  PTWrapperProcess process;
  PTWrapperProcessStart start;
  start.program = R"(bin\shell)";
  start.commandLine = "sh -c pwd";
  start.folder = R"(bin\..\bin)";
  start.outputFile = R"(bin\out)";
  ASSERT_TRUE(process.Create(start));
  EXPECT_TRUE(process.WaitProc());
  EXPECT_EQ(Kept("bin/out"), (folder / "bin") + "\n");
}

class ConsolePosix : public testing::Test {
 protected:
  static void SetUpTestSuite() { screen = std::make_unique<VirtualDisplay>("800x600"); }
  static void TearDownTestSuite() { screen.reset(); }
  void SetUp() override {
    if (screen->Name().empty() || FindProgram("xterm").empty()) GTEST_SKIP() << "no Xvfb or xterm";
  }
  void TearDown() override { process.Terminate(); }

  // Waits for the script's sign that it runs, the file "up".
  void StartInTerminal(const std::string& lines) {
    const std::string script = "cd \"" + folder.Path() + "\"; " + lines;
    ASSERT_TRUE(process.Create(InTerminal(folder.Write("run.sh", script))));
    ASSERT_TRUE(WaitUntil([&] { return FileDirWrapper::FileExists(folder / "up"); }));
  }

  PTWrapperProcessStart InTerminal(const std::string& script) const {
    PTWrapperProcessStart start = ScriptStart(script);
    start.creationFlags = PTWrapperProcess::kNewConsole;
    start.showWindow = true;
    start.outputFile = folder / "out";
    start.console.host = KR_TEST_BIN_DIR "/krconsole";
    return start;
  }

  // Among what this test program started; others on this machine may have such programs too.
  static pid_t Find(const std::string& name) {
    const std::optional<std::vector<ProcessEntry>> processes = ListProcesses();
    if (!processes) return 0;
    for (const ProcessEntry& process : *processes) {
      if (ExecutableName(process) == name && IsOurs(process)) return process.key.pid;
    }
    return 0;
  }
  static bool IsOurs(ProcessEntry process) {
    while (process.parent > 1 && process.parent != getpid()) {
      const std::optional<ProcessEntry> parent = ReadProcess(process.parent);
      if (!parent) return false;
      process = *parent;
    }
    return process.parent == getpid();
  }

  static std::unique_ptr<VirtualDisplay> screen;
  const ScopedVariable display{"DISPLAY", screen->Name()};
  TempFolder folder;
  PTWrapperProcess process;
};
std::unique_ptr<VirtualDisplay> ConsolePosix::screen;

TEST_F(ConsolePosix, RunsInATerminalWithItsFolderAndVariables) {
  const ScopedVariable word("KR_WORD", "ours");
  const std::string script = folder.Write(
      "look.sh", "test -t 0 && test -t 1 && echo \"$KR_WORD${KR_OTHER-not set} $TERM\" > \"" +
                     (folder / "seen") + "\"; pwd > where\n" +
                     Loop("test -e go && exit 42; sleep 0.05"));
  PTWrapperProcessStart start = InTerminal(script);
  start.folder = folder.Path();
  start.variables = {{"KR_OTHER", ""}, {"KR_WORD", "a b"}};
  ASSERT_TRUE(process.Create(start));
  EXPECT_TRUE(process.IsActive());
  EXPECT_TRUE(ReadProcess(process.ChildId()));
  if (!FindProgram("xwininfo").empty()) {
    EXPECT_TRUE(WaitUntil([] {
      return std::system("xwininfo -name \"A title; 'of' \\$HOME\" >/dev/null 2>&1") == 0;
    }));
  }
  folder.Write("go", "");
  EXPECT_TRUE(process.WaitProc());
  EXPECT_EQ(process.ExitCode(), 42);
  EXPECT_EQ(TempFolder::Read(folder / "seen"), "a b xterm\n");
  EXPECT_EQ(TempFolder::Read(folder / "where"), folder.Path() + "\n");
  EXPECT_EQ(Kept(folder / "out"), "");
  EXPECT_TRUE(WaitUntil([&] {
    process.IsActive();
    return Find("xterm") == 0 && Find("krconsole") == 0;
  }));
}

TEST_F(ConsolePosix, TerminateLetsTheSolverFinishAndClosesTheWindow) {
  StartInTerminal("trap 'sleep 0.2; echo > saved; exit 0' TERM\necho > up\n" + Loop("sleep 0.05"));
  const pid_t terminal = Find("xterm");
  ASSERT_GT(terminal, 0);
  EXPECT_TRUE(process.Terminate());
  EXPECT_TRUE(FileDirWrapper::FileExists(folder / "saved"));
  EXPECT_FALSE(IsAlive(terminal));
  EXPECT_EQ(Find("krconsole"), 0);
}

TEST_F(ConsolePosix, FollowsTheSolverWhenItsConsoleIsKilled) {
  StartInTerminal("trap '' HUP TERM\necho > up\nsleep 1\nexit 0");
  const pid_t host = Find("krconsole");
  ASSERT_GT(host, 0);
  kill(host, SIGKILL);
  ASSERT_TRUE(WaitUntil([&] { return !IsAlive(host); }));
  EXPECT_TRUE(process.IsActive());
  EXPECT_TRUE(process.WaitProc());
  EXPECT_EQ(process.ExitCode(), PTWrapperProcess::kUnknownExitCode);
}

TEST_F(ConsolePosix, ATerminalThatStartsItsProgramAgainIsEndedToo) {
  const std::string terminal = folder.WriteProgram(
      "again", "#!/bin/sh\ntrap '' TERM HUP\necho $$ > \"" + (folder / "terminal") +
                   "\"\nshift 3\n" + Loop("\"$@\"; sleep 5"));
  PTWrapperProcessStart start = InTerminal(folder.Write("run.sh", "exec sleep 30"));
  start.console.terminal = terminal;
  ASSERT_TRUE(process.Create(start));
  EXPECT_TRUE(process.Terminate());
  for (const pid_t pid : NumbersIn(folder / "terminal")) EXPECT_FALSE(IsAlive(pid));
  EXPECT_EQ(Find("krconsole"), 0);
}

// The first one started serves all windows, the others hand it theirs and end.
TEST_F(ConsolePosix, ATerminalWithSeveralWindowsLosesOnlyOne) {
  const std::string pipe = folder / "pipe", ids = folder / "terminal";
  const std::string terminal =
      folder.WriteProgram("server", "#!/bin/sh\nshift 3\ntest -p " + pipe + " && echo \"$@\" > " +
                                        pipe + " && exit\nmkfifo " + pipe + "\necho $$ > " + ids +
                                        "\nsetsid \"$@\" &\nexec 3<>" + pipe +
                                        "\nwhile read -r line <&3; do setsid $line & done\n");
  PTWrapperProcessStart start = InTerminal(folder.Write("run.sh", "exec sleep 30"));
  start.console.terminal = terminal;
  PTWrapperProcess other;
  ASSERT_TRUE(process.Create(start));
  ASSERT_TRUE(other.Create(start));
  const pid_t first = process.ChildId();
  EXPECT_TRUE(process.Terminate());
  EXPECT_FALSE(IsAlive(first));
  EXPECT_TRUE(other.IsActive());
  EXPECT_TRUE(other.Terminate());
  ASSERT_EQ(NumbersIn(ids).size(), 1u);
  EXPECT_EQ(kill(NumbersIn(ids).front(), SIGKILL), 0) << "it has ended";
}

TEST_F(ConsolePosix, ClosedWindowEndsTheSolver) {
  StartInTerminal("echo > up\n" + Loop("sleep 0.05"));
  const pid_t terminal = Find("xterm");
  ASSERT_GT(terminal, 0);
  kill(terminal, SIGKILL);
  EXPECT_TRUE(WaitUntil([&] { return !process.IsActive(); }));
  EXPECT_EQ(process.ExitCode(), 128 + SIGHUP);
}

TEST_F(ConsolePosix, WithoutATerminalTheOutputGoesToTheFile) {
  const std::string script = folder.Write("talk.sh", "echo hello; exit 5");
  const std::string broken = folder.WriteProgram("broken-terminal", "#!/bin/sh\nexit 3\n");
  const auto run = [&](const std::string& terminal) {
    std::filesystem::remove(folder / "out");
    PTWrapperProcessStart start = InTerminal(script);
    start.console.terminal = terminal;
    EXPECT_TRUE(process.Create(start));
    EXPECT_TRUE(process.WaitProc());
    EXPECT_EQ(process.ExitCode(), 5);
    EXPECT_TRUE(process.Terminate());
    return Kept(folder / "out");
  };
  for (const std::string& terminal : {std::string("kr-no-such-terminal"), broken}) {
    EXPECT_EQ(run(terminal), "hello\n") << terminal;
  }
  const pid_t bystander = Find("Xvfb");
  const ScopedVariable nowhere("DISPLAY", ":4711");
  EXPECT_EQ(run("xterm"), "hello\n");
  EXPECT_TRUE(IsAlive(bystander)) << "only what was started is ended";
}

TEST_F(ConsolePosix, KeepsWhatATerminalShows) {
  if (FindProgram("xdotool").empty()) GTEST_SKIP() << "no xdotool";
  const std::string size = folder / "size";
  const std::string script = folder.Write(
      "talk.sh", "stty size > " + size +
                     "\nprintf '\\033[1;31mred\\033[0m\\n 10%%\\r 20%%\\r100%%\\nend'\n" +
                     Loop("test \"$(stty size)\" != '24 80' && exit 4; sleep 0.05"));
  ASSERT_TRUE(process.Create(InTerminal(script)));
  ASSERT_TRUE(WaitUntil([&] { return TempFolder::Read(size) == "24 80\n"; }));
  EXPECT_EQ(std::system("xdotool search --sync --name \"A title; 'of'\" windowsize 300 200"), 0);
  EXPECT_TRUE(process.WaitProc());
  EXPECT_EQ(process.ExitCode(), 4) << "the program hears of the new size";
  EXPECT_EQ(Kept(folder / "out"), "red\n100%\nend\n");
}

// A terminal whose keys come from a pipe.
TEST_F(ConsolePosix, KeysReachTheProgram) {
  if (FindProgram("script").empty()) GTEST_SKIP() << "no script";
  const std::string keys = folder / "keys";
  ASSERT_EQ(mkfifo(keys.c_str(), 0600), 0);
  const std::string terminal =
      folder.Write("terminal", "#!/bin/sh\nshift 3\nexec script -qfec \"$*\" /dev/null < " + keys +
                                   " > " + (folder / "shown") + "\n");
  chmod(terminal.c_str(), 0700);
  PTWrapperProcessStart start = InTerminal(folder.Write(
      "ask.sh",
      "trap 'echo interrupted; exit 7' INT\nread word\necho \"got $word\"\n" + Loop("sleep 0.05")));
  start.console.terminal = terminal;
  UniqueFd typed(open(keys.c_str(), O_RDWR));
  ASSERT_TRUE(process.Create(start));
  ASSERT_EQ(write(typed.get(), "hello\n", 6), 6);
  ASSERT_TRUE(WaitUntil([&] { return Kept(folder / "out").find("got") != std::string::npos; }));
  ASSERT_EQ(write(typed.get(), "\x03", 1), 1);
  EXPECT_TRUE(process.WaitProc());
  EXPECT_EQ(process.ExitCode(), 7);
  EXPECT_EQ(Kept(folder / "out"), "hello\ngot hello\n^Cinterrupted\n");
  EXPECT_TRUE(TempFolder::Read(folder / "shown").find("got hello\r\n") != std::string::npos);
}

// Who is left behind goes on printing, which nobody waits for.
TEST_F(ConsolePosix, KeepsTheNewestOfALongOutput) {
  PTWrapperProcessStart start =
      InTerminal(folder.Write("talk.sh",
                              "seq -f '%08.0f and some more words to make it long' 1 500000\n"
                              "(trap '' HUP; " +
                                  Loop("echo left; sleep 0.05") + ") &\nexec 2>&-\nkill -9 $$"));
  start.showWindow = false;
  ASSERT_TRUE(process.Create(start));
  EXPECT_TRUE(process.WaitProc());
  EXPECT_EQ(process.ExitCode(), 128 + SIGKILL);
  const std::string text = TempFolder::Read(folder / "out");
  EXPECT_GT(text.size(), 8u << 20);
  EXPECT_LE(text.size(), 16u << 20);
  std::vector<std::string> lines = LastConsoleLines(folder / "out", 400000);
  std::erase(lines, "left");
  EXPECT_EQ(lines.back(), "00500000 and some more words to make it long");
  // Nothing is missing between the first line that is left and the last one.
  std::istringstream all(text);
  std::string line;
  long before = 0;
  while (std::getline(all, line)) {
    const long number = std::atol(line.c_str());
    if (number == 0) continue;
    ASSERT_TRUE(before == 0 || number == before + 1) << line;
    before = number;
  }
  EXPECT_EQ(before, 500000);
  EXPECT_TRUE(process.TerminateAll());
}

TEST_F(ConsolePosix, ProgramThatCannotRunIsReportedFromTheTerminal) {
  const std::string text = folder.Write("text.bin", "not a program");
  PTWrapperProcessStart start = InTerminal({});
  start.program = text;
  start.commandLine = "x";
  EXPECT_FALSE(process.Create(start));
  EXPECT_EQ(process.LastError(), "CreateProcess " + text + " x failed");
  EXPECT_FALSE(FileDirWrapper::FileExists(folder / "out"));
}

}  // namespace
