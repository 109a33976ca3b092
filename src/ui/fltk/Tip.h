// Tooltips whose text changes.
#ifndef KR_UI_FLTK_TIP_H
#define KR_UI_FLTK_TIP_H

#include <FL/Fl_Widget.H>

#include <string>

// Gives the widget a tooltip; empty: none. The toolkit keeps no copy: `kept` holds the text and
// lives as long as the widget. A tooltip that is on the screen with another text goes away.
void SetTip(Fl_Widget& widget, std::string& kept, const std::string& text);

#endif
