// The help as it was built, and files that only look like help.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
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

// What a page shows.
struct Shown {
  std::vector<std::string> links;  // as they are written
  std::set<std::string> anchors;
};

Shown Show(const std::string& html) {
  Shown shown;
  const std::string safe = SafePage(html, [&](const std::string& link) {
    shown.links.push_back(link);
    return link;
  });
  const std::string begin = "<a name=\"";
  for (std::size_t at = safe.find(begin); at != std::string::npos; at = safe.find(begin, at)) {
    at += begin.size();
    shown.anchors.insert(safe.substr(at, safe.find('"', at) - at));
  }
  return shown;
}

// Shows a page and all that its links lead to.
void Visit(const HelpBook& book, const std::string& page, std::map<std::string, Shown>& reached) {
  const std::string* html = book.Page(page);
  if (html == nullptr || reached.count(page)) return;
  reached[page] = Show(*html);
  for (const std::string& link : reached[page].links) {
    std::string target, anchor;
    if (HelpBook::Resolve(page, link, target, anchor)) Visit(book, target, reached);
  }
}

class BuiltHelpOf : public ::testing::TestWithParam<const char*> {
 protected:
  void SetUp() override {
    ASSERT_TRUE(book_.Open(BuiltHelp(GetParam()))) << BuiltHelp(GetParam());
    Visit(book_, "1.htm", reached_);
  }

  // The place exists: the page, and the anchor in it when there is one.
  void ExpectPlace(const std::string& page, const std::string& anchor, const std::string& from) {
    ASSERT_TRUE(reached_.count(page)) << page << " from " << from;
    if (anchor.empty()) return;
    EXPECT_TRUE(reached_[page].anchors.count(anchor)) << page << "#" << anchor << " from " << from;
  }

  HelpBook book_;
  std::map<std::string, Shown> reached_;
};

TEST_P(BuiltHelpOf, HasNoDeadLinkAndNoLostPage) {
  for (const auto& file :
       std::filesystem::directory_iterator(KR_SOURCE_DIR "/help/" + std::string(GetParam())))
    EXPECT_TRUE(reached_.count(file.path().filename())) << file.path();
  std::set<std::string> listed;
  for (const HelpEntry& entry : book_.Contents()) {
    ExpectPlace(entry.page, entry.anchor, "the contents");
    listed.insert(entry.page);
  }
  for (const auto& [page, shown] : reached_) {
    EXPECT_TRUE(listed.count(page)) << page;
    EXPECT_FALSE(TitleOf(*book_.Page(page)).empty()) << page;
    for (const std::string& link : shown.links) {
      std::string target, anchor;
      ASSERT_TRUE(HelpBook::Resolve(page, link, target, anchor)) << link << " on " << page;
      ExpectPlace(target, anchor, page);
    }
  }
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
    std::map<std::string, Shown> reached;
    Visit(book, "1.htm", reached);
    for (const auto& [page, shown] : reached) anchors[language][page] = shown.anchors;
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
    std::map<std::string, Shown> reached;
    for (const HelpEntry& entry : book.Contents()) Visit(book, entry.page, reached);
  }
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20)) << path;
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
