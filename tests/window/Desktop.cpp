#include "window/Desktop.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <thread>

namespace {

constexpr char kWorkFolder[] = "/config/orla/Kestrun 2016 R1";

void EndProcess(pid_t pid, int signalNumber) {
  if (pid <= 0) return;
  kill(pid, signalNumber);
  waitpid(pid, nullptr, 0);
}

void OpenForAll(const std::string& folder) {
  chmod(folder.c_str(), 0777);
}

}  // namespace

Desktop::Desktop() {
  OpenForAll(scratch_.Path());
  const std::string number = scratch_ / "display";
  server_ = Spawn({"sh", "-c",
                   "exec Xvfb -displayfd 3 -screen 0 1280x800x24 -nolisten tcp -noreset -ac 3>'" +
                       number + "'"},
                  {}, scratch_ / "xvfb.log");
  if (!WaitFor([&] { return TempFolder::Read(number).find('\n') != std::string::npos; }, 20))
    return;
  std::istringstream(TempFolder::Read(number)) >> display_;
  display_ = ":" + display_;
  if (!StartManager() && !StartManager()) {
    display_.clear();
    return;
  }
  for (const std::string home : {"home", "other"}) {
    std::string folder = scratch_ / home;
    for (const std::string& below : {std::string(), std::string("/tmp"), std::string("/config"),
                                     std::string("/config/orla"), std::string(kWorkFolder)}) {
      mkdir((folder + below).c_str(), 0777);
      OpenForAll(folder + below);
    }
    // Solvers run without a console, so that the focus stays where it is.
    scratch_.Write(
        home + kWorkFolder + "/kr_init.config",
        "[GENERAL]\nmemory_size=500\nmemory_auto=1\npause_time=0\ncpu_count=1\nxterm_path=none\n"
        "last_path=" +
            scratch_.Path() +
            "\n[SOLVER]\nls_dyna_s=" KR_TEST_BIN_DIR
            "/standin_solver\n"
            "[MPP]\nmemory2=200\n");
    chmod((folder + kWorkFolder + "/kr_init.config").c_str(), 0666);
  }
}

bool Desktop::StartManager() {
  EndProcess(manager_, SIGKILL);
  manager_ = Spawn({"openbox"}, {"DISPLAY=" + display_, "HOME=" + scratch_.Path()},
                   scratch_ / "openbox.log");
  return WaitFor(
      [&] {
        return Command("xprop -root _NET_SUPPORTING_WM_CHECK").find("window id") !=
               std::string::npos;
      },
      10);
}

Desktop::~Desktop() {
  for (const pid_t pid : copies_) {
    if (kill(pid, 0) == 0) EndProcess(pid, SIGKILL);
  }
  EndProcess(manager_, SIGTERM);
  EndProcess(server_, SIGTERM);
}

std::string Desktop::WorkFolder() const {
  return scratch_ / std::string("home") + kWorkFolder;
}

std::string Desktop::Deck(const std::string& name, const std::string& commands) const {
  const std::string folder = scratch_ / name;
  mkdir(folder.c_str(), 0777);
  OpenForAll(folder);
  return scratch_.Write(
      name + "/" + name + ".k",
      "*KEYWORD\n" + commands +
          "*CONTROL_TERMINATION\n       1.0\n*NODE\n       1             0.0             0.0      "
          "       0.0\n*END\n");
}

pid_t Desktop::Spawn(const std::vector<std::string>& words,
                     const std::vector<std::string>& variables, const std::string& output) const {
  const pid_t pid = fork();
  if (pid != 0) return pid;
  const int file = open(output.c_str(), O_CREAT | O_WRONLY | O_TRUNC, 0666);
  dup2(file, STDOUT_FILENO);
  dup2(file, STDERR_FILENO);
  for (std::string variable : variables) {
    const std::size_t equals = variable.find('=');
    setenv(variable.substr(0, equals).c_str(), variable.substr(equals + 1).c_str(), 1);
  }
  std::vector<char*> arguments;
  for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  execvp(arguments[0], arguments.data());
  _exit(127);
}

Copy Desktop::Start(const std::vector<std::string>& arguments,
                    const std::vector<std::string>& prefix, const std::string& home) {
  std::vector<std::string> words = prefix;
  words.push_back(KR_TEST_BIN_DIR "/kestrun");
  words.insert(words.end(), arguments.begin(), arguments.end());
  const std::string folder = scratch_ / home;
  Copy copy;
  copy.output = scratch_ / ("output" + std::to_string(copies_.size()));
  copy.pid =
      Spawn(words,
            {"DISPLAY=" + display_, "HOME=" + folder, "XDG_CONFIG_HOME=" + folder + "/config",
             "TMPDIR=" + folder + "/tmp", "XDG_RUNTIME_DIR=" + folder + "/tmp",
             "KESTRUN_HANDOVER_FOLDER=" + folder + "/handover",
             // The toolkit and the fonts keep memory until the end.
             "ASAN_OPTIONS=detect_leaks=0"},
            copy.output);
  copies_.push_back(copy.pid);
  return copy;
}

