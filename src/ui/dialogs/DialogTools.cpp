#include "ui/dialogs/DialogTools.h"

#include <FL/Fl.H>
#include <FL/Fl_Box.H>

#include <algorithm>

void SetTabOrder(Fl_Group& group, std::initializer_list<Fl_Widget*> children) {
  int place = 0;
  for (Fl_Widget* child : children) {
    if (child && child->parent() == &group) group.insert(*child, place++);
  }
}

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

void ShowStored(Fl_Input& input, const std::string& uiText) {
  if (Fl::focus() == &input && input.changed()) return;
  if (uiText != input.value()) input.value(uiText.c_str());
  input.clear_changed();
}
