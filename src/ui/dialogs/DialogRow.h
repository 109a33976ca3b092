// Keeps the widgets of a dialog's row together when its window is resized.
#ifndef KR_UI_DIALOGS_DIALOGROW_H
#define KR_UI_DIALOGS_DIALOGROW_H

#include <FL/Fl_Window.H>

#include <initializer_list>

// Moves the widgets into a group as wide as the window: they keep their sizes, and all that the
// window is wider goes into the gap that begins at `gap`. The group is the window's child.
void KeepRow(Fl_Window& window, std::initializer_list<Fl_Widget*> widgets, int gap);

#endif
