#include "util/text/PlainText.h"

#include <algorithm>
#include <charconv>
#include <limits>
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

bool ComesBeforeByNumbers(std::string_view a, std::string_view b) {
  std::size_t i = 0;
  std::size_t j = 0;
  while (i < a.size() && j < b.size()) {
    if (!IsDigit(a[i]) || !IsDigit(b[j])) {
      if (a[i] != b[j]) return static_cast<unsigned char>(a[i]) < static_cast<unsigned char>(b[j]);
      ++i, ++j;
      continue;
    }
    i = std::min(a.find_first_not_of('0', i), a.size());
    j = std::min(b.find_first_not_of('0', j), b.size());
    const std::size_t iEnd = std::min(a.find_first_not_of("0123456789", i), a.size());
    const std::size_t jEnd = std::min(b.find_first_not_of("0123456789", j), b.size());
    if (iEnd - i != jEnd - j) return iEnd - i < jEnd - j;
    const int order = a.compare(i, iEnd - i, b, j, jEnd - j);
    if (order != 0) return order < 0;
    i = iEnd, j = jEnd;
  }
  return i == a.size() && j < b.size();
}

bool Holds(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

std::string_view Trimmed(std::string_view text) {
  const auto isBlank = [](char c) { return c == ' ' || c == '\t'; };
  while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
  return text;
}

std::optional<long long> WholeNumber(std::string_view text, long long least, long long most) {
  text = Trimmed(text);
  long long value = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  if (error != std::errc() || stop != end || value < least || value > most) return std::nullopt;
  return value;
}

std::optional<double> AnyNumber(std::string_view text) {
  if (text.empty()) return std::nullopt;
  double value = 0;
  const char* const end = text.data() + text.size();
  // What most numbers look like.
  if (const auto [stop, error] = std::from_chars(text.data(), end, value);
      stop == end && error == std::errc()) {
    return value;
  }
  constexpr std::size_t kLongestNumber = 64;
  if (text.size() > kLongestNumber) return std::nullopt;
  if (text.find_first_not_of('*') == std::string_view::npos) {
    return std::numeric_limits<double>::quiet_NaN();
  }
  if (text[0] == '+') {
    text.remove_prefix(1);
    if (text.empty() || text[0] == '-') return std::nullopt;
  }
  std::string usual(text);
  std::replace_if(
      usual.begin(), usual.end(), [](char c) { return c == 'd' || c == 'D'; }, 'e');
  const std::size_t sign = usual.find_last_of("+-");
  const bool hasSign = sign != std::string::npos && sign > 0;
  if (hasSign && (IsDigit(usual[sign - 1]) || usual[sign - 1] == '.')) usual.insert(sign, 1, 'e');
  const auto [stop, error] = std::from_chars(usual.data(), usual.data() + usual.size(), value);
  if (usual[0] == '+' || stop != usual.data() + usual.size()) return std::nullopt;
  if (error == std::errc()) return value;
  if (error != std::errc::result_out_of_range) return std::nullopt;
  const bool tiny = hasSign && text[text.find_last_of("+-")] == '-';
  const double big = std::numeric_limits<double>::infinity();
  return tiny ? 0 : usual[0] == '-' ? -big : big;
}
