// The lines of a private-profile file, and what they mean. Owned by one operation of the service.
//
// Sections and keys are compared without regard to ASCII case; of several with one name the first
// counts. Blanks around names and values do not belong to them. Lines that begin with ';' are
// comments, and lines that are not touched stay as they are, with their ends.
#ifndef KR_UTIL_FILES_INITEXT_POSIX_H
#define KR_UTIL_FILES_INITEXT_POSIX_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

class IniText {
 public:
  explicit IniText(const std::string& bytes);

  // All after the equals sign, quotes too. Nothing when the key has no equals sign.
  std::optional<std::string_view> Value(std::string_view section, std::string_view key) const;
  std::vector<std::string_view> Sections() const;

  // True when a line has changed.
  bool Set(std::string_view section, std::string_view key, std::string_view value);
  bool RemoveKey(std::string_view section, std::string_view key);
  bool RemoveSection(std::string_view section);

  std::string Bytes() const;

 private:
  struct Line {
    std::string text;
    std::string end;  // as in the file; empty on a last line without one
  };

  // Indices of lines; kNone when there is no such line.
  static constexpr std::size_t kNone = static_cast<std::size_t>(-1);
  std::size_t FindSection(std::string_view name) const;
  std::size_t EndOfSection(std::size_t header) const;
  std::size_t FindKey(std::size_t header, std::string_view name) const;
  void Insert(std::size_t at, std::string text);

  std::string mark_;     // the byte-order mark at the start of the file, if any
  std::string lineEnd_;  // the file's own style
  std::vector<Line> lines_;
};

#endif
