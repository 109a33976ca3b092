// How long the program takes from its start to a window on the screen, compared with a bare FLTK
// window of the same size. Needs a display. Arguments: the number of starts of each (15).
//
// The program starts itself with "bare" for the bare window; the real one is the program beside it.
#include <FL/Fl.H>
#include <FL/Fl_Double_Window.H>
#include <FL/Fl_Input.H>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

extern char** environ;

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr char kBareTitle[] = "bare window";
constexpr char kTitle[] = "Kestrun 2016 R1";
constexpr std::chrono::seconds kLimit{20};

int RunBareWindow() {
  Fl_Double_Window window(100, 100, 1000, 448, kBareTitle);
  new Fl_Input(100, 10, 300, 24, "Input");
  window.end();
  window.show();
  return Fl::run();
}

bool IsShown(Display* display, Window window, const std::string& title) {
  char* name = nullptr;
  bool shown = false;
  if (XFetchName(display, window, &name) != 0 && name != nullptr) {
    XWindowAttributes attributes;
    shown = title == name && XGetWindowAttributes(display, window, &attributes) != 0 &&
            attributes.map_state == IsViewable;
    XFree(name);
  }
  if (shown) return true;
  Window root = 0;
  Window parent = 0;
  Window* children = nullptr;
  unsigned count = 0;
  if (XQueryTree(display, window, &root, &parent, &children, &count) == 0) return false;
  for (unsigned i = 0; i < count && !shown; ++i) shown = IsShown(display, children[i], title);
  if (children != nullptr) XFree(children);
  return shown;
}

// Windows come and go while we look at them.
int IgnoreError(Display*, XErrorEvent*) {
  return 0;
}

double StartMilliseconds(Display* display, std::vector<std::string> command,
                         const std::string& title) {
  std::vector<char*> argv;
  for (std::string& word : command) argv.push_back(word.data());
  argv.push_back(nullptr);
  const Clock::time_point start = Clock::now();
  pid_t child = 0;
  if (posix_spawn(&child, argv[0], nullptr, nullptr, argv.data(), environ) != 0) return -1;
  bool shown = false;
  while (!shown && Clock::now() - start < kLimit) {
    shown = IsShown(display, DefaultRootWindow(display), title);
    if (!shown) usleep(500);
  }
  const double ms = std::chrono::duration<double, std::milli>(Clock::now() - start).count();
  kill(child, SIGKILL);
  waitpid(child, nullptr, 0);
  while (IsShown(display, DefaultRootWindow(display), title)) usleep(500);
  return shown ? ms : -1;
}

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

}  // namespace

int main(int argc, char** argv) {
  if (argc > 1 && std::string(argv[1]) == "bare") return RunBareWindow();
  const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 15;
  Display* const display = XOpenDisplay(nullptr);
  if (display == nullptr) {
    std::fprintf(stderr, "No display.\n");
    return 1;
  }
  XSetErrorHandler(IgnoreError);
  const fs::path self = fs::read_symlink("/proc/self/exe");
  const std::string program = (self.parent_path() / "kestrun").string();
  char scratch[] = "/tmp/window-start-XXXXXX";
  if (mkdtemp(scratch) == nullptr) return 1;
  setenv("XDG_CONFIG_HOME", scratch, 1);
  setenv("KESTRUN_HANDOVER_FOLDER", (std::string(scratch) + "/handover").c_str(), 1);

  std::vector<double> bare;
  std::vector<double> real;
  for (int i = 0; i < rounds; ++i) {
    bare.push_back(StartMilliseconds(display, {self.string(), "bare"}, kBareTitle));
    real.push_back(StartMilliseconds(display, {program}, kTitle));
    if (bare.back() < 0 || real.back() < 0) {
      std::fprintf(stderr, "A window did not appear.\n");
      return 1;
    }
  }
  std::printf("window start: %.1f ms, bare FLTK window: %.1f ms, ratio %.2f (medians of %d)\n",
              Median(real), Median(bare), Median(real) / Median(bare), rounds);
  XCloseDisplay(display);
  std::error_code ignored;
  fs::remove_all(scratch, ignored);
  return 0;
}
