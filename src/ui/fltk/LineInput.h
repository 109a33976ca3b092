// A one-line input that stays on one line.
#ifndef KR_UI_FLTK_LINEINPUT_H
#define KR_UI_FLTK_LINEINPUT_H

#include <FL/Fl_Input.H>

// Line ends and other control characters of a pasted text become blanks: the toolkit would keep
// them, in texts that end up in lines of files and of commands. The keys that select all, copy,
// cut, paste and take back are its own while it has the focus. Interface thread.
class LineInput : public Fl_Input {
 public:
  using Fl_Input::Fl_Input;

  int handle(int event) override;
};

#endif
