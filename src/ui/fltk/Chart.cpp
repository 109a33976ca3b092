#include "ui/fltk/Chart.h"

#include <FL/Fl.H>
#include <FL/fl_draw.H>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

#include "ui/fltk/Labels.h"
#include "ui/fltk/Sizes.h"
#include "ui/fltk/Theme.h"
#include "ui/fltk/Tip.h"

namespace {

constexpr int kHeadHeight = 24;
constexpr int kLegendHeight = 16;
constexpr int kMark = 14;  // length of a curve's piece in the legend
constexpr int kPadding = 8;
constexpr int kTickLength = 4;
constexpr int kLabelHeight = 14;
constexpr int kButtonSize = 18;
constexpr int kPixelsATickX = 56;
constexpr int kPixelsAClockTick = 76;
constexpr int kPixelsATickY = 28;
constexpr int kLeastDrag = 5;
constexpr int kPoint = 5;          // size of one that has no line
constexpr double kMarginY = 0.06;  // of the curves' range, above and below
constexpr char kThickLine = 2;

std::string Superscript(int exponent) {
  return "\xC3\x97"
         "1E" +
         std::to_string(exponent);  // a multiplication sign
}

int TextWidth(const std::string& text) {
  return static_cast<int>(std::ceil(fl_width(text.c_str())));
}

void DrawText(const std::string& text, int x, int y, int w, int h, Fl_Align align) {
  fl_draw(text.c_str(), x, y, w, h, align, nullptr, 0);
}

}  // namespace

Chart::Chart(const std::string& title, const Texts& texts)
    : Fl_Widget(0, 0, 0, 0), title_(title), texts_(texts) {}

void Chart::SetAxes(const ChartAxis& x, const ChartAxis& y) {
  if (x.isClock != xAxis_.isClock) zoom_.Out();
  xAxis_ = x;
  yAxis_ = y;
  Changed();
}

void Chart::SetCurves(std::vector<ChartCurve> curves) {
  std::vector<Shown> shown;
  for (ChartCurve& curve : curves) {
    Shown next;
    const auto old = std::find_if(curves_.begin(), curves_.end(),
                                  [&](const Shown& one) { return one.curve.name == curve.name; });
    if (old != curves_.end()) next.on = old->on;
    next.x = RangeOf(*curve.x);
    next.y = RangeOf(*curve.y);
    next.curve = std::move(curve);
    shown.push_back(std::move(next));
  }
  curves_ = std::move(shown);
  Changed();
}

void Chart::SetHint(const std::string& hint) {
  if (hint == hint_) return;
  hint_ = hint;
  redraw();
}

void Chart::Changed() {
  isMade_ = false;
  redraw();
}

bool Chart::HasPoints() const {
  return std::any_of(curves_.begin(), curves_.end(), [](const Shown& one) {
    return !one.curve.isGuide && !IsEmpty(one.x) && !IsEmpty(one.y);
  });
}

ChartZoom::View Chart::View() const {
  if (zoom_.IsZoomed()) return zoom_.Current();
  ChartRange x = RangeOf({});
  ChartRange y = x;
  for (const Shown& one : curves_) {
    if (!one.on) continue;
    x = Joined(x, one.x);
    y = Joined(y, one.y);
  }
  ChartRange across = WidenedRange(x, 0);
  if (x.low >= 0) across.low = std::max(across.low, 0.0);  // no time is before the start
  return {across, WidenedRange(y, kMarginY)};
}

double Chart::ValueAtX(int px) const {
  return made_.view.x.low + made_.view.x.Width() * (px - plot_.x) / std::max(plot_.w, 1);
}

double Chart::ValueAtY(int py) const {
  return made_.view.y.high - made_.view.y.Width() * (py - plot_.y) / std::max(plot_.h, 1);
}

std::string Chart::Caption(const ChartAxis& axis, int exponent) const {
  return exponent == 0 ? axis.name : axis.name + "  " + Superscript(exponent);
}

// The entries stand in as many rows as they need.
void Chart::PlaceLegend() {
  legend_.assign(curves_.size(), {});
  if (curves_.size() < 2) return;
  fl_font(FL_HELVETICA, Sizes::kSmallFontSize);
  const int left = x() + kPadding;
  int at = left;
  int top = y() + kHeadHeight;
  for (std::size_t i = 0; i < curves_.size(); ++i) {
    const int width = kMark + 4 + TextWidth(curves_[i].curve.name) + 10;
    if (at > left && at + width > x() + w() - kPadding) {
      at = left;
      top += kLegendHeight;
    }
    legend_[i] = {at, top, width, kLegendHeight};
    at += width;
  }
}

