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
  if (event != FL_PASTE || !Fl::e_text || Fl::e_length <= 0) return Fl_Input::handle(event);
  char* const pasted = Fl::e_text;
  std::string text(pasted, static_cast<std::size_t>(Fl::e_length));
  std::replace_if(text.begin(), text.end(), IsControl, ' ');
  Fl::e_text = text.data();
  const int result = Fl_Input::handle(event);
  Fl::e_text = pasted;
  return result;
}
