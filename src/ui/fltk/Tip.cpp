#include "ui/fltk/Tip.h"

#include <FL/Fl_Tooltip.H>

void SetTip(Fl_Widget& widget, std::string& kept, const std::string& text) {
  if (kept == text && (widget.tooltip() != nullptr) != text.empty()) return;
  if (Fl_Tooltip::current() == &widget) Fl_Tooltip::exit(&widget);
  kept = text;
  widget.tooltip(kept.empty() ? nullptr : kept.c_str());
}
