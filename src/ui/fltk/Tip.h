// Tooltips.
#ifndef KR_UI_FLTK_TIP_H
#define KR_UI_FLTK_TIP_H

#include <FL/Fl_Widget.H>

#include <string>

// From now on every tooltip, of the toolkit's own windows too, is broken into lines that fit on the
// screen, long paths shortened in their middle (see InLines). Interface thread, as all here.
void KeepTipsOnScreen();

// A tooltip that the widget keeps, in UTF-8; empty: none. One that is on the screen with another
// text goes away.
void SetTip(Fl_Widget& widget, const std::string& text);

// The tooltip of a part of a widget, where the mouse is now; an empty text: none. The place is
// counted from the widget's.
void ShowTip(Fl_Widget& widget, int x, int y, int w, int h, const std::string& text);

// The tooltip that ShowTip has shown last says something else now. It stays where it is. Nothing
// when it is not the widget's.
void ChangeTip(const Fl_Widget& widget, const std::string& text);

#endif
