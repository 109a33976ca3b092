#include "ui/window/StatusBar.h"

#include <FL/Fl.H>
#include <FL/fl_draw.H>

#include <algorithm>
#include <cmath>

#include "ui/fltk/Labels.h"
#include "ui/fltk/Theme.h"
#include "ui/fltk/Tip.h"
#include "ui/window/Layout.h"

namespace {

constexpr double kMessageSeconds = 8.0;
constexpr double kErrorSeconds = 20.0;
constexpr int kProgressWidth = 120;
constexpr int kProgressHeight = 6;
constexpr int kProgressText = 230;
constexpr int kLeastText = 40;  // what is narrower is not drawn
constexpr int kCancelWidth = 64;
constexpr int kCancelHeight = 20;
constexpr int kOptionsSize = 22;

}  // namespace

StatusBar::StatusBar(int x, int y, int w, int h, const std::string& cancelText,
                     const std::string& optionsTip)
    : Fl_Group(x, y, w, h) {
  box(FL_FLAT_BOX);
  color(Theme::kWindow);
  cancel_ = new Fl_Button(0, 0, kCancelWidth, kCancelHeight);
  cancel_->copy_label(cancelText.c_str());
  cancel_->labelsize(Layout::kSmallFontSize);
  cancel_->color(Theme::kSurface);
  cancel_->callback(
      [](Fl_Widget*, void* self) {
        auto* bar = static_cast<StatusBar*>(self);
        if (bar->OnCancel) bar->OnCancel();
      },
      this);
  cancel_->hide();
  options_ = new ToolButton(0, 0, kOptionsSize, kOptionsSize, "state_options");
  SetTip(*options_, optionsTip);
  options_->callback(
      [](Fl_Widget*, void* self) {
        auto* bar = static_cast<StatusBar*>(self);
        if (bar->OnOptions) bar->OnOptions();
      },
      this);
  end();
  resizable(nullptr);
  LayOut();
}

StatusBar::~StatusBar() {
  Fl::remove_timeout(MessageTimeout, this);
}

void StatusBar::resize(int x, int y, int w, int h) {
  Fl_Widget::resize(x, y, w, h);
  LayOut();
}

int StatusBar::Right() const {
  return x() + w() - kOptionsSize - Layout::kGap;
}

void StatusBar::LayOut() {
  options_->position(Right(), y() + (h() - kOptionsSize) / 2 + 1);
  cancel_->position(Right() - Layout::kGap - kCancelWidth, y() + (h() - kCancelHeight) / 2 + 1);
}

void StatusBar::SetState(const std::string& text) {
  if (text == state_) return;
  state_ = text;
  redraw();
}

void StatusBar::MessageTimeout(void* self) {
  static_cast<StatusBar*>(self)->ShowMessage({}, Tone::kPlain);
}

void StatusBar::ShowMessage(const std::string& text, Tone tone) {
  Fl::remove_timeout(MessageTimeout, this);
  if (!text.empty())
    Fl::add_timeout(tone == Tone::kError ? kErrorSeconds : kMessageSeconds, MessageTimeout, this);
  message_ = text;
  tone_ = tone;
  redraw();
}

void StatusBar::TakeBack(const std::string& text) {
  if (message_ == text) ShowMessage({}, Tone::kPlain);
}

void StatusBar::SetProgress(const std::string& text, int percent) {
  if (text == progressText_ && percent == percent_) return;
  progressText_ = text;
  percent_ = percent;
  percent < 0 ? cancel_->hide() : cancel_->show();
  redraw();
}

int StatusBar::BarX() const {
  return cancel_->x() - Layout::kMargin - kProgressWidth;
}

void StatusBar::draw() {
  fl_push_clip(x(), y(), w(), h());
  fl_color(color());
  fl_rectf(x(), y(), w(), h());
  fl_color(Theme::kLine);
  fl_xyline(x(), y(), x() + w() - 1);
  fl_font(FL_HELVETICA, Layout::kSmallFontSize);
  const int baseline = y() + 1 + (h() + fl_height()) / 2 - fl_descent();
  int at = x() + Layout::kMargin;
  const int end = percent_ >= 0 ? BarX() - Layout::kGap : Right() - Layout::kGap;
  std::string cut;
  const auto fitted = [&cut](const std::string& text, int room) {
    std::string shown = room < kLeastText ? std::string() : FitHead(text, room);
    if (shown != text) cut += (cut.empty() ? "" : "\n") + text;
    return shown;
  };
  const auto wanted = [](const std::string& text) {
    return static_cast<int>(std::ceil(fl_width(text.c_str())));
  };
  // The counts are always whole; the message, which goes away by itself, comes before the name of
  // the deck that is being read.
  const std::string state = fitted(state_, end - at);
  fl_color(Theme::kMuted);
  fl_draw(state.c_str(), static_cast<int>(state.size()), at, baseline);
  at += wanted(state) + 2 * Layout::kMargin;
  if (!message_.empty()) {
    const std::string text = fitted(message_, end - at - Layout::kMargin);
    if (!text.empty()) {
      fl_color(Theme::kLine);
      fl_yxline(at - Layout::kMargin, y() + 7, y() + h() - 6);
    }
    fl_color(tone_ == Tone::kError ? Theme::kError : Theme::kText);
    fl_draw(text.c_str(), static_cast<int>(text.size()), at, baseline);
    at += wanted(text) + 2 * Layout::kMargin;
  }
  if (percent_ >= 0) {
    fl_color(Theme::kText);
    const std::string text = fitted(progressText_, std::min(end - at, kProgressText));
    fl_draw(text.c_str(), static_cast<int>(text.size()), end - wanted(text), baseline);
    const int barX = BarX();
    const int barY = y() + 1 + (h() - kProgressHeight) / 2;
    fl_color(Theme::kPressed);
    fl_rectf(barX, barY, kProgressWidth, kProgressHeight);
    fl_color(Theme::kAccent);
    fl_rectf(barX, barY, kProgressWidth * percent_ / 100, kProgressHeight);
    draw_child(*cancel_);
  }
  draw_child(*options_);
  fl_pop_clip();
  SetTip(*this, cut);
}
