#include "ui/fltk/Numbers.h"

#include <charconv>
#include <system_error>

std::optional<long long> WholeNumber(const std::string& text, long long least, long long most) {
  constexpr char kBlanks[] = " \t";
  const std::size_t begin = text.find_first_not_of(kBlanks);
  if (begin == std::string::npos) return std::nullopt;
  const char* end = text.data() + text.find_last_not_of(kBlanks) + 1;
  long long value = 0;
  const auto [stop, error] = std::from_chars(text.data() + begin, end, value);
  if (error != std::errc() || stop != end || value < least || value > most) return std::nullopt;
  return value;
}
