// What the windows of this process show, and a user's mouse and keys in them. Widgets are found by
// what they are and by the words on them or beside them.
#ifndef KR_TESTS_UI_SCREEN_H
#define KR_TESTS_UI_SCREEN_H

#include <FL/Enumerations.H>
#include <FL/Fl_Choice.H>
#include <FL/Fl_Input.H>
#include <FL/Fl_Window.H>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "ui/fltk/Flx_Table.h"

// Opens a display of the process's own, once.
void OpenDisplay();

// Handles events until it is so; false when it is not within these seconds.
bool Until(const std::function<bool()>& condition, double seconds = 20);

// A text or an icon as it was drawn, in the coordinates of its window.
struct Drawn {
  std::string text;
  const Fl_Image* icon = nullptr;
  int x = 0, y = 0;  // of a text's beginning on its baseline, of an icon's corner
  Fl_Color color = 0;
};

// What a window draws that can be seen. The window is open.
class Drawing {
 public:
  explicit Drawing(Fl_Window& window);

  // What was drawn over a widget, from top to bottom and from left to right.
  std::vector<Drawn> In(Fl_Widget& widget) const;
  // Its texts, a blank between them.
  std::string Text(Fl_Widget& widget) const;
  bool HasIcon(Fl_Widget& widget, const std::string& name) const;
  // A line of this colour around it.
  bool HasFrame(Fl_Widget& widget, Fl_Color color) const;

 private:
  class Recorder;
  struct Frame {
    int x, y, w, h;
    Fl_Color color;
  };
  std::vector<Drawn> drawn_;
  std::vector<Frame> frames_;
};

// The rows of a table that are in sight, each with its cells between bars; a text in the colour of
// what cannot be used stands in parentheses.
std::vector<std::string> RowsOf(Flx_Table& table);
// The titles in the same form.
std::string HeadsOf(Flx_Table& table);

// The widgets that can be seen and have this label, if one is given, in the order of the Tab key.
std::vector<Fl_Widget*> WidgetsOf(const Fl_Group& in, const std::string& label = {});

template <typename Kind>
std::vector<Kind*> All(const Fl_Group& in, const std::string& label = {}) {
  std::vector<Kind*> all;
  for (Fl_Widget* widget : WidgetsOf(in, label)) {
    if (auto* found = dynamic_cast<Kind*>(widget)) all.push_back(found);
  }
  return all;
}

template <typename Kind>
Kind* Look(const Fl_Group& in, const std::string& label = {}) {
  const std::vector<Kind*> all = All<Kind>(in, label);
  return all.empty() ? nullptr : all.front();
}

// The first one.
template <typename Kind>
Kind& Find(const Fl_Group& in, const std::string& label = {}) {
  if (Kind* found = Look<Kind>(in, label)) return *found;
  throw std::runtime_error("no such widget: " + label);
}

// The next one at the right of a label or of a button with this label.
template <typename Kind>
Kind& Beside(const Fl_Group& in, const std::string& label) {
  const Fl_Widget& words = Find<Fl_Widget>(in, label);
  Kind* next = nullptr;
  const int middle = words.y() + words.h() / 2;
  for (Kind* found : All<Kind>(in)) {
    if (found->x() > words.x() && found->y() < middle && found->y() + found->h() > middle &&
        (!next || found->x() < next->x()))
      next = found;
  }
  if (!next) throw std::runtime_error("nothing beside: " + label);
  return *next;
}

// Mouse events in a window, at a place that was computed from what is there.
void MoveTo(Fl_Window& window, int x, int y);
void MoveTo(Fl_Widget& in, const std::string& text);  // a text that the widget has drawn
// `held`: modifier keys.
void ClickAt(Fl_Window& window, int x, int y, int button = FL_LEFT_MOUSE, bool twice = false,
             int held = 0);
void Drag(Fl_Window& window, int x, int y, int byX, int byY = 0);

void Press(Fl_Widget& widget);  // in its middle
void Press(Fl_Widget& in, const std::string& text, int button = FL_LEFT_MOUSE, bool twice = false);
// Cells, the column by its title, the row counted from the first one in sight.
void MoveToCell(Flx_Table& table, int row, const std::string& title);
void PressCell(Flx_Table& table, int row, const std::string& title, int button = FL_LEFT_MOUSE,
               bool twice = false, int held = 0);
void PressEndOfCell(Flx_Table& table, int row, const std::string& title);

// The tooltip that comes up where the mouse is, null when none does, and what it says.
Fl_Window* TipWindow();
std::string Tip();

// A key for the widget with the focus, in the modal window if there is one.
void Key(Fl_Window& window, int key, int state = 0, const std::string& text = {});
// Types over what a field holds and leaves it with Tab.
void TypeInto(Fl_Input& input, const std::string& text);

// Takes an entry of a choice.
void Choose(Fl_Choice& choice, const std::string& entry);

// Does what opens a modal window, and then step after step in the one that is open at that time,
// each after the events of the last have been handled. Returns when `open` does, which the last
// step makes it do.
using Step = std::function<void(Fl_Window& open)>;
void Talk(const std::function<void()>& open, const std::vector<Step>& steps);

// A talk in which a button with this label is pressed in the window that opens; the longest of the
// window's texts.
std::string Answer(const std::function<void()>& open, const std::string& button);

#endif