std::string Desktop::StartDragSource(const std::vector<std::string>& addresses) {
  std::vector<std::string> words = {KR_TEST_BIN_DIR "/drag_source"};
  words.insert(words.end(), addresses.begin(), addresses.end());
  copies_.push_back(Spawn(words, {"DISPLAY=" + display_}, scratch_ / "drag_source.log"));
  const std::vector<std::string> ids = Windows("DragSource");
  return ids.empty() ? std::string() : ids.front();
}

int Desktop::WaitExit(const Copy& copy, double seconds) {
  int status = 0;
  if (!WaitFor([&] { return waitpid(copy.pid, &status, WNOHANG) == copy.pid; }, seconds)) return -1;
  std::erase(copies_, copy.pid);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

bool Desktop::Runs(const Copy& copy) {
  return waitpid(copy.pid, nullptr, WNOHANG) == 0;
}

std::string Desktop::Command(const std::string& command) const {
  const std::string whole = "DISPLAY=" + display_ + " " + command + " 2>/dev/null";
  std::FILE* pipe = popen(whole.c_str(), "r");
  if (!pipe) return {};
  std::string text;
  char piece[256];
  while (std::fgets(piece, sizeof piece, pipe)) text += piece;
  pclose(pipe);
  return text;
}

std::vector<std::string> Desktop::Windows(const std::string& windowClass, double seconds) const {
  std::vector<std::string> ids;
  WaitFor(
      [&] {
        std::istringstream lines(
            Command("xdotool search --onlyvisible --class '^" + windowClass + "$'"));
        ids.clear();
        for (std::string id; lines >> id;) ids.push_back(id);
        return !ids.empty();
      },
      seconds);
  return ids;
}

bool Desktop::OpenMain() {
  const std::vector<std::string> ids = Windows("Kestrun");
  if (ids.empty()) return false;
  main_ = ids.front();
  // A window that is being made may miss the first request.
  return WaitFor(
      [&] {
        Command("xdotool windowactivate " + main_);
        return ActiveWindow() == main_;
      },
      10);
}

bool Desktop::Answer(const std::string& key) {
  const std::vector<std::string> ids = Windows("KestrunMessage");
  if (ids.empty()) return false;
  if (!WaitFor([&] { return ActiveWindow() == ids.front(); }, 5)) return false;
  Key(key);
  return WaitFor([&] { return Windows("KestrunMessage", 0) != ids; }, 5);
}

std::string Desktop::ActiveWindow() const {
  std::string id;
  std::istringstream(Command("xdotool getactivewindow")) >> id;
  return id;
}

bool Desktop::AnotherCopyRuns() const {
  return !Command("pgrep -x kestrun -U " + std::to_string(geteuid())).empty();
}

bool Desktop::SolverRuns(const std::string& deckName) const {
  // The brackets keep the search from finding the shell that runs it.
  const std::string folder = std::filesystem::path(scratch_.Path()).filename();
  return !Command("pgrep -f '[s]tandin_solver.*" + folder + ".*" + deckName + "'").empty();
}

void Desktop::Key(const std::string& keys) const {
  Command("xdotool key --delay 30 " + keys);
}

void Desktop::Type(const std::string& text) const {
  Command("xdotool type --delay 15 '" + text + "'");
}

void Desktop::Click(int x, int y, int times) const {
  Command("xdotool mousemove --window " + main_ + " " + std::to_string(x) + " " +
          std::to_string(y) + " click --delay 60 --repeat " + std::to_string(times) + " 1");
}

void Desktop::Drag(int fromX, int fromY, int toX, int toY, const std::string& from) const {
  const auto move = [](const std::string& window, int x, int y) {
    return " mousemove --window " + window + " " + std::to_string(x) + " " + std::to_string(y) +
           " sleep 0.1";
  };
  const std::string source = from.empty() ? main_ : from;
  Command("xdotool" + move(source, fromX, fromY) + " mousedown 1 sleep 0.1" +
          move(source, fromX + 8, fromY) + move(main_, toX - 8, toY) + move(main_, toX - 4, toY) +
          move(main_, toX, toY) + " sleep 0.3 mouseup 1");
}

void Desktop::Resize(int width, int height) const {
  Command("xdotool windowsize --sync " + main_ + " " + std::to_string(width) + " " +
          std::to_string(height));
}

Area Desktop::AreaOf(const std::string& window) const {
  Area area;
  std::istringstream lines(Command("xdotool getwindowgeometry --shell " + window));
  for (std::string line; std::getline(lines, line);) {
    const int value = std::atoi(line.substr(line.find('=') + 1).c_str());
    if (line.rfind("X=", 0) == 0) area.x = value;
    if (line.rfind("Y=", 0) == 0) area.y = value;
    if (line.rfind("WIDTH=", 0) == 0) area.w = value;
    if (line.rfind("HEIGHT=", 0) == 0) area.h = value;
  }
  return area;
}

bool Desktop::WaitFor(const std::function<bool()>& condition, double seconds) {
  using Clock = std::chrono::steady_clock;
  const auto end = Clock::now() + std::chrono::duration<double>(seconds);
  do {
    if (condition()) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  } while (Clock::now() < end);
  return condition();
}
