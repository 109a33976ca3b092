#include "ui/help/HelpPage.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <map>
#include <string_view>

#include "util/text/PlainText.h"

namespace {

constexpr std::size_t kMostAttributes = 20;
constexpr std::size_t kMostAnchorLength = 31;  // of the help view's own field
constexpr std::size_t kLongestWord = 500;      // bytes; the display cannot draw any length
constexpr int kMostTables = 3;                 // inside each other
constexpr int kMostLists = 8;
constexpr int kMostCells = 40;                    // in a row
constexpr char kTableWidth[] = " width=\"94%\"";  // wider ones reach below the scroll bar
constexpr int kMostDepth = 8;                     // of the contents
constexpr std::size_t kMostLines = 2000;

bool IsSpace(char c) {
  return std::isspace(static_cast<unsigned char>(c)) != 0;
}

struct Tag {
  std::string name;  // lower case
  bool end = false;
  std::map<std::string, std::string> attributes;

  std::string Of(const std::string& attribute) const {
    const auto found = attributes.find(attribute);
    return found == attributes.end() ? std::string() : found->second;
  }
};

std::string Decoded(const std::string& text) {
  static const std::map<std::string, std::string> kNames = {
      {"amp", "&"}, {"lt", "<"}, {"gt", ">"}, {"quot", "\""}, {"#39", "'"}, {"nbsp", " "}};
  constexpr std::size_t kLongestName = 4;
  std::string out;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const std::string name = text[at] == '&' ? text.substr(at + 1, kLongestName + 1) : "";
    const std::size_t length = name.find(';');
    const auto found =
        length == std::string::npos ? kNames.end() : kNames.find(Lower(name.substr(0, length)));
    if (found == kNames.end()) {
      out += text[at];
    } else {
      out += found->second;
      at += length + 1;
    }
  }
  return out;
}

// Walks through HTML, a piece of text or a tag at a time.
class Reader {
 public:
  explicit Reader(const std::string& html) : html_(html) {}

  // False at the end. Else `text` holds text, or it is empty and `tag` is a tag.
  bool Next(std::string& text, Tag& tag) {
    text.clear();
    while (at_ < html_.size()) {
      if (html_.compare(at_, 4, "<!--") == 0) {
        SkipPast("-->");
      } else if (html_[at_] == '<' && at_ + 1 < html_.size() &&
                 (html_[at_ + 1] == '!' || html_[at_ + 1] == '?')) {
        SkipPast(">");
      } else if (BeginsTag()) {
        ReadTag(tag);
        if (!tag.end && (tag.name == "script" || tag.name == "style")) SkipToEnd(tag.name);
        return true;
      } else {
        const std::size_t end = std::min(html_.find('<', at_ + 1), html_.size());
        text = html_.substr(at_, end - at_);
        at_ = end;
        return true;
      }
    }
    return false;
  }

 private:
  bool BeginsTag() const {
    if (html_[at_] != '<' || at_ + 1 >= html_.size()) return false;
    const std::size_t name = at_ + (html_[at_ + 1] == '/' ? 2 : 1);
    return name < html_.size() && std::isalpha(static_cast<unsigned char>(html_[name])) != 0;
  }

  void SkipPast(const char* end) {
    const std::size_t found = html_.find(end, at_);
    at_ = found == std::string::npos ? html_.size() : found + std::string(end).size();
  }

  void SkipToEnd(const std::string& name) {
    while (at_ < html_.size()) {
      at_ = std::min(html_.find("</", at_), html_.size());
      if (at_ == html_.size() || Lower(html_.substr(at_ + 2, name.size())) == name) return;
      at_ += 2;
    }
  }

  void SkipSpaces() {
    while (at_ < html_.size() && IsSpace(html_[at_])) ++at_;
  }

  std::string Word(const char* ends) {
    const std::size_t begin = at_;
    while (at_ < html_.size() && !IsSpace(html_[at_]) &&
           std::string(ends).find(html_[at_]) == std::string::npos)
      ++at_;
    return html_.substr(begin, at_ - begin);
  }

