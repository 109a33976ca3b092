#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "JobFixtures.h"

namespace {

using Names = std::vector<std::string>;

TEST_F(DeckTest, ReadsTheMemoryOnTheKeywordCard) {
  const struct {
    const char* card;
    std::uint64_t megabytes;
  } cases[] = {
      {"*KEYWORD", 0},
      {"*KEYWORD 800M", 800},
      {"*keyword\t 200000000 ", 762},
      {"*KEYWORD 800 MB", 800},
      {"*KEYWORD 200000000 MEMORY2=50000000", 762},
      {"*KEYWORD MEMORY2=50M MEMORY=800M", 800},
      {"*KEYWORD MEMORY = 800 MB NCPU=4", 800},
      {"*KEYWORD MEMORY=200000000 MEMORY2=50M", 762},
      {"\xEF\xBB\xBF*KEYWORD 7M", 7},
      {"*KEYWORD_JOBID   1048576", 4},
      {"*KEYWORD memory = 200000000 ncpu=4", 762},
      {"*KEYWORD LONG=Y", 0},
      {"*KEYWORD 99999999999999999999", ~std::uint64_t{0} >> 18},
      {"*KEYWORD 8M\n*KEYWORD 0M", 8},
      {" *KEYWORD 8M", 0},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Scanned(std::string(c.card) + "\r\n*END\r\n")->deckMemory, c.megabytes) << c.card;
  }
}

TEST_F(DeckTest, ReadsControlComments) {
  const auto job = Scanned(
      "*KEYWORD\n"
      "$ SIMULATION : HOT FORMING \n"
      "$ CALC-METHOD:IMPLICIT\r\n"
      "$ RCMD-SOLVER: DOUBLE\n"
      "$ RUNFIRST: 3\n"
      "$ SPC WORKS IN ALL STAGES: YES\n");
  EXPECT_EQ(job->simulationType, "HOT FORMING");
  EXPECT_EQ(job->calculationMethod, "IMPLICIT");
  EXPECT_EQ(job->solverType, SolverKind::kLsDynaDouble);
  EXPECT_TRUE(job->hasRecommendedSolver);
  EXPECT_EQ(job->firstStage, 2);
  EXPECT_TRUE(job->hasFirstStage);
  EXPECT_TRUE(job->keepDeck);

  const auto other = Scanned(
      "$SIMULATION HOT FORMING\n$RCMD-SOLVER:ORLASOLVER\n$ SPC WORKS IN ALL STAGES: YES\n"
      "$ SPC WORKS IN ALL STAGES: NO\n $ CALC-METHOD: in the middle of a line\n*CASE_END_2\n");
  EXPECT_EQ(other->simulationType, "HOT FORMING");
  EXPECT_EQ(other->solverType, SolverKind::kUtilityBatch);
  EXPECT_FALSE(other->keepDeck || other->caseRun);
  EXPECT_EQ(other->calculationMethod, "");

  const auto plain = Scanned("$ RCMD-SOLVER: TRIPLE\n$ CALC-METHOD\n$ RUNFIRST\n*NODE\n$ nid\n");
  EXPECT_FALSE(plain->hasRecommendedSolver);
  EXPECT_FALSE(plain->hasFirstStage);
  EXPECT_EQ(plain->solverType, SolverKind::kLsDynaSingle);
}

TEST_F(DeckTest, CollectsIncludedFiles) {
  const auto job = Scanned(
      "*INCLUDE\n$ result from previous case\n 1234 \n"
      "*INCLUDE CID\r\nc id.k\r\n"
      "*include_transform\nmesh.k\n*INCLUDE_PATH\nfolder\n*INCLUDE_PATH_RELATIVE\nfolder2\n"
      "*INCLUDE_MULTISCALE\n7\n"
      "*INCLUDE\n*INCLUDE\nafter.k\n"
      "*INCLUDE\n/long/na +\nme/of +\na.k\nnot a name\n"
      "*INCLUDED\nno.k\n"
      "*CASE_BEGIN_1\n*INCLUDE\nin case.k\n*CASE_END_1\n*INCLUDE\nlast.k");
  EXPECT_EQ(job->includes,
            (Names{"1234", "c id.k", "mesh.k", "after.k", "/long/name/ofa.k", "last.k"}));
  EXPECT_TRUE(job->caseRun);
}

