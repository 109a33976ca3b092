// Runs the current group without a user, as the program's options ask for.
#ifndef KR_UI_WINDOW_AUTORUN_H
#define KR_UI_WINDOW_AUTORUN_H

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/JobGroup.h"
#include "ui/report/ReportWriter.h"
#include "ui/window/Flx_AppWnd.h"
#include "ui/window/ProgramOptions.h"

// Submits the current group when the jobs of the command line are in it, with --restore all groups
// that have something to run, watches them until their queues have ended, writes the report and
// ends the program, each as far as it was asked for. What went wrong is the program's exit code.
// Interface thread.
class AutoRun {
 public:
  // All outlive the object.
  AutoRun(Application& application, Flx_AppWnd& window, const ProgramOptions& options);
  ~AutoRun();

  // After each look at the hand-over file.
  void AfterTick();

  // Something other than the user wants the program to end, before it does.
  void Interrupted();
  // The window is gone, whyever.
  void Conclude();

 private:
  static void Look(void* self);
  bool JobsAreIn();
  void Submit();
  void ChooseGroups();
  bool Ended();
  bool Ended(JobGroup& group) const;
  void Finish();
  void TakeReport();
  void Leave();
  void Fail();
  void TakeAllGroups();
  bool AllFinished() const;

  Application& application_;
  Flx_AppWnd& window_;
  const ProgramOptions options_;
  const std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
  std::vector<std::shared_ptr<JobGroup>> groups_;  // the submitted ones
  std::optional<ReportWriter> writer_;
  bool done_ = false;
};

#endif
