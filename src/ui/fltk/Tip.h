// Tooltips whose text changes.
#ifndef KR_UI_FLTK_TIP_H
#define KR_UI_FLTK_TIP_H

#include <FL/Fl_Widget.H>

#include <string>

// A tooltip that the widget keeps, in UTF-8; empty: none. One that is on the screen with another
// text goes away.
void SetTip(Fl_Widget& widget, const std::string& text);

#endif
