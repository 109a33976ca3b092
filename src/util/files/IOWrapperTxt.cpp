#include "util/files/IOWrapper.h"

bool IOWrapperTxt::ParseLine(const std::string& text, std::vector<std::string>& lines) {
  lines.clear();
  if (text.empty()) return false;
  std::size_t start = 0;
  for (;;) {
    const std::size_t end = text.find('\n', start);
    lines.push_back(text.substr(start, end - start));
    if (end == std::string::npos) return true;
    start = end + 1;
  }
}
