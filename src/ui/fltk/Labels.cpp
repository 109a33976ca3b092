#include "ui/fltk/Labels.h"

#include <FL/fl_draw.H>

#include <vector>

#include "util/text/PlainText.h"

namespace {

std::string Doubled(const std::string& text, const std::string& special) {
  std::string out;
  for (const char c : text) out.append(special.find(c) == std::string::npos ? 1 : 2, c);
  return out;
}

constexpr char kEllipsis[] = "\xE2\x80\xA6";

int Width(const std::string& text) {
  return static_cast<int>(fl_width(text.data(), static_cast<int>(text.size())) + 0.5);
}

// Offsets at which a character begins, and the text's end.
std::vector<std::size_t> CharacterStarts(const std::string& text) {
  std::vector<std::size_t> starts;
  for (std::size_t at = 0; at < text.size();) {
    starts.push_back(at);
    at += CharacterBytes(text[at]);
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

std::string PlainLabel(const std::string& text) {
  return Doubled(text, "@");
}

std::string PlainItem(const std::string& text) {
  return Doubled(text, "@&");
}

std::string FitHead(const std::string& text, int width) {
  if (Width(text) <= width) return text;
  const std::vector<std::size_t> starts = CharacterStarts(text);
  return Longest(starts.size() - 1, width,
                 [&](std::size_t count) { return text.substr(0, starts[count]) + kEllipsis; });
}

std::string FitTail(const std::string& text, int width) {
  if (Width(text) <= width) return text;
  const std::vector<std::size_t> starts = CharacterStarts(text);
  return Longest(starts.size() - 1, width, [&](std::size_t count) {
    return kEllipsis + text.substr(starts[starts.size() - 1 - count]);
  });
}
