#include "ui/fltk/Tip.h"

#include <FL/Fl.H>
#include <FL/Fl_Box.H>
#include <FL/fl_draw.H>
#include <FL/Fl_Tooltip.H>

#include <algorithm>

#include "ui/fltk/Labels.h"

namespace {

constexpr int kMostLines = 16;
constexpr int kRoundingPixels = 4;  // what the toolkit may count more when it breaks lines itself

// As it is shown in the tooltip's font.
std::string Fitted(const std::string& text) {
  fl_font(Fl_Tooltip::font(), Fl_Tooltip::size());
  const int width = std::min(Fl_Tooltip::wrap_width(), Fl::w() * 2 / 3);
  return PlainLabel(InLines(text, width - kRoundingPixels, kMostLines));
}

// What the toolkit does when the mouse comes to a widget: the tooltip is the widget's or that of
// the innermost group around it that has one.
void Enter(Fl_Widget* widget) {
  Fl_Widget* source = widget;
  while (source && source != Fl_Tooltip::current() && !source->tooltip()) source = source->parent();
  if (!source) return Fl_Tooltip::exit(nullptr);
  if (source != Fl_Tooltip::current())
    ShowTip(*widget, 0, 0, widget->w(), widget->h(), source->tooltip());
}

}  // namespace

void KeepTipsOnScreen() {
  Fl_Group* const open = Fl_Group::current();
  Fl_Group::current(nullptr);
  Fl_Box first(0, 0, 0, 0);
  first.tooltip("");  // with its first tooltip the toolkit takes its own function
  Fl_Group::current(open);
  Fl_Tooltip::enter = Enter;
}

void SetTip(Fl_Widget& widget, const std::string& text) {
  const std::string now = widget.tooltip() ? widget.tooltip() : "";
  if (now == text) return;
  if (Fl_Tooltip::current() == &widget) Fl_Tooltip::exit(&widget);
  widget.copy_tooltip(text.empty() ? nullptr : text.c_str());
}

void ShowTip(Fl_Widget& widget, int x, int y, int w, int h, const std::string& text) {
  static std::string shown;  // the toolkit keeps its address
  if (text.empty()) return Fl_Tooltip::enter_area(&widget, 0, 0, 0, 0, nullptr);
  if (Fl_Tooltip::current() == &widget) Fl_Tooltip::exit(&widget);
  shown = Fitted(text);
  Fl_Tooltip::enter_area(&widget, x, y, w, h, shown.c_str());
}
