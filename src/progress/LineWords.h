// Cuts one line of a solver's output into words.
#ifndef KR_PROGRESS_LINEWORDS_H
#define KR_PROGRESS_LINEWORDS_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "util/text/PlainText.h"

// The text outlives the words.
class LineWords {
 public:
  explicit LineWords(std::string_view line) : rest_(line) {}

  // Empty at the end.
  std::string_view Next() {
    std::size_t begin = 0;
    while (begin < rest_.size() && IsBlank(rest_[begin])) ++begin;
    std::size_t end = begin;
    while (end < rest_.size() && !IsBlank(rest_[end])) ++end;
    const std::string_view word = rest_.substr(begin, end - begin);
    rest_.remove_prefix(end);
    return word;
  }
  std::string_view Rest() const { return Trimmed(rest_); }

  bool NextIs(std::string_view word) { return Next() == word; }
  std::optional<double> NextNumber() { return AnyNumber(Next()); }

 private:
  static constexpr bool IsBlank(char c) { return c == ' ' || c == '\t'; }

  std::string_view rest_;
};

// A whole number without a sign, nothing else; nothing when it is too big.
inline std::optional<std::int64_t> Count(std::string_view word) {
  constexpr std::size_t kMostDigits = 18;
  if (word.empty() || word.size() > kMostDigits) return std::nullopt;
  std::int64_t value = 0;
  for (const char c : word) {
    if (!IsDigit(c)) return std::nullopt;
    value = value * 10 + (c - '0');
  }
  return value;
}

#endif
