// What the window costs while it is used and while it is left alone: the time of a frame while
// 10,000 jobs scroll, compared with a bare double-buffered window that draws as many texts; and the
// processor use with 1,000 queued and 4 running jobs, compared with the polls of 4 processes alone.
// Needs a display. Arguments: the seconds to be left alone (20).
#include <FL/Fl.H>
#include <FL/Fl_Double_Window.H>
#include <FL/fl_draw.H>
#include <FL/x.H>
#include <sys/resource.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "core/Application.h"
#include "ui/Flx_AppWnd.h"
#include "ui/Language.h"
#include "ui/QueueNotes.h"
#include "ui/Theme.h"

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr int kFrames = 400;
constexpr int kScrolledJobs = 10000;
constexpr int kQueuedJobs = 1000;
constexpr int kRunningJobs = 4;

class BareWindow : public Fl_Double_Window {
 public:
  BareWindow() : Fl_Double_Window(100, 100, 1000, 448, "bare window") { end(); }
  int offset = 0;

 protected:
  void draw() override {
    constexpr int kRows = 12;
    constexpr int kColumns = 10;
    fl_color(FL_WHITE);
    fl_rectf(0, 0, w(), h());
    fl_color(FL_BLACK);
    fl_font(FL_HELVETICA, 13);
    for (int row = 0; row < kRows; ++row) {
      for (int column = 0; column < kColumns; ++column) {
        const std::string text = "deck " + std::to_string(offset + row);
        fl_push_clip(column * 100, 100 + row * 26, 96, 26);
        fl_draw(text.c_str(), column * 100, 100 + row * 26, 96, 26, FL_ALIGN_LEFT);
        fl_pop_clip();
      }
    }
  }
};

template <typename Scroll>
double FrameMilliseconds(Scroll scroll) {
  const Clock::time_point start = Clock::now();
  for (int frame = 0; frame < kFrames; ++frame) {
    scroll(frame);
    Fl::check();
    XSync(fl_display, False);
  }
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count() / kFrames;
}

double ProcessorSeconds() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

JobTable* FindTable(Fl_Group& group) {
  for (int i = 0; i < group.children(); ++i) {
    if (auto* table = dynamic_cast<JobTable*>(group.child(i))) {
      if (table->visible()) return table;
    }
  }
  return nullptr;
}

std::shared_ptr<JobFile> MakeJob(const Settings& settings, const std::string& deck) {
  auto job = std::make_shared<JobFileDyna>(settings);
  job->jobFile = deck;
  job->pause = 0;
  return job;
}

void RunWindowFor(double seconds) {
  const Clock::time_point end = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                                   std::chrono::duration<double>(seconds));
  while (Clock::now() < end) {
    Fl::wait(std::chrono::duration<double>(end - Clock::now()).count());
  }
}

void Tick(void* application) {
  static_cast<Application*>(application)->Tick();
  Fl::repeat_timeout(Application::kPollSeconds, Tick, application);
}

// The polls alone: a thread a process, as the groups have.
double PollPercent(const std::string& solver, const std::string& deck, double seconds) {
  std::vector<std::unique_ptr<PTWrapperProcess>> processes;
  for (int i = 0; i < kRunningJobs; ++i) {
    processes.push_back(std::make_unique<PTWrapperProcess>());
    processes.back()->Create(solver, solver + " i=" + deck, "poll", false, 0, {}, false);
  }
  RunWindowFor(1);
  const double before = ProcessorSeconds();
  std::vector<std::thread> threads;
  for (auto& process : processes) {
    threads.emplace_back([&process, seconds] {
      for (int i = 0; i < static_cast<int>(seconds) && process->IsActive(); ++i) sleep(1);
    });
  }
  for (std::thread& thread : threads) thread.join();
  const double percent = (ProcessorSeconds() - before) / seconds * 100;
  for (auto& process : processes) process->Terminate();
  return percent;
}

}  // namespace

int main(int argc, char** argv) {
  const double seconds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 20;
  char scratch[] = "/tmp/window-run-XXXXXX";
  if (mkdtemp(scratch) == nullptr) return 1;
  setenv("XDG_CONFIG_HOME", scratch, 1);
  setenv("TMPDIR", scratch, 1);
  const fs::path self = fs::read_symlink("/proc/self/exe");
  const std::string solver = (self.parent_path() / "standin_solver").string();

  Fl::lock();
  Theme::Apply();
  QueueNotes notes;
  Application application;
  const char* arguments[] = {self.c_str()};
  if (!application.Initialise(1, arguments)) return 1;
  application.SettingsAndFiles().SetSolverPath(Settings::kLsDynaSingle, solver);
  const Settings settings = application.SettingsAndFiles().Snapshot();
  TextTable texts;
  FillTexts(0, application.Title(), texts);
  {
    Flx_AppWnd window(application, notes, texts);
    window.show();
    RunWindowFor(1);

    JobGroupManager& manager = application.Manager();
    const auto group = manager.GroupAt(0);
    for (int i = 0; i < kScrolledJobs; ++i) {
      group->AddJob(MakeJob(settings, std::string(scratch) + "/deck" + std::to_string(i) + ".k"));
    }
    RunWindowFor(0.5);
    JobTable* const table = FindTable(window);
    if (table == nullptr) return 1;
    BareWindow bare;
    bare.show();
    RunWindowFor(0.5);
    const auto scrollTable = [&](int frame) { table->SelectRow(frame * 23 % kScrolledJobs); };
    const auto scrollBare = [&](int frame) {
      bare.offset = frame;
      bare.redraw();
    };
    FrameMilliseconds(scrollTable);  // fonts and pictures are loaded once
    const double bareFrame = FrameMilliseconds(scrollBare);
    const double frame = FrameMilliseconds(scrollTable);
    std::printf(
        "scrolling %d jobs: %.2f ms a frame, bare window with as many texts: %.2f ms, "
        "ratio %.2f\n",
        kScrolledJobs, frame, bareFrame, frame / bareFrame);
    bare.hide();

    while (group->JobCount() > kQueuedJobs) group->RemoveJob(group->JobCount() - 1);
    const std::string deck = std::string(scratch) + "/long.k";
    std::ofstream(deck)
        << "$ standin: run 3600\n*KEYWORD\n*CONTROL_TERMINATION\n       1.0\n*END\n";
    const double polls = PollPercent(solver, deck, seconds);
    for (int i = 0; i < kRunningJobs; ++i) {
      const std::string folder = std::string(scratch) + "/run" + std::to_string(i);
      fs::create_directory(folder);
      fs::copy_file(deck, folder + "/long.k");
      const auto runner = manager.GroupAt(manager.AddGroup("run" + std::to_string(i)));
      runner->AddJob(MakeJob(settings, folder + "/long.k"));
      runner->Submit();
    }
    window.Refresh();
    Fl::add_timeout(Application::kPollSeconds, Tick, &application);
    RunWindowFor(4);
    const double before = ProcessorSeconds();
    RunWindowFor(seconds);
    const double used = (ProcessorSeconds() - before) / seconds * 100;
    std::printf(
        "left alone, %d queued and %d running: %.3f%% of a core; their polls alone %.3f%%; "
        "beyond them %.3f%%\n",
        kQueuedJobs, kRunningJobs, used, polls, used - polls);
    Fl::remove_timeout(Tick, &application);
    for (int i = 0; i < manager.GroupCount(); ++i) manager.GroupAt(i)->Stop();
  }
  application.Shutdown();
  std::error_code ignored;
  fs::remove_all(scratch, ignored);
  return 0;
}
