// A display of its own with a window manager, and the program on it, used as a person does.
#ifndef KR_TESTS_WINDOW_DESKTOP_H
#define KR_TESTS_WINDOW_DESKTOP_H

#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

#include "support/TempFolder.h"

// One copy of the program with a home, work folder and temporary folder of its own.
struct Copy {
  pid_t pid = -1;
  std::string output;  // a file with what it printed
};

struct Area {
  int x = 0, y = 0, w = 0, h = 0;
};

// Starts Xvfb and openbox; ends them and all copies with it. Clicks and keys are real events; they
// go to whatever window is under the mouse or has the focus.
class Desktop {
 public:
  Desktop();
  ~Desktop();
  bool Ready() const { return !display_.empty(); }
  const std::string& Display() const { return display_; }

  // The scratch folders. Made readable for everyone, so that another user can work in them.
  const TempFolder& Scratch() const { return scratch_; }
  std::string WorkFolder() const;
  std::string Settings() const { return WorkFolder() + "/kr_init.config"; }
  std::string Groups() const { return WorkFolder() + "/kr_groups.txt"; }

  // Puts a deck into a folder of its own below the scratch folder, so that runs do not meet.
  std::string Deck(const std::string& name, const std::string& commands) const;

  // Starts the program; `prefix` goes in front of its command line, `home` names the folder of its
  // files below the scratch folder.
  Copy Start(const std::vector<std::string>& arguments, const std::vector<std::string>& prefix = {},
             const std::string& home = "home");
  // Shows a window from which these addresses can be dragged; returns its id.
  std::string StartDragSource(const std::vector<std::string>& addresses);
  // The exit code, or -1 when the program still runs after so many seconds.
  int WaitExit(const Copy& copy, double seconds);
  static bool Runs(const Copy& copy);

  // Window ids by class and process (0: any); waits for at least one. Empty when none came.
  std::vector<std::string> Windows(const std::string& windowClass, double seconds = 10) const;
  // Waits for the main window, gives it the focus and puts it where clicks expect it.
  bool OpenMain();
  // Waits for a message box and presses a key in it; false when none comes or it stays.
  bool Answer(const std::string& key);
  std::string ActiveWindow() const;

  void Key(const std::string& keys) const;
  void Type(const std::string& text) const;
  // In the coordinates of the main window.
  void Click(int x, int y, int times = 1) const;
  // With the left button held down, from one place to another; `from` is the window to begin in.
  void Drag(int fromX, int fromY, int toX, int toY, const std::string& from = {}) const;
  // The main window's client area, and that of others.
  void Resize(int width, int height) const;
  Area AreaOf(const std::string& window) const;
  const std::string& Main() const { return main_; }

  // A copy that this user has started, here or elsewhere.
  bool AnotherCopyRuns() const;
  // Whether the solver of this deck of the scratch folder is alive.
  bool SolverRuns(const std::string& deckName) const;

  // What a command of the desktop prints.
  std::string Command(const std::string& command) const;

  static bool WaitFor(const std::function<bool()>& condition, double seconds);

 private:
  bool StartManager();
  pid_t Spawn(const std::vector<std::string>& words, const std::vector<std::string>& variables,
              const std::string& output) const;

  TempFolder scratch_;
  std::string display_;
  std::string main_;  // the main window's id
  pid_t server_ = -1;
  pid_t manager_ = -1;
  std::vector<pid_t> copies_;
};

#endif
