// The charts of a run.
#ifndef KR_UI_MONITOR_MONITORCHARTS_H
#define KR_UI_MONITOR_MONITORCHARTS_H

#include <FL/Fl_Group.H>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "progress/RunReader.h"
#include "ui/fltk/Chart.h"
#include "ui/text/TextTable.h"

// All in rows, or one alone. Interface thread.
class MonitorCharts : public Fl_Group {
 public:
  // The texts outlive it.
  MonitorCharts(int x, int y, int w, int h, const TextTable& texts);

  // Takes over what was read; null: nothing yet. `none` stands where a chart has nothing to show
  // and there is no better reason.
  void Show(const std::shared_ptr<const RunPicture>& picture, bool runsDeck,
            const std::string& none);
  void ShowOver(bool clock);  // else the problem time

  static std::vector<std::string> Titles(const TextTable& texts);
  // By its place among the titles; -1: all.
  void ShowAlone(int chart);
  int Alone() const { return alone_; }
  std::function<void()> OnAlone;  // the user has chosen another one

  void resize(int x, int y, int w, int h) override;

 private:
  void LayOut();
  bool HasRun() const;
  void Fill();
  void FillProgress();
  void FillDisk();
  ChartCurve Curve(const char* name, Fl_Color color, Quantity quantity) const;

  const TextTable& texts_;
  std::vector<Chart*> charts_;
  std::shared_ptr<const RunPicture> picture_;
  bool runsDeck_ = true;
  bool overClock_ = false;
  std::string none_;
  int alone_ = -1;
};

#endif
