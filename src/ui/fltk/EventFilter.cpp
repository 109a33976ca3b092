#include "ui/fltk/EventFilter.h"

#include <FL/Fl.H>

namespace {

Fl_Window* theDropTarget = nullptr;

bool StepsBackInMenu(int event) {
  if (!Fl::grab() || (event != FL_KEYBOARD && event != FL_SHORTCUT)) return false;
  const bool backTab = Fl::event_key() == FL_Tab && Fl::event_state(FL_SHIFT);
  return Fl::event_key() == FL_BackSpace || backTab;
}

// A key that the widget with the focus did not take, in a window over which the mouse is not.
bool IsShortcutOfAnother(int event, const Fl_Window* owner) {
  return event == FL_SHORTCUT && !Fl::grab() && owner && Fl::belowmouse() &&
         Fl::belowmouse()->top_window() != owner;
}

// What the toolkit does with a shortcut, past the widget below the mouse.
int HandleShortcut(Fl_Window& owner) {
  if (owner.handle(FL_SHORTCUT)) return 1;
  if (Fl::event_key() != FL_Escape) return 0;
  owner.do_callback();
  return 1;
}

int Filter(int event, Fl_Window* window) {
  if (StepsBackInMenu(event)) return 1;
  Fl_Window* const owner = Fl::modal() || !window ? Fl::modal() : window->top_window();
  if (IsShortcutOfAnother(event, owner)) return HandleShortcut(*owner);
  // The mouse enters the window just before the drop is told: what lies below it has become the
  // widget to tell, and would refuse.
  if (event == FL_DND_RELEASE && window == theDropTarget && !Fl::modal()) Fl::belowmouse(window);
  return Fl::handle_(event, window);
}

}  // namespace

void FilterEvents(Fl_Window* dropTarget) {
  theDropTarget = dropTarget;
  Fl::event_dispatch(dropTarget ? Filter : nullptr);
}
