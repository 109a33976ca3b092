// Mends how the toolkit hands out some events.
#ifndef KR_UI_FLTK_EVENTFILTER_H
#define KR_UI_FLTK_EVENTFILTER_H

#include <FL/Fl_Window.H>

// From now on:
// - drops anywhere on this window are its own, not of the widget below the mouse, as long as no
//   modal window is open;
// - keys belong to the window that has them, wherever the mouse is;
// - keys that step back in an open menu do nothing: they crash the toolkit while the mouse is
//   outside the menu.
// Null ends it. Interface thread.
void FilterEvents(Fl_Window* dropTarget);

#endif
