// What several dialogs do with their widgets.
#ifndef KR_UI_DIALOGS_DIALOGTOOLS_H
#define KR_UI_DIALOGS_DIALOGTOOLS_H

#include <FL/Fl_Group.H>
#include <FL/Fl_Input.H>
#include <FL/Fl_Window.H>

#include <initializer_list>
#include <string>

// Reaches the children of the group with the Tab key in this order, before all others.
void SetTabOrder(Fl_Group& group, std::initializer_list<Fl_Widget*> children);

// Moves the widgets into a group as wide as the window: they keep their sizes, and all that the
// window is wider goes into the gap that begins at `gap`. The group is the window's child.
void KeepRow(Fl_Window& window, std::initializer_list<Fl_Widget*> widgets, int gap);

// Shows a stored text, unless the user has changed the field and is still in it.
void ShowStored(Fl_Input& input, const std::string& uiText);

#endif
