#include "ui/monitor/MonitorCharts.h"

#include <FL/Fl.H>

#include <algorithm>
#include <utility>

#include "ui/fltk/ChartScale.h"
#include "ui/fltk/Sizes.h"
#include "ui/fltk/Theme.h"

namespace {

enum ChartPlace { kTimeStep, kEnergies, kRatio, kMass, kProgress, kDisk, kCharts };

// In the order of ChartPlace.
constexpr const char* kTitles[kCharts] = {"mon_time_step", "mon_energies", "mon_ratio",
                                          "mon_mass",      "mon_progress", "mon_disk"};

constexpr int kColumns = 3;
constexpr double kMegabyte = 1024.0 * 1024.0;

ChartValues Two(double first, double second) {
  return std::make_shared<const std::vector<double>>(std::vector<double>{first, second});
}

}  // namespace

MonitorCharts::MonitorCharts(int x, int y, int w, int h, const TextTable& texts)
    : Fl_Group(x, y, w, h), texts_(texts) {
  const Chart::Texts words = {texts.Get("mon_whole"), texts.Get("mon_whole_tip"),
                              texts.Get("mon_enlarge_tip")};
  for (int i = 0; i < kCharts; ++i) {
    auto* chart = new Chart(texts.Get(kTitles[i]), words);
    chart->OnEnlarge = [this, i] {
      ShowAlone(alone_ == i ? -1 : i);
      if (OnAlone) OnAlone();
    };
    charts_.push_back(chart);
  }
  end();
  resizable(nullptr);
  LayOut();
}

std::vector<std::string> MonitorCharts::Titles(const TextTable& texts) {
  std::vector<std::string> titles;
  for (const char* key : kTitles) titles.push_back(texts.Get(key));
  return titles;
}

void MonitorCharts::resize(int x, int y, int w, int h) {
  Fl_Widget::resize(x, y, w, h);
  LayOut();
}

void MonitorCharts::LayOut() {
  const int rows = kCharts / kColumns;
  const int width = (w() - (kColumns - 1) * Sizes::kGap) / kColumns;
  const int height = (h() - (rows - 1) * Sizes::kGap) / rows;
  for (int i = 0; i < kCharts; ++i) {
    Chart* chart = charts_[static_cast<std::size_t>(i)];
    if (alone_ >= 0) {
      chart->resize(x(), y(), w(), h());
      i == alone_ ? chart->show() : chart->hide();
      continue;
    }
    const int column = i % kColumns;
    const int left = x() + column * (width + Sizes::kGap);
    const bool isLast = column == kColumns - 1;
    chart->resize(left, y() + i / kColumns * (height + Sizes::kGap),
                  isLast ? x() + w() - left : width, height);
    chart->show();
  }
}

void MonitorCharts::ShowAlone(int chart) {
  if (chart == alone_) return;
  alone_ = chart;
  LayOut();
  if (alone_ >= 0) charts_[static_cast<std::size_t>(alone_)]->take_focus();
  redraw();
}

void MonitorCharts::ShowOver(bool clock) {
  if (clock == overClock_) return;
  overClock_ = clock;
  Fill();
}

void MonitorCharts::Show(const std::shared_ptr<const RunPicture>& picture, bool runsDeck,
                         const std::string& none) {
  const auto curvesOf = [](const std::shared_ptr<const RunPicture>& one) {
    return one ? one->curves : nullptr;
  };
  if (picture == picture_ && runsDeck == runsDeck_ && none == none_) return;
  const bool sameCurves =
      picture && curvesOf(picture) == curvesOf(picture_) && runsDeck == runsDeck_ && none == none_;
  picture_ = picture;
  runsDeck_ = runsDeck;
  none_ = none;
  sameCurves ? FillProgress() : Fill();
}

ChartCurve MonitorCharts::Curve(const char* name, Fl_Color color, Quantity quantity) const {
  const RunCurves& curves = *picture_->curves;
  const ChartValues& values = curves.values[static_cast<std::size_t>(quantity)];
  return {texts_.Get(name), color, overClock_ ? curves.clock : curves.time, values};
}

// Something of it was read: what is missing is missing for a reason.
bool MonitorCharts::HasRun() const {
  if (!picture_ || !picture_->isWhole) return false;
  return runsDeck_ ? !picture_->curves->cycles.empty()
                   : picture_->files.kind != RunFiles::Kind::kNone;
}

