// The help as it was built, and files that only look like help.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <map>
#include <random>
#include <set>

#include "core/CoreFixture.h"
#include "core/SettingsAndPaths.h"
#include "support/TempFolder.h"
#include "ui/help/HelpBook.h"
#include "ui/help/HelpPage.h"

namespace {

std::string BuiltHelp(const std::string& language) {
  return std::string(KR_TEST_BIN_DIR) + "/" + language + "/Kestrun.chm";
}

std::set<std::string> Set(const std::vector<std::string>& values) {
  return {values.begin(), values.end()};
}

class BuiltHelpOf : public ::testing::TestWithParam<const char*> {
 protected:
  void SetUp() override { ASSERT_TRUE(book_.Open(BuiltHelp(GetParam()))) << BuiltHelp(GetParam()); }

  // The place exists: the page, and the anchor in it when there is one.
  void ExpectPlace(const std::string& page, const std::string& anchor, const std::string& from) {
    const std::string* html = book_.Page(page);
    ASSERT_TRUE(html) << page << " from " << from;
    if (anchor.empty()) return;
    EXPECT_TRUE(Set(AnchorsOf(*html)).count(anchor)) << page << "#" << anchor << " from " << from;
  }

  void Visit(const std::string& page, std::set<std::string>& reached) {
    if (!reached.insert(page).second) return;
    const std::string* html = book_.Page(page);
    ASSERT_TRUE(html) << page;
    EXPECT_FALSE(TitleOf(*html).empty()) << page;
    for (const std::string& link : LinksOf(*html)) {
      std::string target, anchor;
      ASSERT_TRUE(HelpBook::Resolve(page, link, target, anchor)) << link << " on " << page;
      ExpectPlace(target, anchor, page);
      Visit(target, reached);
    }
  }

  HelpBook book_;
};

TEST_P(BuiltHelpOf, HasNoDeadLinkAndNoLostPage) {
  std::set<std::string> reached;
  Visit("1.htm", reached);
  EXPECT_EQ(reached, Set(book_.PageNames()));
  std::set<std::string> listed;
  for (const HelpEntry& entry : book_.Contents()) {
    ExpectPlace(entry.page, entry.anchor, "the contents");
    listed.insert(entry.page);
  }
  EXPECT_EQ(listed, reached);
}

TEST_P(BuiltHelpOf, NamesEverySetting) {
  TempFolder folder;
  const ScopedVariable home("XDG_CONFIG_HOME", folder.Path());
  SettingsAndPaths settings("Kestrun");
  ASSERT_TRUE(settings.WriteSettings());
  const std::string page = *book_.Page("settings.htm");
  std::istringstream lines(TempFolder::Read(settings.settingsFile));
  int keys = 0;
  for (std::string line; std::getline(lines, line);) {
    const std::size_t equals = line.find('=');
    if (equals == std::string::npos) continue;
    EXPECT_NE(page.find("<tt>" + line.substr(0, equals) + "</tt>"), std::string::npos) << line;
    ++keys;
  }
  EXPECT_GT(keys, 20);
}

INSTANTIATE_TEST_SUITE_P(Languages, BuiltHelpOf, ::testing::Values("English", "Chinese"),
                         [](const auto& language) { return std::string(language.param); });

TEST(Help, BothLanguagesHaveTheSamePagesAndAnchors) {
  std::map<std::string, std::set<std::string>> anchors[2];
  std::vector<std::string> contents[2];
  for (int language = 0; language < 2; ++language) {
    HelpBook book;
    ASSERT_TRUE(book.Open(BuiltHelp(language == 0 ? "English" : "Chinese")));
    for (const std::string& page : book.PageNames())
      anchors[language][page] = Set(AnchorsOf(*book.Page(page)));
    for (const HelpEntry& entry : book.Contents())
      contents[language].push_back(entry.page + "#" + entry.anchor);
    // Contents are kept in the language's own code page.
    const std::string title = book.Contents().at(1).title;
    EXPECT_EQ(title, language == 0 ? "First steps" : "入门步骤");
  }
  EXPECT_EQ(anchors[0], anchors[1]);
  EXPECT_EQ(contents[0], contents[1]);
}

// Opens and, when that works, reads everything, as the window would.
void Use(const std::string& path) {
  const auto begin = std::chrono::steady_clock::now();
  HelpBook book;
  if (book.Open(path)) {
    for (const std::string& page : book.PageNames())
      SafePage(*book.Page(page), [](const std::string& link) { return link; });
  }
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(8)) << path;
}

