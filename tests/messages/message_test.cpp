#include "messages/Message.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>

namespace {

std::string InBrackets(const std::string& bytes) {
  return "<" + bytes + ">";
}

TEST(Message, SaysTheSameInBothLanguages) {
  const Message late(MessageId::kFirstStageMissing, std::string("C:\\a %s.k"), 4, std::size_t{3});
  EXPECT_EQ(late.English(), "Job [C:\\a %s.k] is to begin at stage 4 but has 3");
  EXPECT_EQ(late.Chinese(InBrackets), "任务 [<C:\\a %s.k>] 应从第 4 个工步开始，但只有 3 个工步");

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
    if (std::string(row.english) != "%s")
      EXPECT_TRUE(english.insert(row.english).second) << row.name << " says what another says";
  }
  EXPECT_GT(english.size(), 100U);
}

}  // namespace
