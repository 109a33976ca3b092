#include "ui/Text.h"

// Byte strings are UTF-8 here. File names that are not valid UTF-8 come back unchanged; FLTK draws
// their odd bytes as single characters.
std::string ToUi(const std::string& text) {
  return text;
}
std::string FromUi(const std::string& text) {
  return text;
}
