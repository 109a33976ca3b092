#include "ui/window/GroupLine.h"

#include <FL/fl_draw.H>

#include <algorithm>
#include <cmath>
#include <numeric>

#include "ui/fltk/Labels.h"
#include "ui/fltk/Theme.h"
#include "ui/fltk/Tip.h"
#include "ui/window/Layout.h"

namespace {

constexpr int kWidestBar = 110;
constexpr int kBarHeight = 8;
constexpr int kLeastPart = 2;  // pixels of a part with few jobs

struct Part {
  StatusClass status;
  Fl_Color color;
};

// What has ended first.
constexpr Part kParts[] = {
    {StatusClass::kFinished, Theme::kFinished},  {StatusClass::kStoppedEarly, Theme::kWaiting},
    {StatusClass::kEndUnknown, Theme::kUnknown}, {StatusClass::kAborted, Theme::kAborted},
    {StatusClass::kRunning, Theme::kRunning},    {StatusClass::kQueued, Theme::kLine}};
static_assert(std::size(kParts) == kStatusClasses);

}  // namespace

GroupLine::GroupLine(int x, int y, int w, int h) : Fl_Widget(x, y, w, h) {}

void GroupLine::Show(const StatusCounts& counts, const std::string& words, const std::string& tip) {
  if (counts == counts_ && words == words_) return;
  counts_ = counts;
  words_ = words;
  SetTip(*this, tip);
  redraw();
}

void GroupLine::draw() {
  fl_push_clip(x(), y(), w(), h());
  fl_color(Theme::kWindow);
  fl_rectf(x(), y(), w(), h());
  fl_color(Theme::kLine);
  fl_xyline(x(), y() + h() - 1, x() + w() - 1);
  const int all = std::accumulate(counts_.begin(), counts_.end(), 0);
  if (all > 0) {
    fl_font(FL_HELVETICA, Layout::kSmallFontSize);
    const int barWidth = std::min(kWidestBar, w() / 3);
    const int room = w() - barWidth - 2 * Layout::kGap;
    const std::string words = FitHead(words_, room);
    const int width = static_cast<int>(std::ceil(fl_width(words.c_str())));
    const int left = x() + w() - width - (width > 0 ? Layout::kGap : 0) - barWidth;
    const int top = y() + (h() - kBarHeight) / 2;
    int at = left;
    int before = 0;
    for (const Part& part : kParts) {
      const int count = counts_[static_cast<std::size_t>(part.status)];
      before += count;
      const int end = std::max(left + barWidth * before / all, at + (count > 0 ? kLeastPart : 0));
      fl_rectf(at, top, std::min(end, left + barWidth) - at, kBarHeight, part.color);
      at = std::min(end, left + barWidth);
    }
    fl_color(Theme::kMuted);
    const int baseline = y() + (h() + fl_height()) / 2 - fl_descent();
    fl_draw(words.c_str(), static_cast<int>(words.size()), x() + w() - width, baseline);
  }
  fl_pop_clip();
}
