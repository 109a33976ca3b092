#include "util/text/PlainText.h"

#include <algorithm>
#include <charconv>
#include <system_error>

std::string Upper(std::string_view text) {
  std::string upper(text);
  for (char& c : upper) c = Upper(c);
  return upper;
}

std::string Lower(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) c = Lower(c);
  return lower;
}

bool SameButForCase(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char x, char y) { return Lower(x) == Lower(y); });
}

bool Holds(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

std::string_view Trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t") + 1 - first);
}

std::optional<long long> WholeNumber(std::string_view text, long long least, long long most) {
  text = Trimmed(text);
  long long value = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  if (error != std::errc() || stop != end || value < least || value > most) return std::nullopt;
  return value;
}
