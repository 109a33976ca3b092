#include "ui/text/WordFilter.h"

#include <algorithm>
#include <sstream>

#include "ui/text/FileText.h"

WordFilter::WordFilter(const std::string& words) {
  std::istringstream in(Folded(words));
  for (std::string word; in >> word;) words_.push_back(word);
}

bool WordFilter::Matches(const std::string& folded) const {
  return std::all_of(words_.begin(), words_.end(), [&folded](const std::string& word) {
    return folded.find(word) != std::string::npos;
  });
}

// A number becomes the count of its digits and then these. That count stands where digits do, so
// that numbers keep their place among other characters.
std::string NaturalKey(const std::string& folded) {
  constexpr std::size_t kMostDigits = '9' - '0';
  const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
  std::string key;
  key.reserve(folded.size() + 8);
  for (std::size_t at = 0; at < folded.size();) {
    if (!isDigit(folded[at])) {
      key += folded[at++];
      continue;
    }
    while (at + 1 < folded.size() && folded[at] == '0' && isDigit(folded[at + 1])) ++at;
    std::size_t end = at;
    while (end < folded.size() && isDigit(folded[end])) ++end;
    for (std::size_t digits = end - at; digits > kMostDigits; digits -= kMostDigits) key += '9';
    key += static_cast<char>('0' + (end - at - 1) % kMostDigits);
    key.append(folded, at, end - at);
    at = end;
  }
  return key;
}
