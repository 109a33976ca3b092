#include "window/ProgramFixture.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <sstream>

// The window manager may keep an event to itself until the next one comes, so that a new window
// does not appear: each look at the windows sends it one that changes nothing.
static const std::string kLook = "xdotool set_desktop 0";

std::string ProgramTest::ActiveWindow() const {
  return Command(kLook + " getactivewindow");
}

void ProgramTest::SetUp() {
  ASSERT_FALSE(display_.Name().empty()) << "no display could be started";
  // Another user works in them too.
  Command("umask 0; chmod 777 " + scratch_.Path() + "; for home in home other; do mkdir -p " +
          scratch_.Path() + "/$home/tmp \"" + scratch_.Path() +
          "/$home/config/orla/Kestrun 2016 R1\"; done");
  // Solvers run without a console, so that the focus stays where it is.
  for (const std::string home : {"home", "other"})
    scratch_.Write(home + "/config/orla/Kestrun 2016 R1/kr_init.config",
                   "[GENERAL]\npause_time=0\nxterm_path=none\nlast_path=" + scratch_.Path() +
                       "\n[SOLVER]\nls_dyna_s=" KR_TEST_BIN_DIR "/standin_solver\n");
  Command("chmod -R a+rwX " + scratch_.Path());
  Spawn("openbox", "openbox.log");
  ASSERT_TRUE(WaitUntil([&] {
    return Command("xprop -root _NET_SUPPORTING_WM_CHECK").find("window id") != std::string::npos;
  })) << "no window manager";
  // Only one copy of a user shows a window; another test run's ends soon, a person's does not.
  ASSERT_TRUE(WaitUntil([&] {
    return Command("pgrep -x kestrun -U " + std::to_string(geteuid())).empty();
  })) << "end the copy of the program that runs already";
}

void ProgramTest::TearDown() {
  for (const pid_t pid : processes_) {
    kill(pid, SIGKILL);
    waitpid(pid, nullptr, 0);
  }
}

std::string ProgramTest::Command(const std::string& command) const {
  const std::string whole =
      "export DISPLAY=" + display_.Name() + "; { " + command + "; } 2>/dev/null";
  std::FILE* pipe = popen(whole.c_str(), "r");
  if (!pipe) return {};
  std::string text;
  for (int c; (c = std::fgetc(pipe)) != EOF;) text += static_cast<char>(c);
  pclose(pipe);
  if (text.ends_with('\n')) text.pop_back();
  return text;
}

pid_t ProgramTest::Spawn(const std::string& command, const std::string& output) {
  const std::string whole = "export DISPLAY=" + display_.Name() + " HOME=${HOME:-/}; exec " +
                            command + " >'" + scratch_ / output + "' 2>&1";
  const pid_t pid = fork();
  if (pid == 0) {
    execl("/bin/sh", "sh", "-c", whole.c_str(), static_cast<char*>(nullptr));
    _exit(127);
  }
  processes_.push_back(pid);
  return pid;
}

Copy ProgramTest::StartCopy(const std::string& arguments, const std::string& home,
                            const std::string& prefix) {
  const std::string folder = scratch_ / home;
  const std::string output = "output" + std::to_string(processes_.size());
  const std::string variables = "env HOME=" + folder + " XDG_CONFIG_HOME=" + folder +
                                "/config TMPDIR=" + folder + "/tmp XDG_RUNTIME_DIR=" + folder +
                                "/tmp KESTRUN_HANDOVER_FOLDER=" + folder +
                                "/handover ASAN_OPTIONS=detect_leaks=0 ";
  return {Spawn(variables + prefix + " " KR_TEST_BIN_DIR "/kestrun " + arguments, output),
          scratch_ / output};
}

Copy ProgramTest::Start(const std::string& arguments) {
  const Copy copy = StartCopy(arguments);
  EXPECT_TRUE(Activate()) << TempFolder::Read(copy.output);
  return copy;
}

bool ProgramTest::Activate() {
  // A window that is being made may miss the first request.
  return WaitUntil([&] {
    main_ = Window("Kestrun");
    if (!main_.empty()) Command("xdotool windowactivate " + main_);
    return !main_.empty() && ActiveWindow() == main_;
  });
}

int ProgramTest::WaitExit(const Copy& copy, std::chrono::seconds limit) {
  int status = 0;
  if (!WaitUntil([&] { return waitpid(copy.pid, &status, WNOHANG) == copy.pid; }, limit)) return -1;
  std::erase(processes_, copy.pid);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

void ProgramTest::Drag(const std::string& from, const std::string& to) const {
  const auto middle = [&](const std::string& window, int before) {
    int x = 0, y = 0, width = 0, height = 0;
    std::istringstream(
        Command("xwininfo -id " + window + " | awk '/Absolute|Width|Height/ { print $NF }'")) >>
        x >> y >> width >> height;
    return " mousemove " + std::to_string(x + width / 2 - before) + " " +
           std::to_string(y + height / 2) + " sleep 0.1";
  };
  Command("xdotool" + middle(from, 0) + " mousedown 1 sleep 0.1" + middle(from, 8) + middle(to, 8) +
          middle(to, 4) + middle(to, 0) + " sleep 0.3 mouseup 1");
}

std::string ProgramTest::Window(const std::string& windowClass) const {
  return Command(kLook + " search --onlyvisible --class '^" + windowClass + "$' | head -n 1");
}

std::string ProgramTest::Opened(const std::string& windowClass) const {
  std::string window;
  EXPECT_TRUE(WaitUntil([&] {
    window = Window(windowClass);
    return !window.empty() && ActiveWindow() == window;
  })) << windowClass;
  return window;
}

void ProgramTest::Answer(const std::string& windowClass, const std::string& key) const {
  Opened(windowClass);
  Key(key);
  EXPECT_TRUE(WaitUntil([&] { return Window(windowClass).empty(); })) << windowClass;
}

std::string ProgramTest::Deck(const std::string& name, const std::string& command) const {
  std::filesystem::create_directories(scratch_ / name);
  const std::string order = command.empty() ? "" : "$ standin: " + command + "\n";
  return scratch_.Write(name + "/" + name + ".k",
                        "*KEYWORD\n" + order + "*CONTROL_TERMINATION\n       1.0\n*END\n");
}

std::string ProgramTest::FolderOf(const std::string& deck) {
  return std::filesystem::path(deck).parent_path().string();
}

bool ProgramTest::RunUntilAllHaveRun(const std::vector<std::string>& decks) const {
  return WaitUntil(
      [&] {
        Key("ctrl+Return");
        return std::all_of(decks.begin(), decks.end(), [](const std::string& deck) {
          return std::filesystem::exists(KeptMessage(deck));
        });
      },
      kRun);
}

bool ProgramTest::SolverRuns(const std::string& name) const {
  // The brackets keep the search from finding the shell that runs it.
  const std::string folder = std::filesystem::path(scratch_.Path()).filename();
  return !Command("pgrep -f '[s]tandin_solver.*" + folder + ".*" + name + "'").empty();
}
