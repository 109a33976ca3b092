// What a chart computes: ranges, round numbers for its axes, and which pixels a curve takes. Plain
// numbers without toolkit headers. Any thread.
#ifndef KR_UI_FLTK_CHARTSCALE_H
#define KR_UI_FLTK_CHARTSCALE_H

#include <cstddef>
#include <span>
#include <string>
#include <vector>

struct ChartRange {
  double low = 0;
  double high = 1;
  double Width() const { return high - low; }
  bool operator==(const ChartRange&) const = default;
};

// Values that are NaN, infinite, or too big to be computed with have no place in a chart.
bool HasPlace(double value);

// From the smallest to the biggest value that has a place. Empty (high below low) without any.
ChartRange RangeOf(std::span<const double> values);
ChartRange Joined(const ChartRange& one, const ChartRange& other);
bool IsEmpty(const ChartRange& range);

// A range that can be drawn over: never flat or empty, with `margin` of its width more at both
// ends.
ChartRange WidenedRange(ChartRange range, double margin);

struct ChartTick {
  double value;
  std::string label;
};
struct ChartTicks {
  std::vector<ChartTick> ticks;  // from low to high
  int exponent = 0;              // labels are to be read times ten to this
};
// Round values (1, 2 or 5 times a power of ten) in the range, at most `most` and at least two where
// the range has room for them.
ChartTicks NumberTicks(const ChartRange& range, int most);
// Of seconds: whole seconds, minutes, hours or days, as "h:min", or "h:min:s" where minutes are too
// coarse.
ChartTicks ClockTicks(const ChartRange& range, int most);
std::string ClockText(double seconds, bool withSeconds);

// A value with six digits, as a cursor shows it.
std::string ValueText(double value);

// A place in a plot of `width` by `height` pixels, y downwards.
struct ChartPixel {
  float x, y;
  bool begins;  // no line leads here
};

// The line through the points as pixels. Where many points fall into a pixel's column, its first,
// lowest, highest and last stand for all, so no peak is lost and a curve costs at most four places
// a column. Points without a place interrupt the line; what lies outside of the plot is cut off.
std::vector<ChartPixel> CurvePixels(std::span<const double> x, std::span<const double> y,
                                    const ChartRange& xRange, const ChartRange& yRange, int width,
                                    int height);

// The point whose x is nearest to `at` of those in the range that have a place; size() when there
// is none.
std::size_t NearestPoint(std::span<const double> x, std::span<const double> y, double at,
                         const ChartRange& range);

// What is shown of a chart: all of it, or what the user has zoomed to, and the way back.
class ChartZoom {
 public:
  struct View {
    ChartRange x, y;
    bool operator==(const View&) const = default;
  };
  bool IsZoomed() const { return !views_.empty(); }
  const View& Current() const { return views_.back(); }  // only when zoomed

  // Between two corners; false when there is nothing more to see.
  bool Into(const View& view);
  void Back();  // one step
  void Out() { views_.clear(); }

 private:
  std::vector<View> views_;
};

#endif