  std::string Value() {
    SkipSpaces();
    if (at_ < html_.size() && (html_[at_] == '"' || html_[at_] == '\'')) {
      const std::size_t begin = at_ + 1;
      const std::size_t end = std::min(html_.find(html_[at_], begin), html_.size());
      at_ = std::min(end + 1, html_.size());
      return html_.substr(begin, end - begin);
    }
    return Word(">");
  }

  void ReadTag(Tag& tag) {
    tag = Tag();
    tag.end = html_[at_ + 1] == '/';
    at_ += tag.end ? 2 : 1;
    tag.name = Lower(Word("/>"));
    while (at_ < html_.size() && html_[at_] != '>') {
      SkipSpaces();
      const std::string name = Lower(Word("=/>"));
      SkipSpaces();
      if (at_ < html_.size() && html_[at_] == '=') {
        ++at_;
        const std::string value = Decoded(Value());
        if (tag.attributes.size() < kMostAttributes) tag.attributes.emplace(name, value);
      } else if (name.empty() && at_ < html_.size() && html_[at_] != '>') {
        ++at_;
      }
    }
    if (at_ < html_.size()) ++at_;
  }

  const std::string& html_;
  std::size_t at_ = 0;
};

bool IsAnchor(const std::string& name) {
  return !name.empty() && name.size() <= kMostAnchorLength &&
         std::all_of(name.begin(), name.end(), [](char c) {
           return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_' || c == '-' ||
                  c == '.';
         });
}

// Chinese has no blanks, and the help view ends lines only at blanks and tags: a tag without
// meaning stands wherever a line may end.
constexpr char kBreak[] = "<w>";
constexpr std::string_view kNotAtBegin = "，。；：、！？）》”’…%";
constexpr std::string_view kNotAtEnd = "（《“‘";

bool IsWide(std::string_view character) {
  return character.size() >= 3;  // in UTF-8: from U+0800 on
}

bool MayEndLine(std::string_view before, std::string_view now) {
  return !before.empty() && (IsWide(before) || IsWide(now)) && now != " " && before != " " &&
         kNotAtBegin.find(now) == std::string_view::npos &&
         kNotAtEnd.find(before) == std::string_view::npos;
}

// The help view looks through the whole page for the end of one that has none.
bool BeginsEntity(const std::string& text, std::size_t at) {
  constexpr std::size_t kLongest = 8;
  for (std::size_t end = at + 1; end < text.size() && end - at <= kLongest; ++end) {
    if (text[end] == ';') return end > at + 1;
    if (text[end] != '#' && std::isalnum(static_cast<unsigned char>(text[end])) == 0) return false;
  }
  return false;
}

class SafeWriter {
 public:
  SafeWriter(const std::string& html, const std::function<std::string(const std::string&)>& address)
      : reader_(html), address_(address) {}

  std::string Write() {
    std::string text;
    Tag tag;
    while (reader_.Next(text, tag)) {
      if (text.empty()) {
        WriteTag(tag);
      } else if (!inHead_) {
        if (text[0] == '<') text.replace(0, 1, "&lt;");
        WriteText(text);
      }
    }
    return out_;
  }

 private:
  void WriteTag(const Tag& tag) {
    if (tag.name == "head" || tag.name == "title") {
      inHead_ = !tag.end;
    } else if (tag.name == "body") {
      inHead_ = false;
    } else if (inHead_) {
      return;
    } else if (tag.name == "a") {
      WriteLink(tag);
    } else if (tag.name == "table") {
      const char* border = tag.attributes.count("border") ? " border=\"1\"" : "";
      WriteNested(tag, tables_, kMostTables, std::string(kTableWidth) + border);
    } else if (tag.name == "ul" || tag.name == "ol" || tag.name == "dl" ||
               tag.name == "blockquote") {
      WriteNested(tag, lists_, kMostLists, "");
    } else if (tag.name == "tr" || tag.name == "td" || tag.name == "th") {
      WriteCell(tag);
    } else {
      static const char* const kPlain[] = {"h1", "h2", "h3",     "h4",  "h5",  "h6",    "p",  "br",
                                           "hr", "b",  "strong", "i",   "em",  "u",     "tt", "li",
                                           "dt", "dd", "code",   "kbd", "pre", "center"};
      if (std::find(std::begin(kPlain), std::end(kPlain), tag.name) != std::end(kPlain))
        Put(tag, "");
    }
  }

