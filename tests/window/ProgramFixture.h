// A desktop of the test's own, with the whole program on it as a person would use it.
#ifndef KR_TESTS_WINDOW_PROGRAMFIXTURE_H
#define KR_TESTS_WINDOW_PROGRAMFIXTURE_H

#include <gtest/gtest.h>
#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

#include "support/TempFolder.h"
#include "support/VirtualDisplay_posix.h"
#include "support/WaitUntil.h"

// For a whole run, on a busy machine too. The poll that takes jobs in comes every three seconds.
inline constexpr std::chrono::seconds kRun{40};

// One copy of the program.
struct Copy {
  pid_t pid = -1;
  std::string output;  // a file with what it printed
};

// Windows are found by class: Kestrun, KestrunMessage (message boxes, the waiting window),
// KestrunDialog, KestrunChooser, KestrunText, KestrunHelp. Keys and drags are real events, which go
// to the window that has the focus or is under the mouse.
class ProgramTest : public testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  // What a command on the desktop prints, without the end of the last line.
  std::string Command(const std::string& command) const;

  // Starts the program with its files in this folder of the scratch folder.
  Copy StartCopy(const std::string& arguments, const std::string& home = "home",
                 const std::string& prefix = {});
  // The same, and waits for its window.
  Copy Start(const std::string& arguments);
  // Gives the main window the focus.
  bool Activate();
  // The exit code, or -1 when the program still runs after that time.
  int WaitExit(const Copy& copy, std::chrono::seconds limit = std::chrono::seconds(20));

  void Key(const std::string& keys) const { Command("xdotool key --delay 30 " + keys); }
  // With the left button held down, from the middle of one window to that of another.
  void Drag(const std::string& from, const std::string& to) const;

  // The id of a window of this class that can be seen, or empty.
  std::string Window(const std::string& windowClass) const;
  std::string ActiveWindow() const;
  // Waits until one has the focus; its id.
  std::string Opened(const std::string& windowClass) const;
  // Presses a key in one that opens and sees it go.
  void Answer(const std::string& windowClass, const std::string& key) const;
  std::string TitleOf(const std::string& window) const {
    return Command("xdotool getwindowname " + window);
  }

  // A deck in a folder of its own, so that runs do not meet. The command is for the stand-in.
  std::string Deck(const std::string& name, const std::string& command = {}) const;
  static std::string FolderOf(const std::string& deck);
  // The message file that a run leaves when its end has been judged.
  static std::string KeptMessage(const std::string& deck) { return FolderOf(deck) + "/messag.krb"; }
  // Submits until all have run, since the queue may still be taking them in.
  bool RunUntilAllHaveRun(const std::vector<std::string>& decks) const;
  // The solver of a deck of the scratch folder is alive.
  bool SolverRuns(const std::string& name) const;

  std::string HandOver() const { return scratch_ / "home/handover/~kestrun_tmp_2014 R1.txt"; }
  std::string Settings() const { return WorkFolder("home") + "/kr_init.config"; }
  std::string Groups() const { return TempFolder::Read(WorkFolder("home") + "/kr_groups.txt"); }

  // Starts a program in the background that ends with the test; the output goes into a file.
  pid_t Spawn(const std::string& command, const std::string& output);

  const TempFolder scratch_;
  const VirtualDisplay display_{"1280x800"};
  std::string main_;  // the main window's id

 private:
  std::string WorkFolder(const std::string& home) const {
    return scratch_ / home + "/config/orla/Kestrun 2016 R1";
  }

  std::vector<pid_t> processes_;
};

#endif
