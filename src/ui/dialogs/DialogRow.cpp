#include "ui/dialogs/DialogRow.h"

#include <FL/Fl_Box.H>

#include <algorithm>

void KeepRow(Fl_Window& window, std::initializer_list<Fl_Widget*> widgets, int gap) {
  int top = window.h();
  int bottom = 0;
  for (const Fl_Widget* widget : widgets) {
    top = std::min(top, widget->y());
    bottom = std::max(bottom, widget->y() + widget->h());
  }
  Fl_Group* const before = Fl_Group::current();
  Fl_Group::current(nullptr);
  auto* row = new Fl_Group(0, top, window.w(), bottom - top);
  auto* filler = new Fl_Box(gap, top, 1, bottom - top);
  row->end();
  Fl_Group::current(before);
  for (Fl_Widget* widget : widgets) row->add(widget);
  row->resizable(filler);
  window.add(row);
}
