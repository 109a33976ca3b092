#include "util/text/FileUrl.h"

#include <algorithm>
#include <string_view>

#include "util/text/PlainText.h"

namespace {

bool IsLetter(char c) {
  return Lower(c) >= 'a' && Lower(c) <= 'z';
}

std::string Encoded(std::string_view path) {
  constexpr std::string_view kPlain = "-._~/";
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (const char c : path) {
    if (IsLetter(c) || IsDigit(c) || kPlain.find(c) != std::string_view::npos) {
      text += c;
      continue;
    }
    const auto byte = static_cast<unsigned char>(c);
    text += {'%', kDigits[byte >> 4], kDigits[byte & 15]};
  }
  return text;
}

}  // namespace

// A path of the one system begins with a slash, of the other one with a drive or two backslashes.
std::string FileUrl(const std::string& path) {
  if (path.starts_with('/')) return "file://" + Encoded(path);
  std::string slashes = path;
  std::replace(slashes.begin(), slashes.end(), '\\', '/');
  if (slashes.starts_with("//")) return "file:" + Encoded(slashes);
  const bool hasDrive =
      path.size() >= 3 && IsLetter(path[0]) && path[1] == ':' && slashes[2] == '/';
  if (!hasDrive) return {};
  return "file:///" + slashes.substr(0, 2) + Encoded(std::string_view(slashes).substr(2));
}
