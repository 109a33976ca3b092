#include "ui/window/NoticeBar.h"

#include <FL/fl_draw.H>

#include <cmath>

#include "ui/fltk/Labels.h"
#include "ui/fltk/Theme.h"
#include "ui/fltk/Tip.h"
#include "ui/window/Layout.h"

namespace {

constexpr int kButtonHeight = 22;
constexpr int kButtonPadding = 12;

}  // namespace

NoticeBar::NoticeBar(int x, int y, int w, int h) : Fl_Group(x, y, w, h) {
  end();
  resizable(nullptr);
}

void NoticeBar::AddButton(const std::string& label, const std::string& tip,
                          std::function<void()> press) {
  auto* widget = new Fl_Button(0, 0, 1, kButtonHeight);
  widget->copy_label(label.c_str());
  widget->labelsize(Layout::kSmallFontSize);
  widget->color(Theme::kSurface);
  int width = 0;
  int height = 0;
  widget->measure_label(width, height);
  widget->size(width + 2 * kButtonPadding, kButtonHeight);
  SetTip(*widget, tip);
  add(widget);
  buttons_.push_back({widget, std::move(press)});
  widget->callback([](Fl_Widget*, void* button) { static_cast<Button*>(button)->press(); },
                   &buttons_.back());
  LayOut();
}

void NoticeBar::LayOut() {
  int right = x() + w();
  for (auto button = buttons_.rbegin(); button != buttons_.rend(); ++button) {
    right -= Layout::kGap + button->widget->w();
    button->widget->position(right, y() + (h() - kButtonHeight) / 2);
  }
}

void NoticeBar::resize(int x, int y, int w, int h) {
  Fl_Widget::resize(x, y, w, h);
  LayOut();
}

void NoticeBar::SetText(const std::string& text) {
  text_ = text;
  redraw();
}

void NoticeBar::SetMore(const std::string& more) {
  more_ = more;
  redraw();
}

int NoticeBar::TextEnd() const {
  return buttons_.empty() ? x() + w() : buttons_.front().widget->x();
}

void NoticeBar::draw() {
  fl_push_clip(x(), y(), w(), h());
  fl_color(Theme::kWindow);
  fl_rectf(x(), y(), w(), h());
  Theme::DrawRounded(x(), y(), w(), h(), Theme::kSelected, Theme::kFocus);
  fl_font(FL_HELVETICA, Layout::kFontSize);
  const int at = x() + Layout::kMargin;
  const int baseline = y() + (h() + fl_height()) / 2 - fl_descent();
  int end = TextEnd() - Layout::kMargin;
  if (!more_.empty()) {
    const int length = static_cast<int>(more_.size());
    end -= static_cast<int>(std::ceil(fl_width(more_.c_str(), length))) + Layout::kMargin;
    fl_color(Theme::kMuted);
    fl_draw(more_.c_str(), length, end + Layout::kMargin, baseline);
  }
  const std::string shown = FitHead(text_, end - at);
  fl_color(Theme::kText);
  fl_draw(shown.c_str(), static_cast<int>(shown.size()), at, baseline);
  for (const Button& button : buttons_) draw_child(*button.widget);
  fl_pop_clip();
  SetTip(*this, shown == text_ ? std::string() : text_);
}
