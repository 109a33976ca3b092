// Plain questions about text. Letters and digits are those of ASCII, whatever the locale; other
// bytes stay as they are. Any thread.
#ifndef KR_UTIL_TEXT_PLAINTEXT_H
#define KR_UTIL_TEXT_PLAINTEXT_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

constexpr bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

constexpr char Upper(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

constexpr char Lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::string Upper(std::string_view text);
std::string Lower(std::string_view text);

bool SameButForCase(std::string_view a, std::string_view b);

// Whether it ends in these letters, small or big.
constexpr bool EndsInAnyCase(std::string_view text, std::string_view end) {
  if (text.size() < end.size()) return false;
  text.remove_prefix(text.size() - end.size());
  for (std::size_t i = 0; i < end.size(); ++i) {
    if (Lower(text[i]) != Lower(end[i])) return false;
  }
  return true;
}

bool Holds(std::string_view text, std::string_view part);

// The order of names in which numbers count by their value: "CASE2" before "CASE10".
bool ComesBeforeByNumbers(std::string_view a, std::string_view b);

// The bytes of a UTF-8 character that begins with this one; 1 when none does.
constexpr std::size_t CharacterBytes(char first) {
  const auto byte = static_cast<unsigned char>(first);
  return byte < 0xC0 || byte >= 0xF8 ? 1 : byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
}

// Without blanks and tabs at both ends.
std::string_view Trimmed(std::string_view text);

// A whole decimal number between the limits, blanks around it let pass; nothing for any other text.
std::optional<long long> WholeNumber(std::string_view text, long long least, long long most);

// A number as programs of any age write it: 1.5, +2, 1.0D-3, 1.0-3, NaN, Infinity; a field full of
// stars, which did not hold its number, is NaN. What is too big is infinite. Nothing for any other
// text.
std::optional<double> AnyNumber(std::string_view text);

#endif
