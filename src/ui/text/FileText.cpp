#include "ui/text/FileText.h"

#include <FL/fl_utf8.h>

#include <algorithm>

#include "ui/text/Encoding.h"
#include "util/files/FileDirWrapper.h"

namespace {

constexpr char kReplacement[] = "\xEF\xBF\xBD";
constexpr char kByteOrderMark[] = "\xEF\xBB\xBF";
constexpr unsigned kFirstPrivate = 0xF700;  // stands for the byte 0; 255 more follow

bool IsAscii(char c) {
  return static_cast<unsigned char>(c) < 0x80;
}
bool Continues(char c) {
  return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

// The bytes of the character there; 0 when there is none, -1 when the end cuts it off.
int CharacterLength(const char* at, const char* end) {
  if (IsAscii(*at)) return 1;
  const int wanted = fl_utf8len(*at);
  if (wanted > 1 && at + wanted > end) return -1;
  int length = 0;
  fl_utf8decode(at, end, &length);
  return wanted > 1 && length == wanted ? length : 0;
}

bool IsPrivate(const char* at, const char* end) {
  int length = 0;
  const unsigned code = fl_utf8decode(at, end, &length);
  return length == 3 && code >= kFirstPrivate && code < kFirstPrivate + 256;
}

void AppendCode(unsigned code, std::string& out) {
  char bytes[8];
  out.append(bytes, static_cast<std::size_t>(fl_utf8encode(code, bytes)));
}

// Calls `take` with each character and the number of its bytes, 0 for a byte that is none.
template <typename Take>
void ForEachCharacter(const std::string& text, Take take) {
  const char* const end = text.data() + text.size();
  for (const char* at = text.data(); at < end;) {
    const int length = std::max(CharacterLength(at, end), 0);
    take(at, length);
    at += std::max(length, 1);
  }
}

bool IsUtf8(const std::string& text) {
  bool valid = true;
  ForEachCharacter(text, [&](const char*, int length) { valid = valid && length > 0; });
  return valid;
}

// Bytes that are no text as characters of private use; such characters too, so that all come back.
std::string WithPrivate(const std::string& bytes) {
  std::string out;
  const char* const end = bytes.data() + bytes.size();
  ForEachCharacter(bytes, [&](const char* at, int length) {
    if (length > 0 && *at != 0 && !IsPrivate(at, end)) {
      out.append(at, static_cast<std::size_t>(length));
      return;
    }
    for (int i = 0; i < std::max(length, 1); ++i)
      AppendCode(kFirstPrivate + static_cast<unsigned char>(at[i]), out);
  });
  return out;
}

std::string WithoutPrivate(const std::string& text) {
  std::string out;
  const char* const end = text.data() + text.size();
  ForEachCharacter(text, [&](const char* at, int length) {
    if (length == 3 && IsPrivate(at, end)) {
      int bytes = 0;
      out += static_cast<char>(fl_utf8decode(at, end, &bytes) - kFirstPrivate);
    } else {
      out.append(at, static_cast<std::size_t>(std::max(length, 1)));
    }
  });
  return out;
}

std::string Replaced(const std::string& text, const std::string& what, const std::string& by) {
  std::string out;
  std::size_t from = 0;
  for (std::size_t at = 0; (at = text.find(what, from)) != std::string::npos;
       from = at + what.size())
    out.append(text, from, at - from).append(by);
  return out.append(text, from);
}

std::size_t Count(const std::string& text, const std::string& what) {
  std::size_t count = 0;
  for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += what.size())
    ++count;
  return count;
}

}  // namespace

std::string ShownText(const std::string& bytes, std::string& rest) {
  std::string out;
  out.reserve(bytes.size());
  rest.clear();
  const char* const end = bytes.data() + bytes.size();
  for (const char* at = bytes.data(); at < end;) {
    const int length = CharacterLength(at, end);
    if (length < 0) {
      rest.assign(at, end);
      break;
    }
    if (length == 0) {
      out += kReplacement;
    } else if (*at == 0) {
      out += ' ';
    } else if (*at != '\r') {
      out.append(at, static_cast<std::size_t>(length));
    }
    at += std::max(length, 1);
  }
  return out;
}

std::size_t BytesOfShown(const std::string& bytes, std::size_t length) {
  const char* const end = bytes.data() + bytes.size();
  const char* at = bytes.data();
  for (std::size_t shown = 0; at < end && shown < length;) {
    const int taken = CharacterLength(at, end);
    if (taken < 0) break;
    if (taken == 0) {
      shown += sizeof(kReplacement) - 1;
    } else if (*at != '\r') {
      shown += static_cast<std::size_t>(taken);
    }
    at += std::max(taken, 1);
  }
  return static_cast<std::size_t>(at - bytes.data());
}

std::size_t BytesOfCutCharacter(const std::string& bytes) {
  std::size_t cut = 0;
  while (cut < 3 && cut < bytes.size() && Continues(bytes[cut])) ++cut;
  return cut;
}

std::string Folded(const std::string& text) {
  std::string out = text;
  const char* const end = text.data() + text.size();
  for (std::size_t at = 0; at < out.size();) {
    if (IsAscii(out[at])) {
      if (out[at] >= 'A' && out[at] <= 'Z') out[at] = static_cast<char>(out[at] + ('a' - 'A'));
      ++at;
      continue;
    }
    int length = 0;
    const unsigned code = fl_utf8decode(text.data() + at, end, &length);
    std::string small;
    AppendCode(static_cast<unsigned>(fl_tolower(code)), small);
    const auto bytes = static_cast<std::size_t>(length);
    if (small.size() == bytes) out.replace(at, bytes, small);
    at += bytes;
  }
  return out;
}

EditableText::EditableText(const std::string& bytes) : mark_(bytes.starts_with(kByteOrderMark)) {
  const std::string body = mark_ ? bytes.substr(sizeof(kByteOrderMark) - 1) : bytes;
  const bool utf8 = IsUtf8(body);
  const bool ascii = std::all_of(body.begin(), body.end(), IsAscii);
  const std::string converted = ToUi(body);
  if (body.find('\0') != std::string::npos) {
    encoding_ = Encoding::kBytes;
  } else if (utf8 && (mark_ || !ascii)) {
    encoding_ = Encoding::kUtf8;
  } else if (!utf8 && !(IsUtf8(converted) && FromUi(converted) == body)) {
    encoding_ = Encoding::kBytes;
  }
  text_ = encoding_ == Encoding::kSystem  ? converted
          : encoding_ == Encoding::kBytes ? WithPrivate(body)
                                          : body;
  const std::size_t ends = Count(text_, "\n");
  const std::size_t pairs = Count(text_, "\r\n");
  mixedEnds_ = (pairs > 0 && pairs < ends) || text_.find("\r\r\n") != std::string::npos;
  carriage_ = ends > 0 ? pairs == ends : FileDirWrapper::kSeparator == '\\';
  if (!mixedEnds_) text_ = Replaced(text_, "\r\n", "\n");
}

bool EditableText::ToFile(const std::string& text, std::string& bytes) const {
  std::string body = text;
  if (!mixedEnds_) {
    body = Replaced(body, "\r\n", "\n");  // as pasted
    if (carriage_) body = Replaced(body, "\n", "\r\n");
  }
  if (encoding_ == Encoding::kBytes) body = WithoutPrivate(body);
  if (encoding_ == Encoding::kSystem) {
    const std::string shown = std::move(body);
    body = FromUi(shown);
    if (ToUi(body) != shown) return false;
  }
  bytes = mark_ ? kByteOrderMark + body : body;
  return true;
}
