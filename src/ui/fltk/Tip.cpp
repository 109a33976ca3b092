#include "ui/fltk/Tip.h"

#include <FL/Fl.H>
#include <FL/Fl_Box.H>
#include <FL/fl_draw.H>
#include <FL/Fl_Tooltip.H>
#include <FL/Fl_Window.H>

#include <algorithm>
#include <array>

#include "ui/fltk/Labels.h"

namespace {

constexpr int kMostLines = 16;
constexpr int kRoundingPixels = 4;  // what the toolkit may count more when it breaks lines itself

// The toolkit keeps the address of what it shows.
std::array<char, 4096> kept{};

void Keep(const std::string& text) {
  kept[text.copy(kept.data(), kept.size() - 1)] = '\0';
}

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
  if (text.empty()) return Fl_Tooltip::enter_area(&widget, 0, 0, 0, 0, nullptr);
  if (Fl_Tooltip::current() == &widget) Fl_Tooltip::exit(&widget);
  Keep(Fitted(text));
  Fl_Tooltip::enter_area(&widget, x, y, w, h, kept.data());
}

void ChangeTip(const Fl_Widget& widget, const std::string& text) {
  if (text.empty() || Fl_Tooltip::current() != &widget) return;
  const std::string fitted = Fitted(text);
  if (fitted == kept.data()) return;
  Keep(fitted);
  Fl_Window* window = Fl::first_window();
  while (window != nullptr && !window->tooltip_window()) window = Fl::next_window(window);
  if (window == nullptr) return;
  int width = Fl_Tooltip::wrap_width();
  int height = 0;
  fl_font(Fl_Tooltip::font(), Fl_Tooltip::size());
  fl_measure(kept.data(), width, height, 1);
  width += 2 * Fl_Tooltip::margin_width();
  height += 2 * Fl_Tooltip::margin_height();
  int left, top, across, down;
  Fl::screen_work_area(left, top, across, down, window->x(), window->y());
  window->resize(std::max(std::min(window->x(), left + across - width), left),
                 std::max(std::min(window->y(), top + down - height), top), width, height);
  window->redraw();
}