void Chart::PlaceParts() {
  enlargeButton_ = {x() + w() - kButtonSize - 4, y() + 3, kButtonSize, kButtonSize};
  fl_font(FL_HELVETICA, Sizes::kSmallFontSize);
  const int whole = TextWidth(texts_.whole) + 12;
  wholeButton_ = {};
  if (zoom_.IsZoomed()) wholeButton_ = {enlargeButton_.x - whole - 4, y() + 3, whole, kButtonSize};
  PlaceLegend();
  int top = y() + kHeadHeight + 4;
  if (curves_.size() > 1) top = legend_.back().y + kLegendHeight + 4;
  const int bottom = y() + h() - 2 * kLabelHeight - kTickLength - 4;
  const ChartZoom::View view = View();
  const int height = std::max(bottom - top, 1);
  yTicks_ = yAxis_.isClock ? ClockTicks(view.y, std::max(height / kPixelsATickY, 2))
                           : NumberTicks(view.y, std::max(height / kPixelsATickY, 2));
  fl_font(FL_HELVETICA, Sizes::kSmallFontSize);
  int labels = 20;
  for (const ChartTick& tick : yTicks_.ticks) labels = std::max(labels, TextWidth(tick.label));
  const int left = x() + kPadding + labels + kTickLength + 3;
  const int right = x() + w() - kPadding - 10;
  plot_ = {left, top, std::max(right - left, 1), height};
  xTicks_ = xAxis_.isClock ? ClockTicks(view.x, std::max(plot_.w / kPixelsAClockTick, 2))
                           : NumberTicks(view.x, std::max(plot_.w / kPixelsATickX, 2));
  const Made now{plot_, view};
  if (isMade_ && now == made_) return;
  made_ = now;
  MakePixels();
}

void Chart::MakePixels() {
  for (Shown& one : curves_) {
    one.pixels.clear();
    if (one.on) {
      one.pixels = CurvePixels(*one.curve.x, *one.curve.y, made_.view.x, made_.view.y, plot_.w - 1,
                               plot_.h - 1);
    }
  }
  isMade_ = true;
}

void Chart::draw() {
  Theme::DrawRounded(x(), y(), w(), h(), Theme::kSurface, Theme::kLine);
  fl_push_clip(x() + 1, y() + 1, w() - 2, h() - 2);
  if (HasPoints()) {
    PlaceParts();
    DrawHead();
    DrawLegend();
    DrawAxes();
    DrawCurves();
    DrawZoomFrame();
    DrawCursor();
  } else {
    enlargeButton_ = wholeButton_ = plot_ = {};
    legend_.clear();
    DrawHead();
    fl_font(FL_HELVETICA, Sizes::kFontSize);
    fl_color(Theme::kMuted);
    const int width = w() - 4 * kPadding;
    DrawText(InLines(hint_, width, 6), x() + 2 * kPadding, y() + kHeadHeight, width,
             h() - 2 * kHeadHeight, FL_ALIGN_CENTER);
  }
  if (Fl::focus() == this) Theme::DrawFocus(x(), y(), w(), h());
  fl_pop_clip();
}

void Chart::DrawHead() {
  int right = x() + w() - kPadding;
  if (enlargeButton_.w > 0) right = enlargeButton_.x - 4;
  if (wholeButton_.w > 0) right = wholeButton_.x - 4;
  fl_font(FL_HELVETICA_BOLD, Sizes::kFontSize);
  fl_color(Theme::kText);
  const std::string title = FitHead(title_, right - x() - kPadding);
  DrawText(title, x() + kPadding, y() + 2, right - x() - kPadding, kHeadHeight - 4, FL_ALIGN_LEFT);
  const int behind = x() + kPadding + TextWidth(title) + 10;
  if (enlargeButton_.w == 0) return;
  fl_font(FL_HELVETICA, Sizes::kSmallFontSize);
  fl_color(Theme::kMuted);
  DrawText(FitHead(Caption(yAxis_, yTicks_.exponent), right - behind), behind, y() + 2,
           right - behind, kHeadHeight - 4, FL_ALIGN_LEFT);
  const bool pointed = isPointed_ && !isZooming_;
  DrawButton(enlargeButton_, {}, pointed && enlargeButton_.Has(pointX_, pointY_));
  fl_color(Theme::kMuted);
  const int inset = 5;
  fl_rect(enlargeButton_.x + inset, enlargeButton_.y + inset, kButtonSize - 2 * inset,
          kButtonSize - 2 * inset);
  fl_xyline(enlargeButton_.x + inset, enlargeButton_.y + inset + 1,
            enlargeButton_.x + kButtonSize - inset - 1);
  if (wholeButton_.w > 0)
    DrawButton(wholeButton_, texts_.whole, pointed && wholeButton_.Has(pointX_, pointY_));
}

