#include "ui/window/KeywordFiles.h"

#include "util/files/FileDirWrapper.h"
#include "util/text/PlainText.h"

namespace {

int HexDigit(char c) {
  if (IsDigit(c)) return c - '0';
  const char lower = Lower(c);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

std::string PercentDecoded(const std::string& text) {
  std::string out;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const int high = at + 2 < text.size() && text[at] == '%' ? HexDigit(text[at + 1]) : -1;
    const int low = high >= 0 ? HexDigit(text[at + 2]) : -1;
    if (low < 0 || high * 16 + low == 0) {
      out += text[at];
    } else {
      out += static_cast<char>(high * 16 + low);
      at += 2;
    }
  }
  return out;
}

std::string PathOf(const std::string& line) {
  constexpr char kScheme[] = "file:";
  if (line.compare(0, 5, kScheme) != 0) {
    const bool otherScheme = line.find("://") != std::string::npos;
    return otherScheme || line[0] == '#' ? std::string() : line;
  }
  std::string address = line.substr(5);
  if (address.compare(0, 2, "//") == 0) {
    // The host, if any, is this machine's.
    const std::size_t path = address.find('/', 2);
    address = path == std::string::npos ? std::string() : address.substr(path);
  }
  std::string path = PercentDecoded(address);
  const bool drive = path.size() > 2 && path[0] == '/' && path[2] == ':';
  if (drive && FileDirWrapper::kSeparator == '\\') path.erase(0, 1);
  return path;
}

}  // namespace

std::vector<std::string> DroppedPaths(const std::string& text) {
  std::vector<std::string> paths;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find_first_of("\r\n", at), text.size());
    const std::string line = text.substr(at, end - at);
    at = end + 1;
    if (line.empty()) continue;
    std::string path = PathOf(line);
    if (!path.empty()) paths.push_back(std::move(path));
  }
  return paths;
}
