// The switches that a solver understands while it runs.
#ifndef KR_UI_MONITOR_SWITCHPANEL_H
#define KR_UI_MONITOR_SWITCHPANEL_H

#include <FL/Fl_Box.H>
#include <FL/Fl_Button.H>
#include <FL/Fl_Group.H>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/SenseSwitch.h"
#include "progress/RunReader.h"
#include "ui/monitor/MonitoredRun.h"
#include "ui/text/TextTable.h"

// A button each. What was asked for, here or by somebody else, waits in the folder until the solver
// has taken it; until then nothing else can be asked, but it can be withdrawn. Files are written on
// the reader's thread.
// Interface thread.
class SwitchPanel : public Fl_Group {
 public:
  static constexpr int kWidth = 330;
  static constexpr int kHeight = 164;

  // All outlive it. `language` as the application has it.
  SwitchPanel(int x, int y, RunReader& reader, const TextTable& texts, int language);

  // How the run stands now. `picture` may be null.
  void Show(const MonitoredRun::State& run, const RunPicture* picture);

 private:
  struct Result;  // of what the reader's thread writes

  void Press(std::size_t button);
  bool AskFirst(SolverSwitch what, double& endTime);
  void Withdraw();
  void Enable();
  void Tell();
  std::string RequestWords() const;

  RunReader& reader_;
  const TextTable& texts_;
  const int language_;
  std::vector<Fl_Button*> buttons_;
  Fl_Button* withdraw_ = nullptr;
  Fl_Box* note_ = nullptr;

  std::string folder_, name_;
  JobId job_ = JobId::kNone;
  bool canAsk_ = false;
  bool runsDeck_ = true;
  std::optional<LyingRequest> request_;  // that lies in the folder
  RunNews news_;

  std::string asked_;  // the words of the last request; empty: none
  std::string told_;   // how it ended
  std::chrono::steady_clock::time_point askedAt_;
  std::shared_ptr<Result> result_;
};

#endif
