#include "messages/FilledText.h"

namespace {

constexpr std::string_view kLetters = "psdm";

}  // namespace

std::string FilledText(std::string_view text, const std::function<std::string(char letter)>& give) {
  std::string out;
  bool isOne = true;  // the last value
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] == '%' && at + 1 < text.size() &&
        kLetters.find(text[at + 1]) != std::string_view::npos) {
      const std::string value = give(text[++at]);
      isOne = value == "1";
      out += value;
      continue;
    }
    const std::size_t between = text[at] == '{' ? text.find('|', at) : std::string_view::npos;
    const std::size_t end = text.find('}', between);
    if (end == std::string_view::npos) {
      out += text[at];
      continue;
    }
    const std::size_t begin = isOne ? at + 1 : between + 1;
    out += text.substr(begin, (isOne ? between : end) - begin);
    at = end;
  }
  return out;
}