  void WriteText(const std::string& text) {
    std::string_view before;
    for (std::size_t at = 0; at < text.size();) {
      const auto now = std::string_view(text).substr(at, CharacterBytes(text[at]));
      if (wordBytes_ >= kLongestWord || (!preformatted_ && MayEndLine(before, now))) {
        out_ += kBreak;
        wordBytes_ = 0;
      }
      out_ += now == "&" && !BeginsEntity(text, at) ? std::string_view("&amp;") : now;
      wordBytes_ = IsSpace(now.front()) ? 0 : wordBytes_ + now.size();
      before = now;
      at += now.size();
    }
  }

  void Put(const Tag& tag, const std::string& attributes) {
    if (tag.name == "pre") preformatted_ = !tag.end;
    wordBytes_ = 0;
    out_ += (tag.end ? "</" : "<") + tag.name + (tag.end ? std::string() : attributes) + ">";
  }

  void WriteLink(const Tag& tag) {
    if (tag.end) {
      if (linkOpen_) out_ += "</a>";
      linkOpen_ = false;
      return;
    }
    std::string attributes;
    const std::string name = tag.Of("name");
    if (IsAnchor(name)) attributes += " name=\"" + name + "\"";
    const std::string address = tag.attributes.count("href") ? address_(tag.Of("href")) : "";
    if (!address.empty()) attributes += " href=\"" + address + "\"";
    if (attributes.empty() || linkOpen_) return;
    Put(tag, attributes);
    linkOpen_ = true;
  }

  void WriteNested(const Tag& tag, int& depth, int most, const std::string& attributes) {
    if (tag.end) {
      if (depth > 0 && depth-- <= most) Put(tag, "");
    } else if (depth++ < most) {
      Put(tag, attributes);
    }
  }

  void WriteCell(const Tag& tag) {
    if (tables_ == 0 || tables_ > kMostTables) return;
    if (tag.name == "tr") cells_ = 0;
    int span = 1;
    if (tag.name != "tr" && !tag.end) {
      span = std::clamp(std::atoi(tag.Of("colspan").c_str()), 1, kMostCells);
      if (cells_ + span > kMostCells) return;
      cells_ += span;
    }
    Put(tag, span > 1 ? " colspan=\"" + std::to_string(span) + "\"" : "");
  }

  Reader reader_;
  const std::function<std::string(const std::string&)>& address_;
  std::string out_;
  bool inHead_ = false;
  bool linkOpen_ = false;
  std::size_t wordBytes_ = 0;  // since the last place where a line may end
  bool preformatted_ = false;
  int tables_ = 0;
  int lists_ = 0;
  int cells_ = 0;  // in the row
};

}  // namespace

std::string SafePage(const std::string& html,
                     const std::function<std::string(const std::string& link)>& address) {
  return SafeWriter(html, address).Write();
}

std::string TitleOf(const std::string& html) {
  Reader reader(html);
  std::string text;
  Tag tag;
  while (reader.Next(text, tag)) {
    if (!text.empty() || tag.end || tag.name != "title") continue;
    return reader.Next(text, tag) ? Decoded(text) : std::string();
  }
  return {};
}

std::vector<HelpEntry> ParseContents(const std::string& html) {
  std::vector<HelpEntry> lines;
  Reader reader(html);
  std::string text;
  Tag tag;
  int depth = -1;
  HelpEntry line;
  while (lines.size() < kMostLines && reader.Next(text, tag)) {
    if (!text.empty()) continue;
    if (tag.name == "ul") {
      depth += tag.end ? -1 : 1;
    } else if (tag.name == "object" && !tag.end) {
      line = HelpEntry();
    } else if (tag.name == "object") {
      line.depth = std::clamp(depth, 0, kMostDepth);
      if (!line.title.empty()) lines.push_back(line);
    } else if (tag.name == "param" && Lower(tag.Of("name")) == "name") {
      line.title = tag.Of("value");
    } else if (tag.name == "param" && Lower(tag.Of("name")) == "local") {
      if (!HelpBook::Resolve("", tag.Of("value"), line.page, line.anchor)) line.page.clear();
    }
  }
  return lines;
}
