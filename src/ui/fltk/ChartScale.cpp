#include "ui/fltk/ChartScale.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <optional>

namespace {

constexpr double kMostValue = 1e300;
constexpr double kLeastWidth = 1e-290;
constexpr double kLeastShare = 1e-11;  // of the values: more digits than that have no meaning
constexpr double kFlatMargin = 0.05;   // of the value around one that never changes
constexpr double kFarPixel = 1e9;
constexpr std::size_t kMostSteps = 64;

constexpr int kPlainDigits = 4;       // numbers up to 9999 are written out,
constexpr double kPlainLeast = 1e-2;  // and those from here on

bool IsFlat(const ChartRange& range) {
  const double most = std::max(std::abs(range.low), std::abs(range.high));
  return range.Width() < std::max(kLeastShare * most, kLeastWidth);
}

ChartTicks TicksAt(const ChartRange& range, double step, int most) {
  ChartTicks ticks;
  const double first = std::ceil(range.low / step - 1e-9);
  for (int i = 0; i < most; ++i) {
    const double value = (first + i) * step;
    if (value > range.high + 1e-9 * step) break;
    ticks.ticks.push_back({value == 0 ? 0 : value, {}});
  }
  return ticks;
}

std::string Fixed(double value, int decimals) {
  char text[64];
  std::snprintf(text, sizeof text, "%.*f", decimals, value);
  return text;
}

double RoundStep(double least) {
  const double power = std::pow(10, std::floor(std::log10(least)));
  for (const double factor : {1.0, 2.0, 5.0}) {
    if (factor * power >= least * (1 - 1e-9)) return factor * power;
  }
  return 10 * power;
}

// One pixel's column of a curve while its points come in.
struct PixelColumn {
  struct Point {
    double x, y;
    std::size_t order;
  };
  void Take(const Point& point) {
    if (!first) first = lowest = highest = point;
    if (point.y < lowest->y) lowest = point;
    if (point.y > highest->y) highest = point;
    last = point;
  }
  // In the order in which they came.
  template <typename Visit>
  void HandOut(const Visit& visit) {
    if (!first) return;
    if (lowest->order > highest->order) std::swap(lowest, highest);
    std::size_t behind = 0;
    for (const auto& point : {first, lowest, highest, last}) {
      if (point->order >= behind) visit(point->x, point->y);
      behind = point->order + 1;
    }
    first.reset();
  }
  std::optional<Point> first, lowest, highest, last;
};

// Draws lines into a rectangle and cuts off what lies outside.
class Cutter {
 public:
  Cutter(int width, int height) : right_(width), bottom_(height) {}

  void LineTo(double x, double y) {
    if (!started_) {
      if (IsInside(x, y)) Put(x, y, true);
      // A point alone outside is not seen; the line from it may be.
    } else {
      Segment(x, y);
    }
    lastX_ = x;
    lastY_ = y;
    started_ = true;
  }
  void Interrupt() { started_ = false; }
  std::vector<ChartPixel> Take() { return std::move(pixels_); }

 private:
  bool IsInside(double x, double y) const {
    return x >= 0 && x <= right_ && y >= 0 && y <= bottom_;
  }

  void Put(double x, double y, bool begins) {
    pixels_.push_back({static_cast<float>(x), static_cast<float>(y), begins});
  }

  // The part of the way from the last point that lies inside.
  void Segment(double x, double y) {
    const double dx = x - lastX_;
    const double dy = y - lastY_;
    double from = 0;
    double to = 1;
    const auto cut = [&](double step, double room) {
      if (step == 0) return room >= 0;
      const double at = room / step;
      if (step < 0) from = std::max(from, at);
      if (step > 0) to = std::min(to, at);
      return from <= to;
    };
    if (!cut(-dx, lastX_) || !cut(dx, right_ - lastX_) || !cut(-dy, lastY_) ||
        !cut(dy, bottom_ - lastY_)) {
      return;
    }
    if (from > 0) Put(lastX_ + from * dx, lastY_ + from * dy, true);
    Put(lastX_ + to * dx, lastY_ + to * dy, false);
  }

  const double right_, bottom_;
  bool started_ = false;
  double lastX_ = 0, lastY_ = 0;
  std::vector<ChartPixel> pixels_;
};

}  // namespace

bool HasPlace(double value) {
  return std::abs(value) <= kMostValue;  // false for NaN
}

ChartRange RangeOf(std::span<const double> values) {
  ChartRange range{std::numeric_limits<double>::infinity(),
                   -std::numeric_limits<double>::infinity()};
  for (const double value : values) {
    if (!HasPlace(value)) continue;
    range.low = std::min(range.low, value);
    range.high = std::max(range.high, value);
  }
  return range;
}

ChartRange Joined(const ChartRange& one, const ChartRange& other) {
  return {std::min(one.low, other.low), std::max(one.high, other.high)};
}

bool IsEmpty(const ChartRange& range) {
  return !(range.high >= range.low);
}

ChartRange WidenedRange(ChartRange range, double margin) {
  if (IsEmpty(range)) return {0, 1};
  if (IsFlat(range)) {
    const double most = std::max(std::abs(range.low), std::abs(range.high));
    const double pad = most < kLeastWidth / kFlatMargin ? 1 : kFlatMargin * most;
    return {range.low - pad, range.high + pad};
  }
  const double pad = margin * range.Width();
  return {range.low - pad, range.high + pad};
}

