#include "ui/text/Encoding.h"

#include <FL/fl_draw.H>
#include <FL/fl_utf8.h>

#include <algorithm>
#include <vector>

namespace {

constexpr char kEllipsis[] = "\xE2\x80\xA6";

int Width(const std::string& text) {
  return static_cast<int>(fl_width(text.data(), static_cast<int>(text.size())) + 0.5);
}

// Offsets at which a character begins, and the text's end.
std::vector<std::size_t> CharacterStarts(const std::string& text) {
  std::vector<std::size_t> starts;
  for (std::size_t at = 0; at < text.size();) {
    starts.push_back(at);
    const int length = fl_utf8len1(text[at]);
    at += static_cast<std::size_t>(length > 0 ? length : 1);
  }
  starts.push_back(text.size());
  return starts;
}

// The longest piece that fits, looked for by halving; `piece` makes it of a number of characters.
template <typename Piece>
std::string Longest(std::size_t characters, int width, Piece piece) {
  std::size_t fits = 0;
  std::size_t tooMany = characters;
  while (fits + 1 < tooMany) {
    const std::size_t middle = (fits + tooMany) / 2;
    (Width(piece(middle)) <= width ? fits : tooMany) = middle;
  }
  return piece(fits);
}

}  // namespace

std::string ConvertedText936(const std::string& text) {
  const std::string whole = FromCodePage936(text);
  int units = 0;
  std::size_t end = 0;
  while (end < whole.size()) {
    const auto first = static_cast<unsigned char>(whole[end]);
    const int length = std::max(1, fl_utf8len1(whole[end]));
    units += first >= 0xF0 ? 2 : 1;
    if (units > kMostUnits) return ToCodePage936(whole.substr(0, end));
    end += static_cast<std::size_t>(length);
  }
  return ToCodePage936(whole);
}

std::string MenuLabel(const std::string& uiText) {
  std::string out;
  for (const char c : uiText) {
    if (c == '&' || c == '@') out += c;
    if (c == '/' || c == '\\') out += '\\';
    out += c;
  }
  return out;
}

std::string FitHead(const std::string& uiText, int width) {
  if (Width(uiText) <= width) return uiText;
  const std::vector<std::size_t> starts = CharacterStarts(uiText);
  return Longest(starts.size() - 1, width,
                 [&](std::size_t count) { return uiText.substr(0, starts[count]) + kEllipsis; });
}

std::string FitTail(const std::string& uiText, int width) {
  if (Width(uiText) <= width) return uiText;
  const std::vector<std::size_t> starts = CharacterStarts(uiText);
  return Longest(starts.size() - 1, width, [&](std::size_t count) {
    return kEllipsis + uiText.substr(starts[starts.size() - 1 - count]);
  });
}
