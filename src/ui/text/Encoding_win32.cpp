#include <windows.h>

#include "ui/text/Encoding.h"

namespace {

constexpr UINT kCodePage936 = 936;

std::string Convert(const std::string& text, UINT from, UINT to, DWORD flags = 0) {
  if (text.empty()) return text;
  const int length = static_cast<int>(text.size());
  const int units = MultiByteToWideChar(from, 0, text.data(), length, nullptr, 0);
  std::wstring wide(static_cast<std::size_t>(units), L'\0');
  MultiByteToWideChar(from, 0, text.data(), length, wide.data(), units);
  const int bytes =
      WideCharToMultiByte(to, flags, wide.data(), units, nullptr, 0, nullptr, nullptr);
  std::string out(static_cast<std::size_t>(bytes), '\0');
  WideCharToMultiByte(to, flags, wide.data(), units, out.data(), bytes, nullptr, nullptr);
  return out;
}

// Half a character at the end, which the system would show as another one.
bool EndsInHalf(const std::string& text) {
  bool half = false;
  for (const char c : text) half = !half && IsDBCSLeadByteEx(kCodePage936, static_cast<BYTE>(c));
  return half;
}

}  // namespace

std::string ToUi(const std::string& text) {
  return Convert(text, CP_ACP, CP_UTF8);
}
std::string FromUi(const std::string& text) {
  // A letter that is only like the one in a path would name another file.
  const DWORD exact = GetACP() == CP_UTF8 ? 0 : WC_NO_BEST_FIT_CHARS;
  return Convert(text, CP_UTF8, CP_ACP, exact);
}

std::string ToCodePage936(const std::string& uiText) {
  if (!IsValidCodePage(kCodePage936)) return uiText;
  return Convert(uiText, CP_UTF8, kCodePage936);
}
std::string FromCodePage936(const std::string& text) {
  if (!IsValidCodePage(kCodePage936)) return text;
  return Convert(EndsInHalf(text) ? text.substr(0, text.size() - 1) : text, kCodePage936, CP_UTF8);
}
