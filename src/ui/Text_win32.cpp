#include <windows.h>

#include "ui/Text.h"

namespace {

std::string Convert(const std::string& text, UINT from, UINT to) {
  if (text.empty()) return text;
  const int length = static_cast<int>(text.size());
  const int units = MultiByteToWideChar(from, 0, text.data(), length, nullptr, 0);
  std::wstring wide(static_cast<std::size_t>(units), L'\0');
  MultiByteToWideChar(from, 0, text.data(), length, wide.data(), units);
  const int bytes = WideCharToMultiByte(to, 0, wide.data(), units, nullptr, 0, nullptr, nullptr);
  std::string out(static_cast<std::size_t>(bytes), '\0');
  WideCharToMultiByte(to, 0, wide.data(), units, out.data(), bytes, nullptr, nullptr);
  return out;
}

}  // namespace

std::string ToUi(const std::string& text) {
  return Convert(text, CP_ACP, CP_UTF8);
}
std::string FromUi(const std::string& text) {
  return Convert(text, CP_UTF8, CP_ACP);
}
