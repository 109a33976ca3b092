// What a chart computes.
#include "ui/fltk/ChartScale.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

std::string Labels(const ChartTicks& ticks) {
  std::string labels;
  for (const ChartTick& tick : ticks.ticks) labels += (labels.empty() ? "" : " ") + tick.label;
  return labels + (ticks.exponent == 0 ? "" : " E" + std::to_string(ticks.exponent));
}

TEST(ChartScaleTest, AxesHaveRoundNumbers) {
  EXPECT_EQ(Labels(NumberTicks({0, 0.97}, 5)), "0.0 0.2 0.4 0.6 0.8");
  EXPECT_EQ(Labels(NumberTicks({-1, 1}, 4)), "-1.0 -0.5 0.0 0.5 1.0");
  EXPECT_EQ(Labels(NumberTicks({0, 52000}, 6)), "0 10 20 30 40 50 E3");
  EXPECT_EQ(Labels(NumberTicks({1.1e-7, 2.42e-6}, 4)), "1 2 E-6");
  EXPECT_EQ(Labels(NumberTicks({1234.56781, 1234.56789}, 2)),
            "1234.56782 1234.56784 1234.56786 1234.56788");
  EXPECT_EQ(Labels(ClockTicks({0, 7300}, 5)), "0:00 0:30 1:00 1:30 2:00");
  EXPECT_EQ(Labels(ClockTicks({0, 65}, 4)), "0:00:00 0:00:30 0:01:00");
  // What never changes, and what a hostile file holds.
  for (const ChartRange& range : {ChartRange{0, 0},
                                  ChartRange{5, 5},
                                  ChartRange{-1e300, 1e300},
                                  ChartRange{4e-320, 4e-320},
                                  RangeOf({}),
                                  {1e-310, 2e-310}}) {
    const ChartRange shown = WidenedRange(range, 0.05);
    const ChartTicks ticks = NumberTicks(shown, 4);
    EXPECT_GE(ticks.ticks.size(), 1u) << range.low;
    EXPECT_LE(ticks.ticks.size(), 9u) << range.low;
    for (const ChartTick& tick : ticks.ticks) {
      EXPECT_TRUE(tick.value >= shown.low && tick.value <= shown.high) << tick.value;
    }
  }
  EXPECT_EQ(RangeOf(std::vector{kNaN, 2.0, kInf, -1.0, -kInf}), (ChartRange{-1, 2}));
}

TEST(ChartScaleTest, AHundredThousandPointsKeepTheirPeaks) {
  std::vector<double> x, y;
  for (int i = 0; i < 100000; ++i) {
    x.push_back(i);
    y.push_back(std::sin(i * 0.001));
  }
  y[31415] = 5;
  y[31416] = -7;
  const auto pixels = CurvePixels(x, y, {0, 99999}, {-10, 10}, 400, 200);
  EXPECT_LE(pixels.size(), 4u * 402);
  const auto byY = [](const ChartPixel& one, const ChartPixel& other) { return one.y < other.y; };
  const auto [top, bottom] = std::minmax_element(pixels.begin(), pixels.end(), byY);
  EXPECT_NEAR(top->y, 50, 0.01);
  EXPECT_NEAR(bottom->y, 170, 0.01);
  EXPECT_TRUE(std::is_sorted(
      pixels.begin(), pixels.end(),
      [](const ChartPixel& one, const ChartPixel& other) { return one.x < other.x; }));
  EXPECT_EQ(NearestPoint(x, y, 777.4, {0, 1000}), 777u);
  EXPECT_EQ(NearestPoint(x, y, 777.4, {777.2, 779}), 778u) << "of those that are shown";
}

TEST(ChartScaleTest, LinesAreCutAtTheEdgesAndInterruptedWhereNothingIsKnown) {
  const auto pixels = [](std::vector<double> x, std::vector<double> y) {
    std::string text;
    for (const ChartPixel& pixel : CurvePixels(x, y, {0, 10}, {0, 10}, 100, 100)) {
      text += (pixel.begins ? "|" : " ") + std::to_string(std::lround(pixel.x)) + "," +
              std::to_string(std::lround(pixel.y));
    }
    return text;
  };
  EXPECT_EQ(pixels({-5, 15}, {-5, 15}), "|0,100 100,0") << "both ends lie outside";
  EXPECT_EQ(pixels({1, 2, 3, 4, 5}, {1, 2, kNaN, 4, kInf}), "|10,90 20,80|40,60");
  EXPECT_EQ(pixels({1, 5, 9}, {5, 25, 5}), "|10,50 20,0|80,0 90,50");
  EXPECT_EQ(pixels({-5, -5, 15, 15}, {0, 20, 20, 0}), "");
  EXPECT_EQ(pixels({5, 5, 1e299}, {5, 1e300, -1e300}).substr(0, 12), "|50,50 50,0");
}

TEST(ChartScaleTest, ZoomLeadsInAndBack) {
  ChartZoom zoom;
  EXPECT_FALSE(zoom.IsZoomed());
  EXPECT_TRUE(zoom.Into({{0, 1}, {0, 1}}));
  EXPECT_TRUE(zoom.Into({{0.4, 0.5}, {0, 1}}));
  EXPECT_FALSE(zoom.Into({{0.4, 0.4 + 1e-15}, {0, 1}})) << "no digits are left to see";
  EXPECT_FALSE(zoom.Into({{kNaN, 1}, {0, 1}}));
  EXPECT_EQ(zoom.Current().x, (ChartRange{0.4, 0.5}));
  zoom.Back();
  EXPECT_EQ(zoom.Current().x, (ChartRange{0, 1}));
  zoom.Back();
  EXPECT_FALSE(zoom.IsZoomed());
}

}  // namespace
