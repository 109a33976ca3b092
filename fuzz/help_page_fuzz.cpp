// A page of a help file as the view gets it, and the same bytes as the contents.
#include <algorithm>
#include <cstdlib>
#include <set>

#include "ui/help/HelpPage.h"
#include "util/text/PlainText.h"

static void CheckPlace(const std::string& page) {
  if (page.starts_with('/') || Holds("/" + page + "/", "/../")) std::abort();
}

// Tags that the help view knows and that reach no file, tables inside each other three deep.
static void CheckTags(const std::string& safe) {
  static const std::set<std::string> kKnown = {
      "a",   "b",      "blockquote", "br", "center", "code", "dd", "dl",  "dt", "em", "h1",
      "h2",  "h3",     "h4",         "h5", "h6",     "hr",   "i",  "kbd", "li", "ol", "p",
      "pre", "strong", "table",      "td", "th",     "tr",   "tt", "u",   "ul", "w"};
  int tables = 0;
  for (std::size_t at = safe.find('<'); at < safe.size(); at = safe.find('<', at + 1)) {
    const bool end = safe.compare(at, 2, "</") == 0;
    const std::size_t name = at + (end ? 2 : 1);
    const std::string tag = safe.substr(name, safe.find_first_of(" >", name) - name);
    if (kKnown.count(tag) == 0) std::abort();
    if (tag == "table") tables += end ? -1 : 1;
    if (tables < 0 || tables > 3) std::abort();
  }
}

// What follows `begin` up to the next quote, wherever it stands.
static std::vector<std::string> Values(const std::string& safe, const std::string& begin) {
  std::vector<std::string> values;
  for (std::size_t at = safe.find(begin); at != std::string::npos; at = safe.find(begin, at)) {
    at += begin.size();
    values.push_back(safe.substr(at, safe.find('"', at) - at));
  }
  return values;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string html(reinterpret_cast<const char*>(data), size);
  std::vector<std::string> links;
  const std::string safe = SafePage(html, [&](const std::string& link) {
    links.push_back(link);
    return std::string(link.size() % 2 == 0 ? "good" : "");
  });
  CheckTags(safe);
  for (const std::string& link : Values(safe, "<a href=\"")) {
    if (link != "good") std::abort();
  }
  for (const std::string& anchor : Values(safe, "<a name=\"")) {
    if (anchor.empty() || anchor.size() > 31) std::abort();
  }
  std::string page, anchor;
  for (const std::string& link : links) {
    if (HelpBook::Resolve("folder/page.htm", link, page, anchor)) CheckPlace(page);
  }
  for (const HelpEntry& entry : ParseContents(html)) {
    if (entry.title.empty() || entry.depth < 0 || entry.depth > 8) std::abort();
    CheckPlace(entry.page);
  }
  if (TitleOf(html).size() > size) std::abort();
  return 0;
}
