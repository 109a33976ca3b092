// Whether a message file tells of a normal end, wherever in it the words stand.
#include "solvers/Verdict.h"

#include <gtest/gtest.h>

#include <string>

#include "support/TempFolder.h"

namespace {

const std::string kNormal = "N o r m a l";
const std::string kTermination = "t e r m i n a t i o n";

class VerdictTest : public testing::Test {
 protected:
  MessageVerdict Verdict(const std::string& text) {
    return ReadVerdict(folder_.Write("messag", text));
  }
  const TempFolder folder_;
};

TEST_F(VerdictTest, ANormalEndIsSeenWhereverItStandsInALine) {
  for (const std::size_t before : {10, 65500, 65536, 131060, 131072, 200000, 1000000}) {
    const std::string junk(before, '.');
    const std::string words = kNormal + "  " + kTermination;
    EXPECT_TRUE(Verdict("head\n" + junk + words).normal) << before;
    EXPECT_TRUE(Verdict(junk + words + junk + "\nmore\n").normal) << before;
    EXPECT_TRUE(Verdict(kNormal + junk + kTermination + "\r\n").normal) << before;
    EXPECT_FALSE(Verdict(junk + kNormal + junk + "\n" + junk + kTermination + "\n").normal)
        << before;
  }
}

TEST_F(VerdictTest, OnlyTheSolversWordsCountAndItsFirstErrorIsTheReason) {
  const std::pair<const char*, bool> cases[] = {
      {" N o r m a l    t e r m i n a t i o n      12/21/25 20:15:16\n", true},
      {" N o r m a l t e r m i n a t i o n", true},
      {"t e r m i n a t i o n: N o r m a l, says the first word\r\n", true},
      {"N o r m a l 45678901\r\n", true},  // 20 characters: too short for the second word
      {"N o r m a l 456789012\n", false},
      {"N o r m a l and more text\nt e r m i n a t i o n\n", false},
      {" Normal termination of the whole run\n", false},
      {" E r r o r   t e r m i n a t i o n\n", false},
      {"", false},
  };
  for (const auto& [text, normal] : cases) EXPECT_EQ(Verdict(text).normal, normal) << text;
  EXPECT_EQ(Verdict(std::string(300000, '\n') + " *** Error 10305 (KEY+305)\n     bad card\n"
                                                " *** Error 10306 (KEY+306)\n")
                .reason.English(),
            "*** Error 10305 (KEY+305): bad card");
  const std::pair<std::string, std::string> kinds[] = {
      {" *** Error 10305 (KEY+305)\n     bad card\n", "solver error 10305"},
      {" E r r o r   t e r m i n a t i o n\n", "solver error"},
      {" *** Error 70021 (OTH+21)\n     failed to write: No space left on device\n", "out of disk"},
      {" *** Error 11005\n     license server refused the checkout\n", "no licence"},
      {" cycle 7\n *** termination: the time step is below dtmin\n", "time step collapsed"},
      {" *** Warning 40001\n     the time step is below dtmin\n license: network\n", ""},
  };
  for (const auto& [text, how] : kinds)
    EXPECT_EQ(FailureMessage(Verdict(text).failure).English(), how) << text;
  EXPECT_EQ(ReadVerdict(folder_.Path()).reason.English(), "its message file cannot be read");
}

}  // namespace
