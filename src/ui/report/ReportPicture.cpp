#include "ui/report/ReportPicture.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

#include "ui/fltk/ChartScale.h"
#include "ui/text/FileText.h"

namespace {

constexpr int kWidth = 330;
constexpr int kHeight = 200;
constexpr int kLeft = 44;
constexpr int kTop = 36;
constexpr int kPlotWidth = kWidth - kLeft - 22;
constexpr int kPlotHeight = kHeight - kTop - 32;
constexpr int kPixel = 2;  // of the plot, for a column of points
constexpr double kMargin = 0.04;
constexpr int kMostTicks = 5;

struct Line {
  RunCurves::Values x, y;
  std::string label;
  const char* color;
};

std::string Number(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.1f", value);
  std::string number = text;
  if (number.ends_with(".0")) number.resize(number.size() - 2);
  return number;
}

std::string TextAt(double x, double y, const char* style, const std::string& text) {
  return "<text x=\"" + Number(x) + "\" y=\"" + Number(y) + "\" " + style + ">" + PageText(text) +
         "</text>";
}

// "M0 1L2 3": numbers without what a reader does not need, as there may be many.
std::string PathOf(const Line& line, const ChartRange& x, const ChartRange& y) {
  std::string path;
  for (const ChartPixel& pixel :
       CurvePixels(*line.x, *line.y, x, y, kPlotWidth / kPixel, kPlotHeight)) {
    path += (pixel.begins ? "M" : "L") + Number(kLeft + kPixel * static_cast<double>(pixel.x)) +
            " " + Number(kTop + static_cast<double>(pixel.y));
  }
  return path;
}

double PlaceOf(double value, const ChartRange& range) {
  return (value - range.low) / range.Width();
}

std::string Power(int exponent) {
  return exponent == 0 ? std::string()
                       : "\xC3\x97"
                         "10^" +
                             std::to_string(exponent);
}

std::string Axes(const ChartRange& x, const ChartRange& y, bool byClock, const std::string& xName) {
  std::string svg;
  const ChartTicks across = byClock ? ClockTicks(x, kMostTicks) : NumberTicks(x, kMostTicks);
  const ChartTicks up = NumberTicks(y, kMostTicks);
  for (const ChartTick& tick : up.ticks) {
    const double at = kTop + kPlotHeight * (1 - PlaceOf(tick.value, y));
    svg += "<path class=\"g\" d=\"M" + std::to_string(kLeft) + " " + Number(at) + "h" +
           std::to_string(kPlotWidth) + "\"/>" +
           TextAt(kLeft - 4, at + 3, "text-anchor=\"end\"", tick.label);
  }
  for (const ChartTick& tick : across.ticks) {
    const double at = kLeft + kPlotWidth * PlaceOf(tick.value, x);
    svg += "<path class=\"g\" d=\"M" + Number(at) + " " + std::to_string(kTop) + "v" +
           std::to_string(kPlotHeight) + "\"/>" +
           TextAt(at, kTop + kPlotHeight + 12, "text-anchor=\"middle\"", tick.label);
  }
  const std::string power = Power(across.exponent);
  svg += TextAt(kLeft + kPlotWidth / 2, kHeight - 5, "text-anchor=\"middle\"",
                power.empty() ? xName : xName + " " + power);
  if (up.exponent != 0) svg += TextAt(2, kTop - 9, "text-anchor=\"start\"", Power(up.exponent));
  return svg;
}

// Empty without a line that could be seen.
std::string Picture(const std::string& title, std::vector<Line> lines, bool byClock,
                    const std::string& xName) {
  // A single state is no line, nor are several of one and the same time.
  std::erase_if(lines, [](const Line& line) {
    return !line.x || !line.y || line.x->size() != line.y->size() || IsEmpty(RangeOf(*line.y)) ||
           !(RangeOf(*line.x).Width() > 0);
  });
  if (lines.empty()) return {};
  ChartRange x = RangeOf(*lines.front().x);
  ChartRange y = RangeOf(*lines.front().y);
  for (const Line& line : lines) {
    x = Joined(x, RangeOf(*line.x));
    y = Joined(y, RangeOf(*line.y));
  }
  x = WidenedRange(x, 0);
  y = WidenedRange(y, kMargin);
  std::string svg = "<svg viewBox=\"0 0 " + std::to_string(kWidth) + " " + std::to_string(kHeight) +
                    "\" role=\"img\" aria-label=\"" + PageText(title) + "\">" +
                    TextAt(2, 12, "class=\"t\"", title) + Axes(x, y, byClock, xName);
  std::string legend;
  for (const Line& line : lines) {
    svg += "<path class=\"c\" stroke=\"" + std::string(line.color) + "\" d=\"" +
           PathOf(line, x, y) + "\"/>";
    legend += "<tspan fill=\"" + std::string(line.color) + "\" dx=\"" +
              (legend.empty() ? "0" : "10") + "\">" + PageText(line.label) + "</tspan>";
  }
  if (lines.size() > 1)
    svg += "<text x=\"" + std::to_string(kLeft) + "\" y=\"26\">" + legend + "</text>";
  return svg + "</svg>\n";
}

}  // namespace

std::string PageText(const std::string& text) {
  constexpr char kReplacement[] = "\xEF\xBF\xBD";
  std::string page, rest;
  std::string shown = ShownText(text, rest);
  if (!rest.empty()) shown += kReplacement;
  for (const char c : shown) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '&') {
      page += "&amp;";
    } else if (c == '<') {
      page += "&lt;";
    } else if (c == '>') {
      page += "&gt;";
    } else if (c == '"') {
      page += "&quot;";
    } else if (c == '\'') {
      page += "&#39;";
    } else if ((byte < ' ' && c != '\n') || byte == 0x7F) {
      page += ' ';
    } else {
      page += c;
    }
  }
  return page;
}

std::string ReportPictures(const RunCurves& curves, const TextTable& texts) {
  const auto of = [&](Quantity quantity) {
    return curves.values[static_cast<std::size_t>(quantity)];
  };
  const std::string overTime = texts.Get("mon_axis_time");
  return Picture(
             texts.Get("mon_energies"),
             {{curves.time, of(Quantity::kTotalEnergy), texts.Get("mon_total"), "#344054"},
              {curves.time, of(Quantity::kInternalEnergy), texts.Get("mon_internal"), "#1570ef"},
              {curves.time, of(Quantity::kKineticEnergy), texts.Get("mon_kinetic"), "#067647"},
              {curves.time, of(Quantity::kHourglassEnergy), texts.Get("mon_hourglass"), "#b54708"}},
             false, overTime) +
         Picture(texts.Get("mon_time_step"),
                 {{curves.time, of(Quantity::kTimeStep), {}, "#1570ef"}}, false, overTime) +
         Picture(texts.Get("mon_progress"), {{curves.pointClock, curves.pointTime, {}, "#1570ef"}},
                 true, texts.Get("mon_axis_clock"));
}
