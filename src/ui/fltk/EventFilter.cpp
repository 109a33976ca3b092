#include "ui/fltk/EventFilter.h"

#include <FL/Fl.H>

namespace {

Fl_Window* theDropTarget = nullptr;

bool StepsBackInMenu(int event) {
  if (!Fl::grab() || (event != FL_KEYBOARD && event != FL_SHORTCUT)) return false;
  const bool backTab = Fl::event_key() == FL_Tab && Fl::event_state(FL_SHIFT);
  return Fl::event_key() == FL_BackSpace || backTab;
}

int Filter(int event, Fl_Window* window) {
  if (StepsBackInMenu(event)) return 1;
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
