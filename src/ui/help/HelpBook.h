// The pages of a compiled-help file. Linux only: Windows has a viewer of its own.
#ifndef KR_UI_HELP_HELPBOOK_H
#define KR_UI_HELP_HELPBOOK_H

#include <cstddef>
#include <map>
#include <string>
#include <vector>

// One line of the contents.
struct HelpEntry {
  int depth = 0;  // 0 is the outermost
  std::string title;
  std::string page;    // as in HelpBook::Page
  std::string anchor;  // empty: the page's beginning
};

// Holds everything in memory once it is open. The file is read by a program of its own (krhelp,
// beside this program), so that no file, however damaged, harms this process. Interface thread.
class HelpBook {
 public:
  static constexpr int kMostEntries = 4000;
  static constexpr std::size_t kMostPageBytes = 256U << 10;
  static constexpr std::size_t kMostBytes = 32U << 20;  // of all pages
  static constexpr int kMostSeconds = 10;               // for reading

  // False when it is no help file, damaged, beyond the limits, or has no page.
  bool Open(const std::string& path);

  // The HTML of a page in UTF-8; null when there is none. Names have no folder in front and are
  // matched without regard to case.
  const std::string* Page(const std::string& name) const;

  const std::vector<HelpEntry>& Contents() const { return contents_; }

  // Where a link on the page leads. False when it leads out of the book.
  static bool Resolve(const std::string& from, const std::string& link, std::string& page,
                      std::string& anchor);

 private:
  bool Take(const std::string& stream);

  std::map<std::string, std::string> pages_;  // by lower-case name
  std::vector<HelpEntry> contents_;
};

#endif
