#include "ui/fltk/LineInput.h"

#include <FL/Fl.H>

#include <algorithm>
#include <string>

namespace {

bool IsControl(char c) {
  return static_cast<unsigned char>(c) < ' ' || c == '\x7F';
}

}  // namespace

int LineInput::handle(int event) {
  // Also when there is nothing to copy or to take back: no window may have the key instead.
  const int key = Fl::event_key();
  const bool isEditing = key == 'a' || key == 'c' || key == 'v' || key == 'x' || key == 'z';
  const int modifiers = Fl::event_state() & (FL_CTRL | FL_ALT | FL_SHIFT);
  const bool isOwnKey = event == FL_KEYBOARD && isEditing && modifiers == FL_CTRL;
  if (isOwnKey) return Fl_Input::handle(event), 1;
  if (event != FL_PASTE || !Fl::e_text || Fl::e_length <= 0) return Fl_Input::handle(event);
  char* const pasted = Fl::e_text;
  std::string text(pasted, static_cast<std::size_t>(Fl::e_length));
  std::replace_if(text.begin(), text.end(), IsControl, ' ');
  Fl::e_text = text.data();
  const int result = Fl_Input::handle(event);
  Fl::e_text = pasted;
  return result;
}
