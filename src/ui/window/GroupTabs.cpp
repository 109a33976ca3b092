#include "ui/window/GroupTabs.h"

#include <FL/Fl.H>
#include <FL/fl_draw.H>

#include <algorithm>
#include <cmath>

#include "ui/fltk/Icons.h"
#include "ui/fltk/Labels.h"
#include "ui/fltk/Theme.h"
#include "ui/fltk/Tip.h"
#include "ui/window/Layout.h"

namespace {

constexpr int kArrowWidth = 22;
constexpr int kLeftArrow = -2;
constexpr int kRightArrow = -3;
constexpr int kScrollStep = 80;
constexpr int kLeastNote = 60;  // what a long name leaves the note
constexpr int kActivity = 20;   // the mark of a running group with its gap

int TextWidth(const std::string& text) {
  return static_cast<int>(std::ceil(fl_width(text.c_str())));
}

std::string Count(int jobs) {
  return jobs > 0 ? std::to_string(jobs) : std::string();
}

// With its gap, in the current font.
int SmallWidth(const std::string& text) {
  return text.empty() ? 0 : TextWidth(text) + Layout::kGap;
}

}  // namespace

GroupTabs::GroupTabs(int x, int y, int w, int h) : Fl_Widget(x, y, w, h) {
  LayOut();
}

void GroupTabs::SetTabs(const std::vector<Tab>& tabs, int current) {
  if (tabs == tabs_ && current == current_) return;
  const bool moved = current != current_ || tabs.size() != tabs_.size();
  const std::string tip = TipOf(hovered_);
  tabs_ = tabs;
  current_ = current;
  LayOut();
  if (moved) Reveal(current);
  redraw();
  if (TipOf(hovered_) == tip) return;
  if (hovered_ >= static_cast<int>(tabs_.size())) hovered_ = -1;
  ShowTipOf(hovered_);
}

std::string GroupTabs::TipOf(int tab) const {
  const auto index = static_cast<std::size_t>(tab);
  return tab >= 0 && index < tabs_.size() ? tabs_[index].tip : std::string();
}

int GroupTabs::WantedWidth(const Tab& tab) const {
  fl_font(FL_HELVETICA, Layout::kFontSize);
  int width = TextWidth(tab.name) + 2 * Layout::kTabPadding;
  if (tab.running || tab.paused) width += kActivity;
  fl_font(FL_HELVETICA, Layout::kSmallFontSize);
  for (const std::string& small : {Count(tab.jobs), tab.note}) width += SmallWidth(small);
  return std::clamp(width, Layout::kTabMinWidth, Layout::kTabMaxWidth);
}

void GroupTabs::LayOut() {
  std::vector<int> widths;
  int wanted = 0;
  for (const Tab& tab : tabs_) wanted += widths.emplace_back(WantedWidth(tab));
  // Shrink the widest ones first, down to the least width.
  for (int cap = Layout::kTabMaxWidth; wanted > w() && cap > Layout::kTabMinWidth; --cap) {
    for (int& width : widths) {
      if (width <= cap) continue;
      --width;
      --wanted;
    }
  }
  starts_.assign(1, 0);
  for (const int width : widths) starts_.push_back(starts_.back() + width);
  total_ = starts_.back();
  ScrollBy(0);
}

int GroupTabs::StripWidth() const {
  return Overflows() ? w() - 2 * kArrowWidth : w();
}

void GroupTabs::ScrollBy(int pixels) {
  const int offset = std::clamp(offset_ + pixels, 0, std::max(0, total_ - StripWidth()));
  if (offset == offset_) return;
  offset_ = offset;
  redraw();
}

void GroupTabs::Reveal(int tab) {
  if (tab < 0 || tab >= static_cast<int>(tabs_.size())) return;
  const auto index = static_cast<std::size_t>(tab);
  if (starts_[index] < offset_) ScrollBy(starts_[index] - offset_);
  const int hidden = starts_[index + 1] - offset_ - StripWidth();
  if (hidden > 0) ScrollBy(hidden);
}

void GroupTabs::resize(int x, int y, int w, int h) {
  Fl_Widget::resize(x, y, w, h);
  LayOut();
  Reveal(current_);
}

int GroupTabs::TabAt(int mouse) const {
  int at = mouse - x();
  if (Overflows() && at >= StripWidth())
    return at < StripWidth() + kArrowWidth ? kLeftArrow : kRightArrow;
  at += offset_;
  for (std::size_t i = 0; i < tabs_.size(); ++i) {
    if (at >= starts_[i] && at < starts_[i + 1]) return static_cast<int>(i);
  }
  return -1;
}

