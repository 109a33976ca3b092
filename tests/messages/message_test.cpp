#include "messages/Message.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <set>
#include <string>

namespace {

std::string ReadText(const std::filesystem::path& path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::set<std::string> Matches(const std::string& text, const char* pattern) {
  const std::regex regex(pattern);
  std::set<std::string> matches;
  for (std::sregex_iterator at(text.begin(), text.end(), regex), end; at != end; ++at)
    matches.insert((*at)[1]);
  return matches;
}

std::string InBrackets(const std::string& bytes) {
  return "<" + bytes + ">";
}

TEST(Message, SaysTheSameInBothLanguages) {
  const Message late(MessageId::kFirstStageMissing, std::string("C:\\a %s.k"), 4, std::size_t{3});
  EXPECT_EQ(late.English(), "Job [C:\\a %s.k] is to begin at stage 4 but has 3");
  EXPECT_EQ(late.Chinese(InBrackets), "任务 [<C:\\a %s.k>] 应从第 4 个工步开始，但只有 3 个工步");

  const auto paused = [](int jobs) {
    return Message(MessageId::kGroupPaused, "a {b|c}", 10, Message(MessageId::kQueued), jobs);
  };
  EXPECT_EQ(paused(1).English(),
            "Group [a {b|c}] pauses: 10 jobs in a row failed within a minute each: Queued. 1 job "
            "stays Queued");
  EXPECT_TRUE(paused(11).English().ends_with("11 jobs stay Queued"));

  const Message ended(MessageId::kNotNormal, "", Message(MessageId::kNoResult, "a.lin"));
  EXPECT_EQ(ended.English(), "Job [Null] did not end normally: there is no result in [a.lin]");
  EXPECT_EQ(ended.Chinese(InBrackets), "任务 [Null] 未正常结束：[<a.lin>] 中没有结果");

  EXPECT_EQ(Message().English() + Message().Chinese(InBrackets), "");
  EXPECT_TRUE(Message().Empty());
  EXPECT_FALSE(ended.Empty());
}

TEST(Message, HidesASecretWhereverItStands) {
  const Message inner(MessageId::kForeignWords, "se-secret-secretcret");
  const Message said(MessageId::kNotNormal, "/secret/a.k", inner);
  EXPECT_EQ(said.Without("secret").English(),
            "Job [/***/a.k] did not end normally: se-***-***cret");
  EXPECT_EQ(said.Without("secret").Chinese(InBrackets).find("secret"), std::string::npos);
  EXPECT_EQ(said.Without(""), said);
}

// That both texts take the same arguments is checked when the table is compiled.
TEST(MessageTable, EveryMessageHasBothLanguages) {
  std::set<std::string> english;
  for (const MessageText& row : kMessageTexts) {
    const std::string chinese = row.chinese;
    if (std::string(row.english).empty() || chinese == "%s") continue;
    const bool hasChinese =
        std::any_of(chinese.begin(), chinese.end(), [](char c) { return c < 0; });
    EXPECT_TRUE(hasChinese) << row.name;
    const bool isNew = english.insert(row.english).second;
    EXPECT_TRUE(isNew || std::string(row.english) == "%s") << row.name << " says what another says";
  }
  EXPECT_GT(english.size(), 100U);
}

TEST(MessageTable, EveryMessageIsSaidSomewhere) {
  if (!std::filesystem::exists(KR_SOURCE_DIR "/src")) GTEST_SKIP() << "the sources are elsewhere";
  std::set<std::string> said = {"kNone"};
  for (const auto& entry : std::filesystem::recursive_directory_iterator(KR_SOURCE_DIR "/src")) {
    if (entry.is_regular_file() && entry.path().parent_path().filename() != "messages")
      said.merge(Matches(ReadText(entry.path()), "MessageId::(k\\w+)"));
  }
  for (const MessageText& row : kMessageTexts) EXPECT_TRUE(said.count(row.name)) << row.name;
}

// A text as the help writes it: dots for whatever stands in place of an argument.
std::string AsInHelp(const std::string& text) {
  static const std::regex gaps("%[psdm]|\\d+");
  static const std::regex blanksAtTheEnd(" +$");
  static const std::regex oneOrMany("\\{[^|]*\\|([^}]*)\\}");
  const std::string many = std::regex_replace(text, oneOrMany, "$1");
  return std::regex_replace(std::regex_replace(many, gaps, "..."), blanksAtTheEnd, "");
}

TEST(MessageTable, TheChineseHelpNamesMessagesAsTheyAreShown) {
  if (!std::filesystem::exists(KR_SOURCE_DIR "/src")) GTEST_SKIP() << "the sources are elsewhere";
  const std::string page = ReadText(KR_SOURCE_DIR "/help/Chinese/messages.htm");
  std::map<std::string, std::string> shown;  // by the line of the log
  for (const MessageText& row : kMessageTexts) shown[AsInHelp(row.english)] = AsInHelp(row.chinese);
  int found = 0;
  for (const std::string& cell : Matches(page, "<tr><td>([^\\n]*?)</td>")) {
    std::set<std::string> lines;
    for (const std::string& line : Matches(cell + "<br>", "(.*?)<br>"))
      lines.insert(AsInHelp(line));
    for (const std::string& line : lines) {
      const auto row = shown.find(line);
      if (row == shown.end()) continue;
      ++found;
      EXPECT_TRUE(lines.count(row->second)) << row->second << "\nis not in " << cell;
    }
  }
  EXPECT_GT(found, 40);
}

}  // namespace