void MonitorCharts::Fill() {
  const ChartAxis clock = {texts_.Get("mon_axis_clock"), texts_.Get("mon_over_clock"), true};
  const ChartAxis time = {texts_.Get("mon_axis_time_unit"), texts_.Get("mon_over_time")};
  const ChartAxis& over = overClock_ ? clock : time;
  const auto fill = [&](ChartPlace place, const char* unit, std::vector<ChartCurve> curves,
                        const char* hint) {
    Chart& chart = *charts_[place];
    chart.SetAxes(over, {texts_.Get(unit), {}});
    std::erase_if(curves, [](const ChartCurve& curve) { return !curve.y || !curve.x; });
    const bool isWritten = std::any_of(curves.begin(), curves.end(), [](const ChartCurve& curve) {
      return !curve.y->empty() && IsEmpty(RangeOf(*curve.y));
    });
    chart.SetCurves(std::move(curves));
    // There are some, but none that a chart has a place for.
    const char* const better = runsDeck_ ? isWritten ? "mon_none_finite" : hint : "mon_none_solver";
    chart.SetHint(HasRun() ? texts_.Get(better) : none_);
  };
  std::vector<ChartCurve> step, energies, ratio, mass;
  if (picture_) {
    step = {Curve("mon_time_step", Theme::kCurve1, Quantity::kTimeStep)};
    energies = {Curve("mon_kinetic", Theme::kCurve1, Quantity::kKineticEnergy),
                Curve("mon_internal", Theme::kCurve2, Quantity::kInternalEnergy),
                Curve("mon_hourglass", Theme::kCurve3, Quantity::kHourglassEnergy),
                Curve("mon_sliding", Theme::kCurve4, Quantity::kSlidingEnergy),
                Curve("mon_total", Theme::kText, Quantity::kTotalEnergy)};
    ratio = {Curve("mon_ratio", Theme::kCurve2, Quantity::kEnergyRatio)};
    mass = {Curve("mon_mass", Theme::kCurve4, Quantity::kAddedMass)};
  }
  fill(kTimeStep, "mon_unit_deck", std::move(step), "mon_none_states");
  fill(kEnergies, "mon_unit_deck", std::move(energies), "mon_none_states");
  fill(kRatio, "mon_unit_ratio", std::move(ratio), "mon_none_states");
  fill(kMass, "mon_unit_percent", std::move(mass), "mon_none_mass");
  charts_[kProgress]->SetAxes(clock, {texts_.Get("mon_unit_deck"), {}});
  const std::string& none = HasRun() && !runsDeck_ ? texts_.Get("mon_none_solver") : none_;
  charts_[kProgress]->SetHint(none);
  charts_[kDisk]->SetAxes(over, {texts_.Get("mon_unit_mb"), {}});
  const bool isEarlierCase =
      picture_ && picture_->shown.caseNumber < static_cast<int>(picture_->cases.size());
  const char* const noDisk = isEarlierCase ? "mon_none_disk_case" : "mon_none_disk";
  charts_[kDisk]->SetHint(HasRun() && runsDeck_ ? texts_.Get(noDisk) : none);
  FillProgress();
  FillDisk();
}

// The estimate moves with each second, new lines or not.
void MonitorCharts::FillProgress() {
  std::vector<ChartCurve> curves;
  if (picture_ && !picture_->curves->pointTime->empty()) {
    const RunCurves& run = *picture_->curves;
    const RunNews& news = picture_->shown;
    const double reached = run.pointTime->back();
    const double clock = run.pointClock->back();
    double last = clock;
    curves.push_back({texts_.Get("mon_axis_time"), Theme::kCurve1, run.pointClock, run.pointTime});
    // A case that has ended has none, though the run goes on.
    const bool isAhead = picture_->isRunning && news.caseSecondsLeft.value_or(0) > 0;
    if (isAhead && news.endTime && news.started) {
      last = std::max(clock, static_cast<double>(picture_->now - *news.started)) +
             *news.caseSecondsLeft;
      curves.push_back({texts_.Get("mon_estimate"), Theme::kCurve2, Two(clock, last),
                        Two(reached, *news.endTime), true});
    }
    if (news.endTime) {
      curves.push_back({texts_.Get("mon_end_time"), Theme::kMuted, Two(0, last),
                        Two(*news.endTime, *news.endTime), true});
    }
  }
  charts_[kProgress]->SetCurves(std::move(curves));
}

void MonitorCharts::FillDisk() {
  std::vector<ChartCurve> curves;
  if (picture_ && !picture_->curves->diskBytes->empty()) {
    const RunCurves& run = *picture_->curves;
    auto sizes = std::make_shared<std::vector<double>>(*run.diskBytes);
    for (double& size : *sizes) size /= kMegabyte;
    curves.push_back({texts_.Get("mon_disk"), Theme::kCurve3,
                      overClock_ ? run.diskClock : run.diskTime, std::move(sizes)});
  }
  charts_[kDisk]->SetCurves(std::move(curves));
}