TEST(Help, DamagedFilesDoNoHarm) {
  TempFolder folder;
  const std::string whole = TempFolder::Read(BuiltHelp("English"));
  ASSERT_GT(whole.size(), 8000U);
  for (std::size_t size = 0; size < whole.size(); size += 1 + whole.size() / 25) {
    HelpBook book;
    EXPECT_FALSE(book.Open(folder.Write("cut.chm", whole.substr(0, size)))) << size;
  }
  std::mt19937 random(20160615);
  for (int round = 0; round < 60; ++round) {
    std::string bytes = whole;
    // Most faults where the directory is; the rest anywhere.
    const std::size_t reach = round % 3 == 0 ? bytes.size() : 0x1200;
    for (int fault = 0; fault < 4; ++fault)
      bytes[random() % reach] = static_cast<char>(round % 2 ? random() : 0xFF);
    Use(folder.Write("damaged.chm", bytes));
  }

  // A directory whose last part is followed by itself, and an entry of a gigabyte.
  const std::size_t part = whole.find("PMGL");
  ASSERT_NE(part, std::string::npos);
  std::string endless = whole;
  endless.replace(part + 16, 4, std::string(4, '\0'));
  Use(folder.Write("endless.chm", endless));
  const std::size_t entry = whole.find("/1.htm", part);
  ASSERT_NE(entry, std::string::npos);
  std::string huge = whole;
  huge.replace(entry + 6, 7, std::string("\x01\x00\x84\x80\x80\x80\x00", 7));
  HelpBook book;
  EXPECT_FALSE(book.Open(folder.Write("huge.chm", huge)));
}

TEST(Help, WhatIsNoFileIsRefused) {
  TempFolder folder;
  HelpBook book;
  EXPECT_FALSE(book.Open(folder.Path()));
  EXPECT_FALSE(book.Open(folder / "missing.chm"));
  EXPECT_FALSE(book.Open(folder.Write("page.chm", "<html>no help file</html>")));
  ASSERT_EQ(mkfifo((folder / "pipe.chm").c_str(), 0600), 0);
  EXPECT_FALSE(book.Open(folder / "pipe.chm"));
  EXPECT_FALSE(book.Open("/dev/zero"));
}

TEST(Help, LinksLeadFromThePagesFolder) {
  const auto resolved = [](const char* from, const char* link) {
    std::string page, anchor;
    if (!HelpBook::Resolve(from, link, page, anchor)) return std::string("out");
    return page + "#" + anchor;
  };
  EXPECT_EQ(resolved("a/b.htm", "c.htm#x"), "a/c.htm#x");
  EXPECT_EQ(resolved("/A/b.htm", "..\\C.HTM"), "c.htm#");
  EXPECT_EQ(resolved("a/b.htm", "/c.htm"), "c.htm#");
  EXPECT_EQ(resolved("a/b.htm", "#here"), "a/b.htm#here");
  EXPECT_EQ(resolved("b.htm", "../../../etc/passwd"), "etc/passwd#");
  EXPECT_EQ(resolved("b.htm", "http://example.com/"), "out");
  EXPECT_EQ(resolved("b.htm", "file:///etc/passwd"), "out");
}

TEST(Help, OnlyHarmlessTagsReachTheView) {
  const auto safe = [](const std::string& html) {
    return SafePage(html,
                    [](const std::string& link) { return link == "bad" ? "" : "to-" + link; });
  };
  EXPECT_EQ(safe("<head><title>T</title></head><body>a<img src=/etc/passwd>b<!-- c --><script>d"
                 "</script>e"),
            "abe");
  EXPECT_EQ(safe("<a href='x&amp;y'>1</a><a href=bad>2</a><a name=\"<i>\">3</a><a name=n>4</a>"),
            "<a href=\"to-x&y\">1</a>23<a name=\"n\">4</a>");
  EXPECT_EQ(safe("a < b <"), "a &lt; b &lt;");
  EXPECT_EQ(safe("<td>no table</td>"), "no table");
  std::string nested;
  for (int depth = 0; depth < 5000; ++depth) nested += "<table><tr><td colspan=99999999><ul>";
  const std::string kept = safe(nested);
  EXPECT_LT(kept.size(), 600U);
  EXPECT_EQ(kept.find("99999999"), std::string::npos);
  // Unfinished pieces end with the text.
  for (const char* piece :
       {"<", "</", "<a", "<a href", "<a href=", "<a href=\"x", "<!--", "&", "<p"})
    safe(piece);
  EXPECT_EQ(safe("求解器，路径"), "求<w>解<w>器，<w>路<w>径");
  EXPECT_EQ(safe("<pre>求解</pre>"), "<pre>求解</pre>");
}

}  // namespace
