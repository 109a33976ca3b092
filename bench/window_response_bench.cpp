// How long an event waits for the window while much happens at once: 8 groups run, a big deck is
// added, and a big message file is read for the information window. Events come from a thread every
// few milliseconds, whatever loop handles them. The reference is a bare window with nothing to do.
// Needs a display. Arguments: the size of both files in megabytes (1000).
#include <FL/Fl_Double_Window.H>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <thread>
#include <vector>

#include "QueueProgram.h"
#include "ui/dialogs/Flx_ShowInfo.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kGroups = 8;
constexpr double kReading = 6;  // seconds that the information window stays open
constexpr std::chrono::milliseconds kBetweenEvents{5};

// Sends events while it lives.
class Probe {
 public:
  Probe()
      : thread_([this] {
          while (!ends_) {
            auto* sent = new Event{this, Clock::now()};
            if (Fl::awake(Handle, sent) != 0) delete sent;
            std::this_thread::sleep_for(kBetweenEvents);
          }
        }) {}
  ~Probe() { End(); }

  void End() {
    ends_ = true;
    if (thread_.joinable()) thread_.join();
    RunWindowFor(0.1);
  }

  void Print(const char* what) {
    End();
    std::sort(waited_.begin(), waited_.end());
    if (waited_.empty()) return;
    std::printf("%-52s %6zu events, median %6.2f ms, 99%% %6.2f ms, longest %6.2f ms\n", what,
                waited_.size(), waited_[waited_.size() / 2], waited_[waited_.size() * 99 / 100],
                waited_.back());
  }

 private:
  struct Event {
    Probe* probe;
    Clock::time_point sent;
  };
  static void Handle(void* data) {
    const auto* const event = static_cast<Event*>(data);
    const std::chrono::duration<double, std::milli> waited = Clock::now() - event->sent;
    event->probe->waited_.push_back(waited.count());
    delete event;
  }

  std::atomic<bool> ends_{false};
  std::vector<double> waited_;  // milliseconds; interface thread
  std::thread thread_;          // last: it uses the others
};

bool WriteRepeated(const std::string& path, const std::string& head, const std::string& piece,
                   std::uint64_t bytes) {
  std::FILE* const file = std::fopen(path.c_str(), "wb");
  if (file == nullptr) return false;
  std::fputs(head.c_str(), file);
  std::string block;
  while (block.size() < 1000000) block += piece;
  for (std::uint64_t written = 0; written < bytes; written += block.size()) {
    std::fwrite(block.data(), 1, block.size(), file);
  }
  return std::fclose(file) == 0;
}

void CloseInformation(void*) {
  if (Fl::modal()) Fl::modal()->hide();
}

void OpenInformation(Flx_AppWnd& window, const JobOutput& output) {
  Flx_ShowInfo dialog(&window, 0, output);
  dialog.Run();
}

}  // namespace

int main(int argc, char** argv) {
  const std::uint64_t bytes = (argc > 1 ? std::strtoull(argv[1], nullptr, 10) : 1000) * 1000000;
  QueueProgram program;
  if (!program.Ready()) return 1;
  {
    Fl_Double_Window bare(300, 200, "bare window");
    bare.end();
    bare.show();
    RunWindowFor(0.5);
    Probe probe;
    RunWindowFor(5);
    probe.Print("a bare window");
  }

  const std::string deck = program.Scratch() + "/big.k";
  const std::string message = program.Scratch() + "/messag";
  if (!WriteRepeated(deck, "*KEYWORD\n*NODE\n",
                     "       1       0.0000000       0.0000000       0.0000000\n", bytes) ||
      !WriteRepeated(message, "",
                     " *** Warning 40540 (SOL+540)\n     contact interface is soft\n\n"
                     "       1 t 1.3800E-07 dt 1.38E-07 flush i/o buffers\n",
                     bytes)) {
    return 1;
  }
  const std::unique_ptr<Flx_AppWnd> window = program.MakeWindow();
  window->show();
  for (int i = 0; i < kGroups; ++i) program.RunLongJob("run" + std::to_string(i));
  program.StartPolls();
  RunWindowFor(3);
  {
    Probe probe;
    RunWindowFor(10);
    probe.Print("8 groups run");
  }
  JobRequest request;
  request.jobFile = deck;
  {
    Probe probe;
    program.App().Intake().Add(request);
    while (program.App().Intake().Busy()) RunWindowFor(0.05);
    probe.Print("the same, and a big deck is added");
  }
  JobOutput output;
  output.solverType = SolverKind::kLsDynaSingle;
  output.status = JobStatus::kAborted;
  output.folder = program.Scratch();
  output.jobFile = deck;
  output.messageFile = message;
  {
    Probe probe;
    program.App().Intake().Add(request);
    Fl::add_timeout(kReading, CloseInformation);
    OpenInformation(*window, output);
    probe.Print("the same, and a big message file is analysed");
  }
  program.StopPolls();
  return 0;
}
