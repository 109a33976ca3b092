#include "ui/fltk/ToolButton.h"

#include <FL/Fl.H>
#include <FL/fl_draw.H>

#include "ui/fltk/Icons.h"
#include "ui/fltk/Labels.h"
#include "ui/fltk/Theme.h"
#include "ui/fltk/Tip.h"

namespace {

// Keeps `hovered` in step with the mouse.
void TrackHover(Fl_Widget& widget, int event, bool& hovered) {
  if (event != FL_ENTER && event != FL_LEAVE && event != FL_HIDE && event != FL_DEACTIVATE) return;
  const bool now = event == FL_ENTER && widget.active_r();
  if (now == hovered) return;
  hovered = now;
  widget.redraw();
}

}  // namespace

ToolButton::ToolButton(int x, int y, int w, int h, const char* icon)
    : Fl_Button(x, y, w, h), icon_(icon) {
  box(FL_FLAT_BOX);
}

int ToolButton::handle(int event) {
  // A press leaves the keys to the table; Tab still comes here.
  if (event == FL_FOCUS && Fl::event() == FL_PUSH) return 0;
  TrackHover(*this, event, hovered_);
  return Fl_Button::handle(event);
}

void ToolButton::draw() {
  fl_color(parent()->color());
  fl_rectf(x(), y(), w(), h());
  const bool active = active_r() != 0;
  if (active && value()) {
    Theme::DrawRounded(x(), y(), w(), h(), Theme::kPressed, Theme::kLine);
  } else if (active && hovered_) {
    Theme::DrawRounded(x(), y(), w(), h(), Theme::kHover, Theme::kLine);
  }
  if (Fl_RGB_Image* image = Icon(icon_, active ? IconLook::kNormal : IconLook::kDisabled))
    image->draw(x() + (w() - image->w()) / 2, y() + (h() - image->h()) / 2);
  if (Fl::focus() == this) Theme::DrawFocus(x(), y(), w(), h());
}

PrimaryButton::PrimaryButton(int x, int y, int w, int h) : Fl_Button(x, y, w, h) {}

void PrimaryButton::SetText(const std::string& uiText, const std::string& tip) {
  copy_label(uiText.c_str());
  SetTip(*this, tip);
}

int PrimaryButton::handle(int event) {
  TrackHover(*this, event, hovered_);
  return Fl_Button::handle(event);
}

void PrimaryButton::draw() {
  const bool active = active_r() != 0;
  Fl_Color fill = hovered_ || value() ? Theme::kAccentDark : Theme::kAccent;
  if (!active) fill = Theme::kPressed;
  fl_color(parent()->color());
  fl_rectf(x(), y(), w(), h());
  Theme::DrawRounded(x(), y(), w(), h(), fill, active ? Theme::kAccentDark : Theme::kLine);
  fl_font(FL_HELVETICA_BOLD, labelsize());
  fl_color(active ? Theme::kSurface : Theme::kDisabledText);
  fl_draw(label() ? label() : "", x() + 4, y(), w() - 8, h(), FL_ALIGN_CENTER | FL_ALIGN_WRAP,
          nullptr, 0);
  if (Fl::focus() == this) {
    fl_color(Theme::kSurface);
    fl_line_style(FL_DOT);
    fl_rect(x() + 3, y() + 3, w() - 6, h() - 6);
    fl_line_style(0);
  }
}

StateButton::StateButton(int x, int y, int w, int h) : Fl_Button(x, y, w, h) {}

void StateButton::SetState(const std::string& uiText, bool on, const std::string& tip) {
  SetTip(*this, tip);
  if (uiText == text_ && on == on_) return;
  text_ = uiText;
  on_ = on;
  redraw();
}

void StateButton::draw() {
  constexpr int kPadding = 8;
  const Fl_Color fill = active_r() ? Theme::kSurface : Theme::kWindow;
  Theme::DrawRounded(x(), y(), w(), h(), fill, Theme::kLine);
  fl_font(FL_HELVETICA, labelsize());
  fl_color(on_ ? Theme::kText : Theme::kMuted);
  const std::string text = FitHead(text_, w() - 2 * kPadding + 6);
  fl_draw(text.c_str(), x(), y(), w(), h(), FL_ALIGN_CENTER, nullptr, 0);
  if (Fl::focus() == this) Theme::DrawFocus(x(), y(), w(), h());
}
