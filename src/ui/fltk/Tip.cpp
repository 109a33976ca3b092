#include "ui/fltk/Tip.h"

#include <FL/Fl_Tooltip.H>

void SetTip(Fl_Widget& widget, const std::string& text) {
  const std::string now = widget.tooltip() ? widget.tooltip() : "";
  if (now == text) return;
  if (Fl_Tooltip::current() == &widget) Fl_Tooltip::exit(&widget);
  widget.copy_tooltip(text.empty() ? nullptr : text.c_str());
}
