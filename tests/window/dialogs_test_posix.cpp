// The dialogs of settings and files, driven through real keys and clicks; what they store is looked
// up in the files afterwards.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "window/WindowFixture.h"

namespace {

class Dialogs : public WindowFixture {
 protected:
  void StartWith(const std::vector<std::string>& arguments) {
    copy_ = WindowFixture::StartWith(arguments);
  }

  void Quit() {
    desktop_.Key("ctrl+q");
    EXPECT_EQ(desktop_.WaitExit(copy_, 10), 0);
  }

  void OpenByTool(Action tool) {
    ClickTool(tool);
    FindDialog();
  }
  void OpenMpp() {
    desktop_.Click(kWidth - Layout::kMargin - 20,
                   Layout::ParameterRowY(kWidth) + Layout::kFieldHeight / 2);
    FindDialog();
  }
  void FindDialog() {
    const std::vector<std::string> ids = desktop_.Windows("KestrunDialog");
    ASSERT_FALSE(ids.empty());
    dialog_ = ids.front();
    ASSERT_TRUE(Desktop::WaitFor([&] { return desktop_.ActiveWindow() == dialog_; }, 5));
  }
  bool Closed() { return WindowFixture::Closed("KestrunDialog"); }

  // In the coordinates of the dialog's layout.
  void ClickIn(int x, int y) { WindowFixture::ClickIn(dialog_, x, y); }
  void TypeIn(int x, int y, const std::string& text) {
    ClickIn(x, y);
    desktop_.Key("ctrl+a");
    desktop_.Type(text);
    desktop_.Key("Tab");
  }
  // Opens a choice and goes from the entry that is chosen to another one.
  void Choose(int x, int y, const std::string& keys) {
    ClickIn(x, y);
    desktop_.Key(keys + " Return");
    usleep(200000);
  }

  bool Stored(const std::string& line) const {
    return ("\n" + Settings()).find("\n" + line + "\n") != std::string::npos;
  }
  std::string Log() const { return TempFolder::Read(desktop_.WorkFolder() + "/kr.log"); }
  std::string Hosts() const { return TempFolder::Read(desktop_.WorkFolder() + "/kr_host.txt"); }