void Chart::DrawButton(const Area& area, const std::string& label, bool hovered) {
  Theme::DrawRounded(area.x, area.y, area.w, area.h, hovered ? Theme::kHover : Theme::kSurface,
                     hovered ? Theme::kLine : Theme::kFaintLine);
  fl_color(Theme::kText);
  DrawText(label, area.x, area.y, area.w, area.h, FL_ALIGN_CENTER);
}

void Chart::DrawLegend() {
  if (curves_.size() < 2) return;
  fl_font(FL_HELVETICA, Sizes::kSmallFontSize);
  for (std::size_t i = 0; i < curves_.size(); ++i) {
    const Area& at = legend_[i];
    const Shown& one = curves_[i];
    const int middle = at.y + at.h / 2;
    fl_color(one.on ? one.curve.color : Theme::kLine);
    fl_line_style(one.curve.isGuide ? FL_DASH : FL_SOLID, one.curve.isGuide ? 1 : 3);
    fl_line(at.x, middle, at.x + kMark, middle);
    fl_line_style(0);
    const bool hovered = isPointed_ && !isZooming_ && at.Has(pointX_, pointY_);
    fl_color(one.on ? (hovered ? Theme::kAccent : Theme::kText) : Theme::kDisabledText);
    DrawText(one.curve.name, at.x + kMark + 4, at.y, at.w, at.h, FL_ALIGN_LEFT);
  }
}

void Chart::DrawAxes() {
  fl_font(FL_HELVETICA, Sizes::kSmallFontSize);
  const auto pixelX = [&](double value) {
    return plot_.x +
           static_cast<int>((value - made_.view.x.low) / made_.view.x.Width() * (plot_.w - 1));
  };
  const auto pixelY = [&](double value) {
    return plot_.y +
           static_cast<int>((made_.view.y.high - value) / made_.view.y.Width() * (plot_.h - 1));
  };
  for (const ChartTick& tick : yTicks_.ticks) {
    const int at = pixelY(tick.value);
    fl_color(Theme::kFaintLine);
    fl_xyline(plot_.x, at, plot_.x + plot_.w - 1);
    fl_color(Theme::kMuted);
    fl_xyline(plot_.x - kTickLength, at, plot_.x);
    DrawText(tick.label, x(), at - kLabelHeight / 2, plot_.x - x() - kTickLength - 3, kLabelHeight,
             FL_ALIGN_RIGHT);
  }
  const int bottom = plot_.y + plot_.h - 1;
  int freeFrom = x() + 2;
  for (const ChartTick& tick : xTicks_.ticks) {
    const int at = pixelX(tick.value);
    fl_color(Theme::kFaintLine);
    fl_yxline(at, plot_.y, bottom);
    fl_color(Theme::kMuted);
    fl_yxline(at, bottom, bottom + kTickLength);
    const int width = TextWidth(tick.label);
    const int left = std::min(at - width / 2, x() + w() - width - 4);
    if (left < freeFrom) continue;
    freeFrom = left + width + 8;
    DrawText(tick.label, left, bottom + kTickLength + 1, width, kLabelHeight, FL_ALIGN_LEFT);
  }
  fl_color(Theme::kMuted);
  fl_xyline(plot_.x, bottom, plot_.x + plot_.w - 1);
  fl_yxline(plot_.x, plot_.y, bottom);
  const std::string caption = FitHead(Caption(xAxis_, xTicks_.exponent), w() - 2 * kPadding);
  DrawText(caption, x() + kPadding, bottom + kTickLength + kLabelHeight,
           plot_.x + plot_.w - x() - kPadding, kLabelHeight, FL_ALIGN_RIGHT);
}

