#include "ui/fltk/ModalWindow.h"

#include <FL/Fl.H>

#include <algorithm>

#include "ui/fltk/Theme.h"

namespace {

constexpr int kTitleBar = 30;  // about

bool g_allowed = true;

}  // namespace

void AllowModalWindows(bool allow) {
  g_allowed = allow;
}

bool ModalWindowsAllowed() {
  return g_allowed;
}

ModalWindow::ModalWindow(int w, int h) : Fl_Double_Window(w, h) {
  color(Theme::kWindow);
  set_modal();
}

void ModalWindow::Open(Fl_Window* parent, Fl_Widget* focus) {
  CentreOver(*this, parent);
  MoveOntoScreen(*this, parent);
  show();
  if (focus) Fl::focus(focus);
}

void ModalWindow::Run(Fl_Window* parent, Fl_Widget* focus) {
  if (!ModalWindowsAllowed()) return;
  Open(parent, focus);
  while (shown()) Fl::wait();
}

ScreenArea ScreenOf(Fl_Window* parent) {
  ScreenArea area;
  if (parent && parent->shown()) {
    Fl::screen_work_area(area.x, area.y, area.w, area.h, parent->x() + parent->w() / 2,
                         parent->y() + parent->h() / 2);
  } else {
    Fl::screen_work_area(area.x, area.y, area.w, area.h);
  }
  area.y += kTitleBar;
  area.h -= kTitleBar;
  return area;
}

void CentreOver(Fl_Window& window, Fl_Window* parent) {
  int x = Fl::x(), y = Fl::y(), w = Fl::w(), h = Fl::h();
  if (parent && parent->shown()) {
    x = parent->x();
    y = parent->y();
    w = parent->w();
    h = parent->h();
  }
  window.position(static_cast<int>(x + (w - window.w()) * 0.5),
                  static_cast<int>(y + (h - window.h()) * 0.5));
}

void MoveOntoScreen(Fl_Window& window, Fl_Window* parent) {
  const ScreenArea screen = ScreenOf(parent);
  window.position(std::max(std::min(window.x(), screen.x + screen.w - window.w()), screen.x),
                  std::max(std::min(window.y(), screen.y + screen.h - window.h()), screen.y));
}

void FitScreen(Fl_Window& window, Fl_Window* parent) {
  const ScreenArea screen = ScreenOf(parent);
  window.size(std::min(window.w(), screen.w), std::min(window.h(), screen.h));
  MoveOntoScreen(window, parent);
}
