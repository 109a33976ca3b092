#include <cstdlib>

#include "JobFixtures.h"
#include "jobs/DeckEndTime.h"
#include "jobs/StageDecks.h"
#include "util/files/FileDirWrapper.h"

namespace {

using Names = std::vector<std::string>;

TEST_F(DeckTest, IncludedDecksBecomeStages) {
  const std::string stages =
      "$ RUNFIRST: 2\n*INCLUDE\none.dyn\n*INCLUDE\nmesh.inc\n*INCLUDE\nsub\\two.K\n"
      "*CASE_BEGIN_1\n*INCLUDE\ncase.k\n*CASE_END_1\n*INCLUDE\n";
  std::filesystem::create_directory(folder_ / "sub");
  const std::string one = Write("one.dyn", "*KEYWORD\n");
  const std::string two = Write(FileDirWrapper::Join("sub", "two.K"), "*KEYWORD\n");
  const std::string three = Write("three.key", "*KEYWORD\n");
  const auto report = [this](const Message& message) { log_.push_back(message.English()); };

  EXPECT_EQ(StageDecks(*Scanned(stages + three + "\n"), report), (Names{one, two, three}));
  EXPECT_EQ(StageDecks(*Scanned(stages.substr(stages.find('\n') + 1) + "three.key\n"), report),
            Names{});
  EXPECT_TRUE(log_.empty());
  EXPECT_EQ(StageDecks(*Scanned(stages + "absent.k\n"), report), Names{});
  EXPECT_EQ(log_, Names{"File [" + (folder_ / "absent.k").string() + "] does not exist"});
}

TEST_F(DeckTest, TheEndTimeAsItIsWritten) {
  const struct {
    const char* cards;
    double value;
  } cases[] = {
      {"*CONTROL_TERMINATION\n$ endtim\n      0.05         0       0.0\n", 0.05},
      {"*control_termination\r\n  1.0000-3        10\r\n", 1e-3},
      {"*CONTROL_TERMINATION\n   +1.5D+2  7\n*CONTROL_TERMINATION\n 9.0\n", 150},
      {"*CONTROL_TERMINATION+\n           0.0000025  8\n", 2.5e-6},
      {"*KEYWORD LONG=Y\n*CONTROL_TERMINATION\n           0.0000025  8\n", 2.5e-6},
      {"*CONTROL_TERMINATION\n     -&End\n*PARAMETER\nR    other       4.0R      end       2.0\n",
       -2},
      {"*PARAMETER+ \nR                end                 2.5\n*CONTROL_TERMINATION\n&end\n", 2.5},
      {"*PARAMETER\nR end, 3.0\n*CONTROL_TERMINATION\n&END, 5\n", 3},
  };
  for (const auto& c : cases) {
    const DeckEndTime end = FindEndTime(*Scanned(c.cards));
    ASSERT_TRUE(end.value.has_value()) << c.cards;
    EXPECT_DOUBLE_EQ(*end.value, c.value) << c.cards;
  }
  const DeckEndTime unknown = FindEndTime(*Scanned("*CONTROL_TERMINATION\n &a\n"));
  EXPECT_FALSE(unknown.value);
  EXPECT_EQ(unknown.text, "&a");
  for (const char* none : {"*KEYWORD\n", "*CONTROL_TERMINATION\n*END\n", "*CONTROL_TERMINATION"}) {
    const DeckEndTime end = FindEndTime(*Scanned(none));
    EXPECT_FALSE(end.value);
    EXPECT_EQ(end.text, "");
  }
}

TEST_F(DeckTest, TheEndTimeOfIncludedDecks) {
  std::filesystem::create_directory(folder_ / "sub");
  Write(FileDirWrapper::Join("sub", "a.k"), "*INCLUDE\na.k\n*INCLUDE\nb.k\n");
  Write(FileDirWrapper::Join("sub", "b.k"), "*CONTROL_TERMINATION\n      &end\n*INCLUDE\ndeck.k\n");
  const DeckEndTime end = FindEndTime(
      *Scanned("*PARAMETER\nR      end      12.5\n*INCLUDE\nabsent.k\n*INCLUDE\nsub/a.k\n"));
  EXPECT_EQ(end.value, 12.5);
}

}  // namespace
