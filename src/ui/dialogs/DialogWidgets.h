// The widgets that a dialog's layout may name.
#ifndef KR_UI_DIALOGS_DIALOGWIDGETS_H
#define KR_UI_DIALOGS_DIALOGWIDGETS_H

#include <FL/Fl_Widget.H>

#include "ui/dialogs/DialogLayout.h"

// Makes the widget of a line in the current group, with an empty label and its down box. Null for a
// type that is not known. Groups come back closed.
Fl_Widget* MakeDialogWidget(const LayoutLine& line, int x, int y, int width, int height);

#endif
