#include "core/SmallTextFile.h"

#include <algorithm>

#include "util/files/InputFile.h"

namespace {

constexpr std::uint64_t kLargestText = 16 * 1024 * 1024;
constexpr char kByteOrderMark[] = "\xEF\xBB\xBF";

}  // namespace

bool ReadWholeText(const std::string& path, std::string& text) {
  text.clear();
  InputFile file;
  if (!file.Open(path) || file.Size() > kLargestText) return false;
  char piece[16384];
  for (;;) {
    const std::ptrdiff_t got = file.Read(piece, sizeof(piece));
    if (got < 0 || text.size() > kLargestText) return false;
    if (got == 0) return true;
    text.append(piece, static_cast<std::size_t>(got));
  }
}

std::vector<std::string> LinesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::size_t begin = text.starts_with(kByteOrderMark) ? sizeof(kByteOrderMark) - 1 : 0;
  while (begin < text.size()) {
    const std::size_t end = std::min(text.find('\n', begin), text.size());
    std::string line = text.substr(begin, end - begin);
    if (line.ends_with('\r')) line.pop_back();
    lines.push_back(std::move(line));
    begin = end + 1;
  }
  return lines;
}

std::string OneLine(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](char c) { return c == '\n' || c == '\r' || c == '\0'; }, ' ');
  return text;
}