ChartTicks NumberTicks(const ChartRange& range, int most) {
  if (most < 1 || IsEmpty(range) || IsFlat(range)) return {};
  double step = RoundStep(range.Width() / most);
  ChartTicks ticks = TicksAt(range, step, most + 1);
  if (ticks.ticks.size() < 2) {
    step = RoundStep(range.Width() / (2 * most));
    ticks = TicksAt(range, step, 2 * most + 1);
  }
  const double biggest = std::max(std::abs(range.low), std::abs(range.high));
  const int magnitude = static_cast<int>(std::floor(std::log10(biggest)));
  if (magnitude >= kPlainDigits || biggest < kPlainLeast) {
    // Steps of three: milli, kilo, mega.
    ticks.exponent = 3 * static_cast<int>(std::floor(magnitude / 3.0));
  }
  const int stepPower = static_cast<int>(std::floor(std::log10(step) + 1e-9));
  const int decimals = std::clamp(ticks.exponent - stepPower, 0, 15);
  for (ChartTick& tick : ticks.ticks) {
    tick.label = Fixed(tick.value / std::pow(10, ticks.exponent), decimals);
  }
  return ticks;
}

ChartTicks ClockTicks(const ChartRange& range, int most) {
  static constexpr std::array kSteps = {1,   2,   5,    10,   15,   30,    60,    120,   300,
                                        600, 900, 1800, 3600, 7200, 10800, 21600, 43200, 86400};
  if (most < 1 || IsEmpty(range)) return {};
  const double least = range.Width() / most;
  double step = 86400 * RoundStep(std::max(least / 86400, 1.0));
  for (const int whole : kSteps) {
    if (whole < least) continue;
    step = whole;
    break;
  }
  ChartTicks ticks = TicksAt(range, step, most + 1);
  for (ChartTick& tick : ticks.ticks) tick.label = ClockText(tick.value, step < 60);
  return ticks;
}

std::string ClockText(double seconds, bool withSeconds) {
  constexpr double kMost = 1e15;
  const auto whole =
      static_cast<std::int64_t>(std::floor(std::clamp(std::abs(seconds), 0.0, kMost)));
  char text[64];
  std::snprintf(text, sizeof text, "%s%lld:%02d", seconds < 0 ? "-" : "",
                static_cast<long long>(whole / 3600), static_cast<int>(whole / 60 % 60));
  std::string clock = text;
  if (!withSeconds) return clock;
  std::snprintf(text, sizeof text, ":%02d", static_cast<int>(whole % 60));
  return clock + text;
}

std::string ValueText(double value) {
  char text[64];
  std::snprintf(text, sizeof text, "%.6g", value);
  return text;
}

std::vector<ChartPixel> CurvePixels(std::span<const double> x, std::span<const double> y,
                                    const ChartRange& xRange, const ChartRange& yRange, int width,
                                    int height) {
  if (width < 1 || height < 1 || !(xRange.Width() > 0) || !(yRange.Width() > 0)) return {};
  const double scaleX = width / xRange.Width();
  const double scaleY = height / yRange.Width();
  Cutter cutter(width, height);
  PixelColumn column;
  int at = 0;
  const auto handOut = [&] {
    column.HandOut([&](double px, double py) { cutter.LineTo(px, py); });
  };
  const std::size_t points = std::min(x.size(), y.size());
  for (std::size_t i = 0; i < points; ++i) {
    if (!HasPlace(x[i]) || !HasPlace(y[i])) {
      handOut();
      cutter.Interrupt();
      continue;
    }
    const double px = std::clamp((x[i] - xRange.low) * scaleX, -kFarPixel, kFarPixel);
    const double py = std::clamp((yRange.high - y[i]) * scaleY, -kFarPixel, kFarPixel);
    // One column stands for all that lies beside the plot on either side.
    const int place = px < 0 ? -1 : px > width ? width + 1 : static_cast<int>(px);
    if (place != at) {
      handOut();
      at = place;
    }
    column.Take({px, py, i});
  }
  handOut();
  return cutter.Take();
}

std::size_t NearestPoint(std::span<const double> x, std::span<const double> y, double at,
                         const ChartRange& range) {
  const std::size_t points = std::min(x.size(), y.size());
  std::size_t nearest = points;
  double least = std::numeric_limits<double>::infinity();
  for (std::size_t i = 0; i < points; ++i) {
    if (!HasPlace(x[i]) || !HasPlace(y[i]) || x[i] < range.low || x[i] > range.high) continue;
    const double distance = std::abs(x[i] - at);
    if (distance >= least) continue;
    least = distance;
    nearest = i;
  }
  return nearest == points ? x.size() : nearest;
}

bool ChartZoom::Into(const View& view) {
  const auto canBeSeen = [](const ChartRange& range) {
    return HasPlace(range.low) && HasPlace(range.high) && !IsEmpty(range) && !IsFlat(range);
  };
  if (views_.size() >= kMostSteps || !canBeSeen(view.x) || !canBeSeen(view.y)) return false;
  views_.push_back(view);
  return true;
}

void ChartZoom::Back() {
  if (!views_.empty()) views_.pop_back();
}