void Chart::DrawCurves() {
  // A point alone at an end is seen whole.
  fl_push_clip(plot_.x - kPoint / 2, plot_.y, plot_.w + kPoint, plot_.h);
  for (const Shown& one : curves_) {
    fl_color(one.curve.color);
    fl_line_style(one.curve.isGuide ? FL_DASH : FL_SOLID | FL_CAP_ROUND | FL_JOIN_ROUND,
                  one.curve.isGuide ? 1 : kThickLine);
    const auto& pixels = one.pixels;
    for (std::size_t begin = 0; begin < pixels.size();) {
      std::size_t end = begin + 1;
      while (end < pixels.size() && !pixels[end].begins) ++end;
      if (end - begin == 1) {
        fl_rectf(plot_.x + static_cast<int>(pixels[begin].x) - kPoint / 2,
                 plot_.y + static_cast<int>(pixels[begin].y) - kPoint / 2, kPoint, kPoint);
      } else {
        fl_begin_line();
        for (std::size_t i = begin; i < end; ++i)
          fl_vertex(plot_.x + static_cast<double>(pixels[i].x),
                    plot_.y + static_cast<double>(pixels[i].y));
        fl_end_line();
      }
      begin = end;
    }
    fl_line_style(0);
  }
  fl_pop_clip();
}

void Chart::DrawZoomFrame() {
  if (!isZooming_) return;
  const int left = std::min(zoomX_, pointX_);
  const int top = std::min(zoomY_, pointY_);
  fl_color(Theme::kAccent);
  fl_line_style(FL_DOT);
  fl_rect(left, top, std::abs(pointX_ - zoomX_) + 1, std::abs(pointY_ - zoomY_) + 1);
  fl_line_style(0);
}

std::vector<Chart::Pointed> Chart::PointedAt(double at, double& nearest) const {
  std::vector<Pointed> all;
  double least = -1;
  for (const Shown& one : curves_) {
    if (!one.on || one.curve.isGuide) continue;
    const std::size_t point = NearestPoint(*one.curve.x, *one.curve.y, at, made_.view.x);
    if (point >= one.curve.x->size()) continue;
    const double px = (*one.curve.x)[point];
    const double value = (*one.curve.y)[point];
    all.push_back({one.curve.color, one.curve.name,
                   yAxis_.isClock ? ClockText(value, true) : ValueText(value), px, value});
    if (least >= 0 && std::abs(px - at) >= least) continue;
    least = std::abs(px - at);
    nearest = px;
  }
  // A curve without a value there says nothing.
  std::erase_if(all, [&](const Pointed& one) { return one.x != nearest; });
  return all;
}

// A line through the nearest point, and what each curve is there.
void Chart::DrawCursor() {
  if (!isPointed_ || isZooming_ || !plot_.Has(pointX_, pointY_)) return;
  double nearest = 0;
  const std::vector<Pointed> all = PointedAt(ValueAtX(pointX_), nearest);
  const ChartZoom::View& view = made_.view;
  if (all.empty()) return;
  const auto pixelX = [&](double value) {
    return plot_.x + static_cast<int>((value - view.x.low) / view.x.Width() * (plot_.w - 1));
  };
  const int hair = pixelX(nearest);
  fl_color(Theme::kMuted);
  fl_line_style(FL_DOT);
  fl_yxline(hair, plot_.y, plot_.y + plot_.h - 1);
  fl_line_style(0);
  for (const Pointed& one : all) {
    if (one.y < view.y.low || one.y > view.y.high) continue;
    const int py =
        plot_.y + static_cast<int>((view.y.high - one.y) / view.y.Width() * (plot_.h - 1));
    fl_color(one.color);
    fl_pie(pixelX(one.x) - 3, py - 3, 7, 7, 0, 360);
  }
  DrawValues(all, xAxis_.isClock ? ClockText(nearest, true) : ValueText(nearest), hair);
}

// In a box beside the hair, on the side that has room.
void Chart::DrawValues(const std::vector<Pointed>& all, const std::string& place, int hair) {
  fl_font(FL_HELVETICA, Sizes::kSmallFontSize);
  const std::string head = xAxis_.quantity + ": " + place;
  int width = TextWidth(head);
  for (const Pointed& one : all)
    width = std::max(width, kMark + 4 + TextWidth(one.name + "  " + one.value));
  width += 2 * kPadding;
  const int height = static_cast<int>(all.size() + 1) * kLabelHeight + 8;
  int left = hair + 10;
  if (left + width > plot_.x + plot_.w) left = hair - 10 - width;
  left = std::max(left, x() + 2);
  const int top =
      std::clamp(pointY_ - height / 2, y() + 2, std::max(y() + h() - height - 2, y() + 2));
  Theme::DrawRounded(left, top, width, height, Theme::kSurface, Theme::kMuted);
  int line = top + 4;
  fl_color(Theme::kText);
  DrawText(head, left + kPadding, line, width, kLabelHeight, FL_ALIGN_LEFT);
  for (const Pointed& one : all) {
    line += kLabelHeight;
    fl_color(one.color);
    fl_rectf(left + kPadding, line + kLabelHeight / 2 - 1, kMark, 3);
    fl_color(Theme::kText);
    DrawText(one.name, left + kPadding + kMark + 4, line, width, kLabelHeight, FL_ALIGN_LEFT);
    DrawText(one.value, left, line, width - kPadding, kLabelHeight, FL_ALIGN_RIGHT);
  }
}