  Copy copy_;
  std::string dialog_;
};

TEST_F(Dialogs, MppSettingsAreStoredAsTheyAreMade) {
  std::ofstream(desktop_.WorkFolder() + "/kr_host.txt") << "# mine\nnode1 4\n# spare\nnode2 8\n";
  StartWith({});
  OpenMpp();
  ClickIn(20, 18);                    // use MPP
  Choose(200, 18, "Down Down Down");  // IBM Platform MPI
  TypeIn(200, 78, "512 MB");
  TypeIn(200, 108, "envall");
  TypeIn(200, 138, "p=pfile");
  TypeIn(200, 168, "\"/opt/ls dyna/mpp_s\"");
  TypeIn(200, 198, "/opt/mpp_d");
  ClickIn(200, 250);  // CPUs of the first host
  desktop_.Key("ctrl+a");
  desktop_.Type("16");
  ClickIn(60, 296);  // a new host; its name is bad at first
  desktop_.Type("two words");
  desktop_.Key("Tab shift+Tab");
  EXPECT_EQ(Hosts(), "# mine\nnode1               16\n# spare\nnode2 8\n");
  desktop_.Key("ctrl+a");
  desktop_.Type("node3");
  desktop_.Key("Return");
  EXPECT_EQ(Hosts(), "# mine\nnode1               16\n# spare\nnode2 8\nnode3               1\n");
  ClickIn(352, 274);  // removes the second host
  ClickIn(300, 405);  // Close
  EXPECT_TRUE(Closed());
  Quit();
  EXPECT_EQ(Hosts(), "# mine\nnode1               16\n# spare\nnode3               1\n");
  for (const char* line :
       {"use_mpp=1", "mpi=3", "memory2=512", "mpi_param=envall", "mpp_param=p=pfile",
        "mpp_solver_s=/opt/ls dyna/mpp_s", "mpp_solver_d=/opt/mpp_d"})
    EXPECT_TRUE(Stored(line)) << line << "\n" << Settings();
}

// A file of settings that have changed is written whole, with keys that it does not have here.
TEST_F(Dialogs, WhatStaysAsItIsChangesNoFile) {
  StartWith({});
  const std::string before = Settings();
  OpenMpp();
  TypeIn(200, 78, "200");
  ClickIn(200, 108);
  desktop_.Key("x BackSpace Tab");
  ClickIn(200, 138);
  desktop_.Key("y Escape");  // a text that is being typed goes with its window
  EXPECT_TRUE(Closed());
  OpenByTool(Action::kConfig);
  Choose(150, 21, "");  // English again: it says so all the same
  EXPECT_TRUE(desktop_.Answer("Return"));
  desktop_.Key("Escape");
  EXPECT_TRUE(Closed());
  for (const char* key : {"Escape", "Return"}) {
    OpenByTool(Action::kAbout);
    desktop_.Key(key);
    EXPECT_TRUE(Closed()) << key;
  }
  Quit();
  EXPECT_EQ(Settings(), before);
}

TEST_F(Dialogs, AnOpenDialogShowsWhatIsHandedOver) {
  StartWith({});
  OpenMpp();
  std::ofstream(HandOver() + ".new") << "#mpi_param=-genv\n#mpp_param=k\n#group=300,2,0\n#mpp=1\n";
  std::filesystem::rename(HandOver() + ".new", HandOver());
  ASSERT_TRUE(WaitUntilTaken());
  // Typed behind what is shown.
  ClickIn(200, 108);
  desktop_.Key("End");
  desktop_.Type(" all");
  ClickIn(200, 78);
  desktop_.Key("End");
  desktop_.Type("5");
  ClickIn(20, 18);  // off again
  desktop_.Key("Return");
  EXPECT_TRUE(Closed());
  Quit();
  for (const char* line : {"mpi_param=-genv all", "mpp_param=k", "memory2=3005", "use_mpp=0"})
    EXPECT_TRUE(Stored(line)) << line << "\n" << Settings();
  EXPECT_EQ(TempFolder::Read(desktop_.Groups()), "Group1=300,2,0\n");
}

TEST_F(Dialogs, StopRunningNeedsTheSwitchFile) {
  const std::string deck = desktop_.Deck("stopped", "$ standin: run 60\n");
  StartWith({deck});
  OpenMpp();
  ClickIn(100, 405);
  usleep(300000);
  EXPECT_NE(Log().find(">> Not find running job, stop running job failed"), std::string::npos);
  desktop_.Key("Escape");
  EXPECT_TRUE(Closed());
  desktop_.Key("ctrl+Return");
  ASSERT_TRUE(Desktop::WaitFor([&] { return Exists(FolderOf(deck) + "/messag"); }, kRun));
  OpenMpp();
  ClickIn(100, 405);
  EXPECT_TRUE(desktop_.Answer("Return"));
  const std::string switchFile = FolderOf(deck) + "/bg_switch";
  EXPECT_NE(Log().find(">> BG_SWITCH file [" + switchFile + "] does not exist"), std::string::npos);
  EXPECT_FALSE(Exists(FolderOf(deck) + "/d3kil"));
  std::ofstream(switchFile) << "1\n";
  EXPECT_TRUE(desktop_.SolverRuns("stopped.k"));
  ClickIn(100, 405);
  // The solver has read the request, written its restart file and ended.
  EXPECT_TRUE(Desktop::WaitFor([&] { return !desktop_.SolverRuns("stopped.k"); }, 10));
  EXPECT_TRUE(Exists(FolderOf(deck) + "/d3dump01"));
}

TEST_F(Dialogs, ConfigurationIsStoredAndTheLanguageComesWithTheNextStart) {
  StartWith({});
  OpenByTool(Action::kConfig);
  Choose(150, 21, "Down");
  EXPECT_TRUE(desktop_.Answer("Return"));
  TypeIn(200, 47, "my editor -w");
  ClickIn(20, 78);   // no restart dumps
  ClickIn(20, 105);  // adaptive dumps go, and stay after all
  ClickIn(20, 105);
  EXPECT_EQ(desktop_.Command("xdotool getwindowname " + dialog_), "Configuration\n");
  ClickIn(600, 112);
  EXPECT_TRUE(Closed());
  Quit();
  for (const char* line : {"language=1", "viewer=my editor -w", "output_dump=0", "no_adapdump=0"})
    EXPECT_TRUE(Stored(line)) << line << "\n" << Settings();
  StartWith({});
  OpenByTool(Action::kConfig);
  EXPECT_EQ(desktop_.Command("xdotool getwindowname " + dialog_), "\xE9\x85\x8D\xE7\xBD\xAE\n");
}

TEST_F(Dialogs, RestartJobsRunWithTheirFiles) {
  const std::string deck = desktop_.Deck("again", "$ standin: echo\n");
  const std::string dump = desktop_.Scratch().Write("again/d3dump01", "dump");
  StartWith({});
  OpenByTool(Action::kAddRestart);
  TypeIn(200, 18, dump);
  ClickIn(400, 80);  // Cancel: no job
  EXPECT_TRUE(Closed());
  OpenByTool(Action::kAddRestart);
  desktop_.Key("Return");  // no file yet
  EXPECT_TRUE(desktop_.Answer("Return"));
  TypeIn(200, 18, dump);
  ClickIn(15, 46);  // with an input file, which is not given yet
  desktop_.Key("Return");
  EXPECT_TRUE(desktop_.Answer("Return"));
  TypeIn(200, 46, deck);
  ClickIn(310, 80);
  EXPECT_TRUE(Closed());
  usleep(500000);
  desktop_.Key("ctrl+Return");
  const std::string echo = FolderOf(deck) + "/standin_echo.txt";
  ASSERT_TRUE(Desktop::WaitFor([&] { return HasRun(deck); }, kRun));
  const std::string arguments = TempFolder::Read(echo);
  EXPECT_NE(arguments.find("r=" + dump + "\n"), std::string::npos) << arguments;
  EXPECT_NE(arguments.find("i=" + deck + "\n"), std::string::npos) << arguments;
  EXPECT_EQ(Log().find("Aborted"), std::string::npos);
}

}  // namespace
