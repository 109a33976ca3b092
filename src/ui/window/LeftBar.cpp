#include "ui/window/LeftBar.h"

#include <FL/fl_draw.H>

#include "ui/fltk/Labels.h"
#include "ui/fltk/Theme.h"
#include "ui/fltk/Tip.h"
#include "ui/window/Layout.h"

namespace {

constexpr int kButtonHeight = 22;
constexpr int kButtonPadding = 12;

}  // namespace

LeftBar::LeftBar(int x, int y, int w, int h, const TextTable& texts) : Fl_Group(x, y, w, h) {
  restore_ = AddButton(texts.Get("ui_left_restore"), &LeftBar::OnRestore);
  forget_ = AddButton(texts.Get("ui_left_forget"), &LeftBar::OnForget);
  SetTip(*restore_, texts.Get("ui_left_restore_tip"));
  SetTip(*forget_, texts.Get("ui_left_forget_tip"));
  end();
  resizable(nullptr);
  LayOut();
}

Fl_Button* LeftBar::AddButton(const std::string& label, std::function<void()> LeftBar::*press) {
  auto* button = new Fl_Button(0, 0, 1, kButtonHeight);
  button->copy_label(label.c_str());
  button->labelsize(Layout::kSmallFontSize);
  button->color(Theme::kSurface);
  int width = 0;
  int height = 0;
  button->measure_label(width, height);
  button->size(width + 2 * kButtonPadding, kButtonHeight);
  button->user_data(this);
  if (press == &LeftBar::OnRestore) {
    button->callback([](Fl_Widget*, void* self) { static_cast<LeftBar*>(self)->OnRestore(); });
  } else {
    button->callback([](Fl_Widget*, void* self) { static_cast<LeftBar*>(self)->OnForget(); });
  }
  return button;
}

void LeftBar::LayOut() {
  const int top = y() + (h() - kButtonHeight) / 2;
  forget_->position(x() + w() - Layout::kGap - forget_->w(), top);
  restore_->position(forget_->x() - Layout::kGap - restore_->w(), top);
}

void LeftBar::resize(int x, int y, int w, int h) {
  Fl_Widget::resize(x, y, w, h);
  LayOut();
}

void LeftBar::SetText(const std::string& text) {
  text_ = text;
  redraw();
}

void LeftBar::draw() {
  fl_push_clip(x(), y(), w(), h());
  fl_color(Theme::kWindow);
  fl_rectf(x(), y(), w(), h());
  Theme::DrawRounded(x(), y(), w(), h(), Theme::kSelected, Theme::kFocus);
  fl_font(FL_HELVETICA, Layout::kFontSize);
  fl_color(Theme::kText);
  const int at = x() + Layout::kMargin;
  const std::string shown = FitHead(text_, restore_->x() - Layout::kMargin - at);
  const int baseline = y() + (h() + fl_height()) / 2 - fl_descent();
  fl_draw(shown.c_str(), static_cast<int>(shown.size()), at, baseline);
  draw_child(*restore_);
  draw_child(*forget_);
  fl_pop_clip();
  SetTip(*this, shown == text_ ? std::string() : text_);
}
