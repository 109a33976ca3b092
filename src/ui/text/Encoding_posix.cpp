#include <iconv.h>

#include <algorithm>
#include <cerrno>
#include <string_view>

#include "ui/text/Encoding.h"

// Byte strings are UTF-8 here. File names that are not valid UTF-8 come back unchanged; FLTK draws
// their odd bytes as single characters.
std::string ToUi(const std::string& text) {
  return text;
}
std::string FromUi(const std::string& text) {
  return text;
}

namespace {

class Converter {
 public:
  Converter(const char* to, const char* from) : handle_(iconv_open(to, from)) {}
  ~Converter() {
    if (Usable()) iconv_close(handle_);
  }
  Converter(const Converter&) = delete;
  Converter& operator=(const Converter&) = delete;

  // `skip` tells how many bytes the unknown character at the beginning of a text has.
  template <typename Skip>
  std::string Convert(const std::string& text, Skip skip) {
    const bool plain =
        std::none_of(text.begin(), text.end(), [](char c) { return (c & 0x80) != 0; });
    if (plain || !Usable()) return text;
    iconv(handle_, nullptr, nullptr, nullptr, nullptr);
    std::string in = text;
    char* from = in.data();
    std::size_t left = in.size();
    std::string out(2 * text.size(), '\0');  // no character becomes longer than this
    char* to = out.data();
    std::size_t room = out.size();
    while (left > 0 && iconv(handle_, &from, &left, &to, &room) == kFailed && errno == EILSEQ) {
      const std::size_t bytes = skip(std::string_view(from, left));
      from += bytes;
      left -= bytes;
      *to++ = '?';
      --room;
    }
    out.resize(out.size() - room);
    return out;
  }

 private:
  static constexpr std::size_t kFailed = static_cast<std::size_t>(-1);
  bool Usable() const { return handle_ != reinterpret_cast<iconv_t>(-1); }

  iconv_t handle_;
};

// Of UTF-8: a byte and those that continue it.
std::size_t CharacterBytes(std::string_view text) {
  std::size_t bytes = 1;
  while (bytes < text.size() && (text[bytes] & 0xC0) == 0x80) ++bytes;
  return bytes;
}

}  // namespace

std::string ToCodePage936(const std::string& uiText) {
  thread_local Converter converter("GBK", "UTF-8");
  return converter.Convert(uiText, CharacterBytes);
}
std::string FromCodePage936(const std::string& text) {
  thread_local Converter converter("UTF-8", "GBK");
  return converter.Convert(text, [](std::string_view) { return std::size_t{1}; });
}