TEST_F(DeckTest, SaysThatItLeftIncludesOut) {
  std::string deck = "*KEYWORD\n";
  for (int i = 0; i < 10002; ++i) deck += "*INCLUDE\na.k\n";
  const auto job = Scanned(deck);
  EXPECT_EQ(job->includes.size(), 10000u);
  EXPECT_EQ(log_,
            Names{"Deck [" + job->jobFile + "] includes more than 10000 files: 2 are left out"});
}

// Cards at every distance from the ends of the reader's pieces, lines longer than a piece, bytes
// that end strings, and no line end at the end.
TEST_F(DeckTest, FindsCardsWhereverPiecesEnd) {
  constexpr std::size_t kPiece = 256 * 1024;
  for (std::size_t shift = 0; shift < 70; ++shift) {
    std::string text = std::string(kPiece - 60 + shift, 'x') + "*INCLUDE\n";
    text[text.size() - 10] = '\n';
    text += std::string("\0*INCLUDE\n*INCLUDE\n", 19) + "far.k +\n$ between\nther.k";
    EXPECT_EQ(Scanned(text)->includes, (Names{std::string("\0*INCLUDE", 9), "far.kther.k"}))
        << shift;
  }
  const std::string huge(3 * kPiece, 'y');
  const auto job = Scanned("*INCLUDE\n" + huge + "\n$" + huge + "\n*INCLUDE\n*" + huge +
                           "\n*KEYWORD 7M " + huge);
  ASSERT_EQ(job->includes.size(), 1u);
  EXPECT_LE(job->includes[0].size(), 4096u);
  EXPECT_EQ(job->deckMemory, 7u);
}

TEST_F(DeckTest, LeavesTheJobWhenTheDeckCannotBeRead) {
  const auto missing = Job((folder_ / "none.k").string());
  missing->simulationType = "kept";
  EXPECT_FALSE(Scan(*missing));
  EXPECT_EQ(missing->simulationType, "kept");
  EXPECT_FALSE(Scan(*Job("")));
  EXPECT_FALSE(Scan(*Job(folder_.string())));
  EXPECT_EQ(log_,
            (Names{"File [" + missing->jobFile + "] does not exist", "File [Null] does not exist",
                   "Read file [" + folder_.string() + "] failed"}));
}

TEST_F(DeckTest, AScanAgainForgetsTheOldDeck) {
  const auto job =
      Scanned("*KEYWORD_ID 9M\n$ a comment\n  part 7 \n*INCLUDE\na.k\n$ CALC-METHOD: IMPLICIT\n");
  EXPECT_EQ(job->deckIdentifier, "part 7");
  EXPECT_EQ(job->deckIdentifierFlag, 1);
  Write("deck.k", "*KEYWORD\n*INCLUDE\nb.k\n");
  EXPECT_TRUE(Scan(*job));
  EXPECT_EQ(job->includes, Names{"b.k"});
  EXPECT_EQ(job->deckMemory, 0u);
  EXPECT_EQ(job->deckIdentifierFlag, 0);
  EXPECT_EQ(job->calculationMethod, "");
}

TEST_F(DeckTest, ReadsRealDecks) {
  const char* const data = std::getenv("KESTRUN_TEST_DATA");
  if (data == nullptr) GTEST_SKIP() << "KESTRUN_TEST_DATA names no folder with real files";
  const std::filesystem::path decks = std::filesystem::path(data) / "decks";
  const auto main = Job((decks / "i.k").string());
  ASSERT_TRUE(Scan(*main));
  EXPECT_EQ(main->includes, (Names{"struc.k", "mesh.k", "voltage.k"}));
  EXPECT_EQ(main->deckMemory, 0u);
  EXPECT_FALSE(main->caseRun);
}

}  // namespace
