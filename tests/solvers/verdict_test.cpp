// Whether a message file tells of a normal end, wherever in it the words stand.
#include <gtest/gtest.h>

#include <string>

#include "solvers/Verdict.h"
#include "support/TempFolder.h"

namespace {

const std::string kNormal = "N o r m a l";
const std::string kTermination = "t e r m i n a t i o n";

TEST(Verdict, ANormalEndIsSeenWhereverItStandsInALine) {
  const TempFolder folder;
  const auto isNormal = [&](const std::string& text) {
    return ReadVerdict(folder.Write("messag", text)).normal;
  };
  for (const std::size_t before : {10, 65500, 65536, 131060, 131072, 200000, 1000000}) {
    const std::string junk(before, '.');
    const std::string words = kNormal + "  " + kTermination;
    EXPECT_TRUE(isNormal("head\n" + junk + words)) << before;
    EXPECT_TRUE(isNormal(junk + words + junk + "\nmore\n")) << before;
    EXPECT_TRUE(isNormal(kNormal + junk + kTermination + "\r\n")) << before;
    EXPECT_FALSE(isNormal(junk + kNormal + junk + "\n" + junk + kTermination + "\n")) << before;
    EXPECT_FALSE(isNormal(junk + kNormal + junk + "\nx " + kTermination + "\n")) << before;
  }
}

}  // namespace
