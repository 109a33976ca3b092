// Reading numbers that people type.
#ifndef KR_UI_FLTK_NUMBERS_H
#define KR_UI_FLTK_NUMBERS_H

#include <optional>
#include <string>

// A whole decimal number between the limits, blanks around it let pass; nothing for any other text.
std::optional<long long> WholeNumber(const std::string& text, long long least, long long most);

#endif
