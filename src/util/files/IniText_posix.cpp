#include "util/files/IniText_posix.h"

#include <algorithm>

#include "util/text/PlainText.h"

namespace {

constexpr std::string_view kMark = "\xEF\xBB\xBF";
constexpr std::string_view kBlanks = " \t\v\f\x1A";

std::string_view WithoutIniBlanks(std::string_view text) {
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// The name goes up to the last ']' of the line; what follows that is ignored. A line with no ']' is
// an ordinary one.
std::optional<std::string_view> SectionName(std::string_view line) {
  const std::string_view text = WithoutIniBlanks(line);
  const std::size_t close = text.rfind(']');
  if (text.empty() || text.front() != '[' || close == std::string_view::npos) return std::nullopt;
  return WithoutIniBlanks(text.substr(1, close - 1));
}

std::string_view KeyName(std::string_view line) {
  const std::string_view text = WithoutIniBlanks(line);
  if (text.empty() || text.front() == ';') return {};
  return WithoutIniBlanks(text.substr(0, text.find('=')));
}

std::optional<std::string_view> ValueOf(std::string_view line) {
  const std::size_t equals = line.find('=');
  if (equals == std::string_view::npos) return std::nullopt;
  return WithoutIniBlanks(line.substr(equals + 1));
}

}  // namespace

IniText::IniText(const std::string& bytes) : lineEnd_("\n") {
  std::size_t start = 0;
  if (bytes.compare(0, kMark.size(), kMark) == 0) {
    mark_ = kMark;
    start = kMark.size();
  }
  while (start < bytes.size()) {
    const std::size_t stop = std::min(bytes.find_first_of("\r\n", start), bytes.size());
    const std::size_t endLength =
        stop == bytes.size() ? 0 : (bytes.compare(stop, 2, "\r\n") == 0 ? 2 : 1);
    lines_.push_back({bytes.substr(start, stop - start), bytes.substr(stop, endLength)});
    start = stop + endLength;
  }
  if (!lines_.empty() && !lines_[0].end.empty()) lineEnd_ = lines_[0].end;
}

std::string IniText::Bytes() const {
  std::string bytes = mark_;
  for (const Line& line : lines_) bytes += line.text + line.end;
  return bytes;
}

std::optional<std::string_view> IniText::Value(std::string_view section,
                                               std::string_view key) const {
  const std::size_t line = FindKey(FindSection(section), key);
  return line == kNone ? std::nullopt : ValueOf(lines_[line].text);
}

std::vector<std::string_view> IniText::Sections() const {
  std::vector<std::string_view> names;
  for (const Line& line : lines_) {
    const auto name = SectionName(line.text);
    if (name && !name->empty()) names.push_back(*name);
  }
  return names;
}

bool IniText::Set(std::string_view section, std::string_view key, std::string_view value) {
  const std::string_view sectionName = WithoutIniBlanks(section);
  const std::string_view keyName = WithoutIniBlanks(key);
  // Such a key could be written again and again, but never found.
  if (sectionName.empty() || keyName.empty() || keyName.find('=') != std::string_view::npos ||
      keyName.front() == ';' || keyName.front() == '[')
    return false;
  const std::string assigned = "=" + std::string(WithoutIniBlanks(value));

  const std::size_t header = FindSection(sectionName);
  if (header == kNone) {
    Insert(lines_.size(), "[" + std::string(sectionName) + "]");
    Insert(lines_.size(), std::string(keyName) + assigned);
    return true;
  }
  const std::size_t line = FindKey(header, keyName);
  if (line != kNone) {
    std::string& text = lines_[line].text;
    if (ValueOf(text) == WithoutIniBlanks(value)) return false;
    text = std::string(KeyName(text)) + assigned;
    return true;
  }
  std::size_t at = EndOfSection(header);
  while (at > header + 1 && WithoutIniBlanks(lines_[at - 1].text).empty()) --at;
  Insert(at, std::string(keyName) + assigned);
  return true;
}

bool IniText::RemoveKey(std::string_view section, std::string_view key) {
  const std::size_t line = FindKey(FindSection(section), key);
  if (line == kNone) return false;
  lines_.erase(lines_.begin() + static_cast<std::ptrdiff_t>(line));
  return true;
}

bool IniText::RemoveSection(std::string_view section) {
  const std::size_t header = FindSection(section);
  if (header == kNone) return false;
  lines_.erase(lines_.begin() + static_cast<std::ptrdiff_t>(header),
               lines_.begin() + static_cast<std::ptrdiff_t>(EndOfSection(header)));
  return true;
}

std::size_t IniText::FindSection(std::string_view name) const {
  const std::string_view wanted = WithoutIniBlanks(name);
  if (wanted.empty()) return kNone;
  for (std::size_t i = 0; i < lines_.size(); ++i) {
    const auto found = SectionName(lines_[i].text);
    if (found && SameButForCase(*found, wanted)) return i;
  }
  return kNone;
}

std::size_t IniText::EndOfSection(std::size_t header) const {
  std::size_t end = header + 1;
  while (end < lines_.size() && !SectionName(lines_[end].text)) ++end;
  return end;
}

std::size_t IniText::FindKey(std::size_t header, std::string_view name) const {
  const std::string_view wanted = WithoutIniBlanks(name);
  if (header == kNone || wanted.empty()) return kNone;
  const std::size_t end = EndOfSection(header);
  for (std::size_t i = header + 1; i < end; ++i) {
    if (SameButForCase(KeyName(lines_[i].text), wanted)) return i;
  }
  return kNone;
}

void IniText::Insert(std::size_t at, std::string text) {
  if (at > 0 && lines_[at - 1].end.empty()) lines_[at - 1].end = lineEnd_;
  lines_.insert(lines_.begin() + static_cast<std::ptrdiff_t>(at), {std::move(text), lineEnd_});
}
