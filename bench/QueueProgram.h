// The program with files of its own and the stand-in solver, for measurements of its window.
#ifndef KR_BENCH_QUEUEPROGRAM_H
#define KR_BENCH_QUEUEPROGRAM_H

#include <FL/Fl.H>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "core/Application.h"
#include "ui/fltk/Theme.h"
#include "ui/text/TextTable.h"
#include "ui/window/Flx_AppWnd.h"
#include "ui/window/QueueNotes.h"

class QueueProgram {
 public:
  QueueProgram() {
    scratch_ = (std::filesystem::temp_directory_path() / "window-bench-XXXXXX").string();
    if (mkdtemp(scratch_.data()) == nullptr) return;
    setenv("XDG_CONFIG_HOME", scratch_.c_str(), 1);
    setenv("KESTRUN_HANDOVER_FOLDER", (scratch_ + "/handover").c_str(), 1);
    const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe");
    solver_ = (self.parent_path() / "standin_solver").string();
    Fl::lock();
    Theme::Apply();
    const char* arguments[] = {self.c_str()};
    if (!application_.Initialise(1, arguments)) return;
    application_.SettingsAndFiles().SetSolverPath(SolverKind::kLsDynaSingle, solver_);
    FillTexts(0, application_.Title(), texts_);
    ready_ = true;
  }
  ~QueueProgram() {
    Fl::remove_timeout(Tick, this);
    for (int i = 0; ready_ && i < application_.Manager().GroupCount(); ++i) {
      application_.Manager().GroupAt(i)->Stop();
    }
    application_.Shutdown();
    std::error_code ignored;
    std::filesystem::remove_all(scratch_, ignored);
  }
  QueueProgram(const QueueProgram&) = delete;
  QueueProgram& operator=(const QueueProgram&) = delete;

  bool Ready() const { return ready_; }
  const std::string& Scratch() const { return scratch_; }
  const std::string& Solver() const { return solver_; }
  Application& App() { return application_; }
  std::unique_ptr<Flx_AppWnd> MakeWindow() {
    return std::make_unique<Flx_AppWnd>(application_, notes_, texts_);
  }

  std::shared_ptr<JobFile> MakeJob(const std::string& deck) {
    auto job = std::make_shared<JobFileDyna>(application_.SettingsAndFiles().Snapshot());
    job->jobFile = deck;
    job->pause = 0;
    return job;
  }

  // A new group whose one job runs for an hour in a folder of its own.
  void RunLongJob(const std::string& name) {
    const std::string folder = scratch_ + "/" + name;
    std::filesystem::create_directory(folder);
    std::ofstream(folder + "/long.k") << kLongDeck;
    JobGroupManager& manager = application_.Manager();
    const auto group = manager.GroupAt(manager.AddGroup(name));
    group->AddJob(MakeJob(folder + "/long.k"));
    group->Submit();
  }

  void StartPolls() { Fl::add_timeout(Application::kPollSeconds, Tick, this); }
  void StopPolls() { Fl::remove_timeout(Tick, this); }

  static constexpr char kLongDeck[] =
      "$ standin: run 3600\n*KEYWORD\n*CONTROL_TERMINATION\n       1.0\n*END\n";

 private:
  static void Tick(void* self) {
    static_cast<QueueProgram*>(self)->application_.Tick();
    Fl::repeat_timeout(Application::kPollSeconds, Tick, self);
  }

  std::string scratch_;
  std::string solver_;
  QueueNotes notes_;
  Application application_;
  TextTable texts_;
  bool ready_ = false;
};

inline void RunWindowFor(double seconds) {
  using Clock = std::chrono::steady_clock;
  const Clock::time_point end = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                                   std::chrono::duration<double>(seconds));
  while (Clock::now() < end) {
    Fl::wait(std::chrono::duration<double>(end - Clock::now()).count());
  }
}

#endif