void GroupTabs::DrawTab(int tab) const {
  const auto index = static_cast<std::size_t>(tab);
  const Tab& shown = tabs_[index];
  const int left = x() + starts_[index] - offset_;
  const int width = starts_[index + 1] - starts_[index];
  const bool current = tab == current_;
  if (current) {
    fl_color(Theme::kSurface);
    fl_rectf(left, y() + 1, width, h() - 1);
    fl_color(Theme::kLine);
    fl_yxline(left, y() + 1, y() + h() - 1);
    fl_yxline(left + width - 1, y() + 1, y() + h() - 1);
    fl_color(Theme::kAccent);
    fl_rectf(left, y(), width, 2);
  } else if (tab == hovered_) {
    fl_color(Theme::kHover);
    fl_rectf(left + 1, y() + 2, width - 2, h() - 3);
  }
  int room = width - 2 * Layout::kTabPadding;
  int at = left + Layout::kTabPadding;
  if (shown.running || shown.paused) {
    if (Fl_RGB_Image* icon = Icon(shown.running ? "state_running" : "state_marked"))
      icon->draw(at - 2, y() + (h() - icon->h()) / 2);
    at += kActivity;
    room -= kActivity;
  }
  fl_font(FL_HELVETICA, Layout::kSmallFontSize);
  const std::string count = Count(shown.jobs);
  room -= SmallWidth(count);
  const int noteRoom = std::min(SmallWidth(shown.note), kLeastNote);
  fl_font(FL_HELVETICA, Layout::kFontSize);
  const std::string name = FitHead(shown.name, room - noteRoom + 1);
  room -= TextWidth(name);
  const int baseline = y() + (h() + fl_height()) / 2 - fl_descent();
  fl_color(current ? Theme::kText : Theme::kMuted);
  fl_draw(name.c_str(), static_cast<int>(name.size()), at, baseline);
  at += TextWidth(name) + Layout::kGap;
  fl_font(FL_HELVETICA, Layout::kSmallFontSize);
  fl_color(Theme::kMuted);
  fl_draw(count.c_str(), at, baseline);
  at += SmallWidth(count);
  if (!shown.note.empty())
    fl_draw(FitHead(shown.note, room - Layout::kGap + 1).c_str(), at, baseline);
}

void GroupTabs::DrawArrow(int left, bool isLeft) const {
  const bool usable = isLeft ? offset_ > 0 : offset_ < total_ - StripWidth();
  fl_color(usable ? Theme::kText : Theme::kDisabledText);
  const int middleX = left + kArrowWidth / 2;
  const int middleY = y() + h() / 2;
  const int tip = isLeft ? -3 : 3;
  fl_line_style(FL_SOLID, 2);
  fl_line(middleX - tip, middleY - 5, middleX + tip, middleY, middleX - tip, middleY + 5);
  fl_line_style(0);
}

void GroupTabs::draw() {
  fl_push_clip(x(), y(), w(), h());
  fl_color(parent()->color());
  fl_rectf(x(), y(), w(), h());
  fl_color(Theme::kLine);
  fl_xyline(x(), y() + h() - 1, x() + w() - 1);
  fl_push_clip(x(), y(), StripWidth(), h());
  // Only those in sight: some systems take places of 16 bits, where far ones would come back.
  for (std::size_t i = 0; i < tabs_.size(); ++i) {
    if (starts_[i + 1] > offset_ && starts_[i] < offset_ + StripWidth())
      DrawTab(static_cast<int>(i));
  }
  fl_pop_clip();
  if (Overflows()) {
    DrawArrow(x() + StripWidth(), true);
    DrawArrow(x() + StripWidth() + kArrowWidth, false);
  }
  fl_pop_clip();
}

void GroupTabs::ShowTipOf(int tab) {
  if (tab < 0) return ShowTip(*this, 0, 0, 0, 0, {});
  const auto index = static_cast<std::size_t>(tab);
  ShowTip(*this, starts_[index] - offset_, 0, starts_[index + 1] - starts_[index], h(), TipOf(tab));
}

int GroupTabs::handle(int event) {
  const int tab = TabAt(Fl::event_x());
  switch (event) {
    case FL_ENTER:
    case FL_MOVE:
    case FL_LEAVE: {
      const int hovered = event == FL_LEAVE ? -1 : tab;
      if (hovered != hovered_) {
        hovered_ = hovered;
        ShowTipOf(hovered);
        redraw();
      }
      return 1;
    }
    case FL_PUSH:
      if (tab == kLeftArrow) ScrollBy(-kScrollStep);
      if (tab == kRightArrow) ScrollBy(kScrollStep);
      if (tab < 0) return 1;
      if (OnSelect) OnSelect(tab);
      if (Fl::event_button() == FL_RIGHT_MOUSE && OnMenu) OnMenu(tab, Fl::event_x(), Fl::event_y());
      if (Fl::event_button() == FL_LEFT_MOUSE && Fl::event_clicks() > 0) {
        Fl::event_clicks(0);
        if (OnRename) OnRename(tab);
      }
      return 1;
    case FL_RELEASE:
      return 1;
    case FL_MOUSEWHEEL:
      ScrollBy((Fl::event_dy() + Fl::event_dx()) * kScrollStep);
      return 1;
    default:
      return Fl_Widget::handle(event);
  }
}
