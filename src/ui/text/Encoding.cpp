#include "ui/text/Encoding.h"

#include "util/text/PlainText.h"

std::string ConvertedText936(const std::string& text) {
  const std::string whole = FromCodePage936(text);
  int units = 0;
  std::size_t end = 0;
  while (end < whole.size()) {
    const auto first = static_cast<unsigned char>(whole[end]);
    units += first >= 0xF0 ? 2 : 1;
    if (units > kMostUnits) return ToCodePage936(whole.substr(0, end));
    end += CharacterBytes(whole[end]);
  }
  return ToCodePage936(whole);
}
