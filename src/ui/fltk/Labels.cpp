#include "ui/fltk/Labels.h"

#include <FL/fl_draw.H>
#include <FL/fl_utf8.h>

#include <algorithm>
#include <vector>

#include "util/text/PlainText.h"

namespace {

using Lines = std::vector<std::string>;

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

unsigned CharacterAt(const std::string& text, std::size_t at) {
  return fl_utf8decode(text.data() + at, text.data() + text.size(), nullptr);
}

constexpr unsigned kFirstWide = 0x2E80;  // Chinese characters and their punctuation

// No line begins with one of these.
bool EndsWords(unsigned character) {
  static const std::u32string kClosing = U",.;:!?)]}，。；：！？）】》、”’";
  return kClosing.find(static_cast<char32_t>(character)) != std::u32string::npos;
}

// Whether a line may end in front of this place.
bool MayBreak(const std::string& text, std::size_t before, std::size_t at) {
  const char last = text[before];
  if (last == ' ' || last == '/' || last == '\\') return true;
  const unsigned next = CharacterAt(text, at);
  if (next == ' ') return true;
  return (CharacterAt(text, before) >= kFirstWide || next >= kFirstWide) && !EndsWords(next);
}

// Of words that take more than `kWordLines` the middle becomes "...".
std::string WithShortWords(const std::string& paragraph, int width) {
  std::string out;
  for (std::size_t at = 0; at < paragraph.size();) {
    const std::size_t end = std::min(paragraph.find(' ', at), paragraph.size());
    const std::string word = paragraph.substr(at, end - at);
    if (Width(word) <= kWordLines * width) {
      out += word;
    } else {
      const std::string tail = FitTail(word, (kWordLines - 1) * width);
      out += FitHead(word, width) + tail.substr(sizeof kEllipsis - 1);
    }
    if (end < paragraph.size()) out += ' ';
    at = end + 1;
  }
  return out;
}

Lines LinesOf(const std::string& whole, int width) {
  Lines lines;
  std::string paragraph = WithShortWords(whole, width);
  while (Width(paragraph.substr(0, 4 * static_cast<std::size_t>(width))) > width) {
    // No more characters than pixels fit.
    const auto window = 4 * static_cast<std::size_t>(width);
    const std::vector<std::size_t> starts = CharacterStarts(paragraph.substr(0, window));
    std::size_t fits = 1;
    for (std::size_t tooMany = starts.size() - 1; fits + 1 < tooMany;) {
      const std::size_t middle = (fits + tooMany) / 2;
      (Width(paragraph.substr(0, starts[middle])) <= width ? fits : tooMany) = middle;
    }
    std::size_t count = fits;
    while (count > 0 && !MayBreak(paragraph, starts[count - 1], starts[count])) --count;
    const std::size_t end = starts[count > 0 ? count : fits];
    lines.push_back(paragraph.substr(0, paragraph.find_last_not_of(' ', end - 1) + 1));
    paragraph.erase(0, std::min(paragraph.find_first_not_of(' ', end), paragraph.size()));
  }
  lines.push_back(std::move(paragraph));
  return lines;
}

void DropMiddle(Lines& lines, int most, int width) {
  if (static_cast<int>(lines.size()) <= most) return;
  const int head = most * 3 / 8;  // names stand at the end
  lines.erase(lines.begin() + head, lines.end() - (most - head));
  std::string& next = lines[static_cast<std::size_t>(head)];
  next = FitTail(kEllipsis + next, width);
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

std::string InLines(const std::string& text, int width, int mostLines) {
  Lines all;
  for (std::size_t at = 0; at <= text.size();) {
    const std::size_t end = std::min(text.find('\n', at), text.size());
    Lines lines = LinesOf(text.substr(at, end - at), width);
    DropMiddle(lines, kParagraphLines, width);
    all.insert(all.end(), lines.begin(), lines.end());
    at = end + 1;
  }
  DropMiddle(all, mostLines, width);
  std::string out;
  for (const std::string& line : all) out += line + "\n";
  out.pop_back();
  return out;
}