void Chart::Switch(std::size_t curve) {
  if (curve >= curves_.size()) return;
  curves_[curve].on = !curves_[curve].on;
  Changed();
}

void Chart::Point(bool inside) {
  isPointed_ = inside;
  pointX_ = Fl::event_x();
  pointY_ = Fl::event_y();
  if (isZooming_) {
    pointX_ = std::clamp(pointX_, plot_.x, plot_.x + plot_.w - 1);
    pointY_ = std::clamp(pointY_, plot_.y, plot_.y + plot_.h - 1);
  }
  const auto tip = [&](const Area& area, const std::string& text) {
    ShowTip(*this, area.x - x(), area.y - y(), area.w, area.h, text);
  };
  if (inside && wholeButton_.Has(pointX_, pointY_)) {
    tip(wholeButton_, texts_.wholeTip);
  } else if (inside && enlargeButton_.Has(pointX_, pointY_)) {
    tip(enlargeButton_, texts_.enlargeTip);
  } else {
    tip({}, {});
  }
  redraw();
}

int Chart::HandlePush() {
  take_focus();
  Point(true);
  if (Fl::event_button() == FL_RIGHT_MOUSE) {
    if (zoom_.IsZoomed()) {
      zoom_.Back();
      Changed();
    }
    return 1;
  }
  if (Fl::event_button() != FL_LEFT_MOUSE) return 1;
  if (enlargeButton_.Has(pointX_, pointY_)) {
    if (OnEnlarge) OnEnlarge();
    return 1;
  }
  if (wholeButton_.Has(pointX_, pointY_)) {
    zoom_.Out();
    Changed();
    return 1;
  }
  for (std::size_t i = 0; i < legend_.size(); ++i) {
    if (legend_[i].Has(pointX_, pointY_)) return Switch(i), 1;
  }
  if (!plot_.Has(pointX_, pointY_)) return 1;
  if (Fl::event_clicks() > 0) {
    Fl::event_clicks(0);
    zoom_.Out();
    Changed();
    return 1;
  }
  isZooming_ = true;
  zoomX_ = pointX_;
  zoomY_ = pointY_;
  return 1;
}

int Chart::HandleRelease() {
  if (!isZooming_) return 1;
  Point(true);
  isZooming_ = false;
  const auto [left, right] = std::minmax(zoomX_, pointX_);
  const auto [top, bottom] = std::minmax(zoomY_, pointY_);
  if (right - left >= kLeastDrag && bottom - top >= kLeastDrag) {
    zoom_.Into({{ValueAtX(left), ValueAtX(right)}, {ValueAtY(bottom), ValueAtY(top)}});
  } else if (right - left >= kLeastDrag) {
    zoom_.Into({{ValueAtX(left), ValueAtX(right)}, made_.view.y});  // a stretch of the axis
  } else if (bottom - top >= kLeastDrag) {
    zoom_.Into({made_.view.x, {ValueAtY(bottom), ValueAtY(top)}});
  }
  Changed();
  return 1;
}

int Chart::HandleKey() {
  const int key = Fl::event_key();
  if (Fl::event_state(FL_CTRL | FL_ALT | FL_META)) return 0;
  if ((key == FL_Escape || key == FL_BackSpace) && (isZooming_ || zoom_.IsZoomed())) {
    if (isZooming_) {
      isZooming_ = false;
    } else if (key == FL_Escape) {
      zoom_.Out();
    } else {
      zoom_.Back();
    }
    Changed();
    return 1;
  }
  if (key < '1' || key > '9' || legend_.size() < 2) return 0;
  Switch(static_cast<std::size_t>(key - '1'));
  return 1;
}

int Chart::handle(int event) {
  switch (event) {
    case FL_ENTER:
    case FL_MOVE:
      Point(true);
      return 1;
    case FL_LEAVE:
    case FL_HIDE:
      Point(false);
      return 1;
    case FL_PUSH:
      return HandlePush();
    case FL_DRAG:
      Point(true);
      return 1;
    case FL_RELEASE:
      return HandleRelease();
    case FL_FOCUS:
    case FL_UNFOCUS:
      redraw();
      return 1;
    case FL_KEYBOARD:
      return HandleKey();
    default:
      return Fl_Widget::handle(event);
  }
}
