#include "ui/monitor/RunHeading.h"

#include <FL/fl_draw.H>

#include <algorithm>
#include <utility>

#include "ui/fltk/Labels.h"
#include "ui/fltk/Sizes.h"
#include "ui/fltk/Theme.h"

namespace {

constexpr int kTitleSize = 15;
constexpr int kTitleHeight = 24;
constexpr int kLineHeight = 18;
constexpr int kBarHeight = 6;
constexpr int kMark = 11;

}  // namespace

RunHeading::RunHeading(int x, int y, int w)
    : Fl_Widget(x, y, w, kTitleHeight + kBarHeight + kLineHeight + 8) {}

bool RunHeading::Show(HeadingTexts texts) {
  if (texts == texts_) return false;
  const bool taller = texts.findings.size() != texts_.findings.size();
  texts_ = std::move(texts);
  if (taller) {
    const int lines = 1 + static_cast<int>(texts_.findings.size());
    size(w(), kTitleHeight + kBarHeight + lines * kLineHeight + 8);
  }
  redraw();
  return taller;
}

void RunHeading::draw() {
  fl_color(Theme::kWindow);
  fl_rectf(x(), y(), w(), h());
  const auto text = [&](const std::string& line, int indent, int top, int height) {
    fl_draw(FitHead(line, w() - indent).c_str(), x() + indent, top, w() - indent, height,
            FL_ALIGN_LEFT, nullptr, 0);
  };
  fl_font(FL_HELVETICA_BOLD, kTitleSize);
  fl_color(texts_.color);
  text(texts_.title, 0, y(), kTitleHeight);
  int top = y() + kTitleHeight;
  fl_color(Theme::kPressed);
  fl_rectf(x(), top, w(), kBarHeight);
  if (texts_.percent) {
    fl_color(texts_.color);
    fl_rectf(x(), top, static_cast<int>(w() * std::clamp(*texts_.percent / 100, 0.0, 1.0)),
             kBarHeight);
  }
  top += kBarHeight + 3;
  fl_font(FL_HELVETICA, Sizes::kFontSize);
  fl_color(Theme::kText);
  text(texts_.details, 0, top, kLineHeight);
  for (const std::string& finding : texts_.findings) {
    top += kLineHeight;
    fl_color(Theme::kWaiting);
    const int left = x();
    const int bottom = top + (kLineHeight + kMark) / 2 - 1;
    fl_polygon(left, bottom, left + kMark, bottom, left + kMark / 2, bottom - kMark + 1);
    text(finding, kMark + 6, top, kLineHeight);
  }
}
