#include "solvers/KeywordCards.h"

#include <algorithm>
#include <charconv>
#include <system_error>

#include "util/text/PlainText.h"

namespace {

constexpr std::string_view kBlanks = " \t";

std::string UpperWithoutBlanks(std::string_view text) {
  std::string upper;
  for (const char c : text) {
    if (kBlanks.find(c) == std::string_view::npos) upper += Upper(c);
  }
  return upper;
}

std::optional<CardFormat> FormatOfSign(char sign) {
  if (sign == '+') return CardFormat::kLong;
  if (sign == '%') return CardFormat::kTenDigits;
  if (sign == '-') return CardFormat::kStandard;
  return std::nullopt;
}

std::optional<std::uint64_t> FirstNumber(std::string_view line, std::size_t width) {
  const std::size_t comma = line.find(',');
  const std::string_view field =
      Trimmed(line.substr(0, comma != std::string_view::npos ? comma : width));
  std::uint64_t number = 0;
  const char* const end = field.data() + field.size();
  const auto result = std::from_chars(field.data(), end, number);
  if (field.empty() || result.ec != std::errc() || result.ptr != end) return std::nullopt;
  return number;
}

}  // namespace

Keyword ParseKeyword(std::string_view line, CardFormat format) {
  std::string_view text = line.substr(1);
  const std::size_t nameEnd = std::min(text.find_first_of(" \t,"), text.size());
  std::string_view name = text.substr(0, nameEnd);
  std::string_view rest = Trimmed(text.substr(nameEnd));
  if (!name.empty() && FormatOfSign(name.back())) {
    format = *FormatOfSign(name.back());
    name.remove_suffix(1);
  } else if (!rest.empty() && FormatOfSign(rest[0])) {
    format = *FormatOfSign(rest[0]);
  }
  return {UpperWithoutBlanks(name), format, rest};
}

CardFormat DeckFormat(const Keyword& keyword, CardFormat format) {
  const std::string rest = UpperWithoutBlanks(keyword.rest);
  if (rest.find("LONG=Y") != std::string::npos) return CardFormat::kLong;
  if (rest.find("I10=Y") != std::string::npos) return CardFormat::kTenDigits;
  if (rest.find("LONG=") != std::string::npos) return CardFormat::kStandard;
  return format;
}

std::optional<std::uint64_t> NodeNumber(std::string_view line, CardFormat format) {
  constexpr std::size_t kWidths[] = {8, 10, 20};
  return FirstNumber(line, kWidths[static_cast<std::size_t>(format)]);
}

std::optional<std::uint64_t> SpcNodeNumber(std::string_view line, CardFormat format) {
  return FirstNumber(line, format == CardFormat::kLong ? 20 : 10);
}

std::size_t CoordinatesEnd(std::string_view line, CardFormat format) {
  constexpr std::size_t kEnds[] = {8 + 3 * 16, 10 + 3 * 16, 20 + 3 * 20};
  std::size_t comma = line.find(',');
  if (comma == std::string_view::npos) {
    return std::min(line.size(), kEnds[static_cast<std::size_t>(format)]);
  }
  for (int i = 0; i < 3 && comma != std::string_view::npos; ++i) comma = line.find(',', comma + 1);
  return std::min(comma, line.size());
}
