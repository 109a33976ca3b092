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
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "QueueProgram.h"

namespace {

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
  QueueProgram program;
  if (!program.Ready()) return 1;
  const std::unique_ptr<Flx_AppWnd> window = program.MakeWindow();
  window->show();
  RunWindowFor(1);

  JobGroupManager& manager = program.App().Manager();
  const auto group = manager.GroupAt(0);
  for (int i = 0; i < kScrolledJobs; ++i) {
    group->AddJob(program.MakeJob(program.Scratch() + "/deck" + std::to_string(i) + ".k"));
  }
  RunWindowFor(0.5);
  JobTable* const table = FindTable(*window);
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

  const std::vector<JobId> jobs = group->JobIds();
  for (std::size_t i = kQueuedJobs; i < jobs.size(); ++i) group->RemoveJob(jobs[i]);
  const std::string deck = program.Scratch() + "/long.k";
  std::ofstream(deck) << QueueProgram::kLongDeck;
  const double polls = PollPercent(program.Solver(), deck, seconds);
  for (int i = 0; i < kRunningJobs; ++i) program.RunLongJob("run" + std::to_string(i));
  window->Refresh();
  program.StartPolls();
  RunWindowFor(4);
  const double before = ProcessorSeconds();
  RunWindowFor(seconds);
  const double used = (ProcessorSeconds() - before) / seconds * 100;
  std::printf(
      "left alone, %d queued and %d running: %.3f%% of a core; their polls alone %.3f%%; "
      "beyond them %.3f%%\n",
      kQueuedJobs, kRunningJobs, used, polls, used - polls);
  return 0;
}
