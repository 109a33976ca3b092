#include "Text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <system_error>

namespace {

constexpr std::string_view kBlanks = " \t\r\n\v\f";

std::string_view WithoutPlus(std::string_view text) {
  if (text.size() > 1 && text[0] == '+' && text[1] != '-') text.remove_prefix(1);
  return text;
}

std::optional<double> PlainReal(std::string_view text) {
  double value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(value)) {
    return std::nullopt;
  }
  return value;
}

// Fortran writes an exponent with D, or with its sign alone.
std::string WithPlainExponent(std::string_view text) {
  std::string plain;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c == 'd' || c == 'D') {
      plain += 'e';
      continue;
    }
    const bool digitBefore =
        i > 0 && (text[i - 1] == '.' || (text[i - 1] >= '0' && text[i - 1] <= '9'));
    if ((c == '+' || c == '-') && digitBefore) plain += 'e';
    plain += c;
  }
  return plain;
}

}  // namespace

std::string_view Trim(std::string_view text) {
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::string Upper(std::string_view text) {
  std::string upper(text);
  for (char& c : upper) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return upper;
}

std::vector<std::string> Words(std::string_view text) {
  std::vector<std::string> words;
  for (text = Trim(text); !text.empty(); text = Trim(text)) {
    const std::size_t end = std::min(text.find_first_of(kBlanks), text.size());
    words.emplace_back(text.substr(0, end));
    text.remove_prefix(end);
  }
  return words;
}

std::optional<long long> ToInteger(std::string_view text) {
  text = WithoutPlus(Trim(text));
  long long value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (text.empty() || error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

std::optional<double> ToReal(std::string_view text) {
  text = WithoutPlus(Trim(text));
  if (text.empty()) return std::nullopt;
  if (const auto value = PlainReal(text)) return value;
  return PlainReal(WithPlainExponent(text));
}

std::string Format(const char* format, ...) {
  char buffer[512];
  va_list arguments;
  va_start(arguments, format);
  const int length = std::vsnprintf(buffer, sizeof buffer, format, arguments);
  va_end(arguments);
  if (length < 0) return {};
  if (static_cast<std::size_t>(length) < sizeof buffer) return buffer;
  std::string text(static_cast<std::size_t>(length), '\0');
  va_start(arguments, format);
  std::vsnprintf(text.data(), text.size() + 1, format, arguments);
  va_end(arguments);
  return text;
}
