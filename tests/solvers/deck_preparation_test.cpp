#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <thread>

#include "solvers/DeckPreparation.h"
#include "support/TempFolder.h"

namespace {

const std::string kInclude = "*INCLUDE\n$ result from previous case\nresult.k\n";
//                                 8              24              40              56
const std::string kNodes[] = {"       1      1.00000000      2.00000000      3.00000000",
                              "       2      1.00000000      2.00000000      3.00000000",
                              "12345678      1.00000000      2.00000000      3.00000000"};
const std::string kConstraints = "       7       7";

class PreparationTest : public testing::Test {
 protected:
  // What becomes of a deck with a result beside it; the deck itself is "deck.k".
  std::string Prepared(const std::string& deck, const std::string& result) {
    folder_.Write("result.k", result);
    const std::string path = folder_.Write("deck.k", deck);
    prepared_ = Prepare(path);
    return TempFolder::Read(path);
  }

  bool Prepare(const std::string& path) {
    return PrepareDeck(
        path, [this](const Message& message) { log_.push_back(message.English()); }, stop_);
  }

  bool Exists(const std::string& name) const { return FileDirWrapper::FileExists(folder_ / name); }

  TempFolder folder_;
  bool prepared_ = false;
  std::atomic<bool> stop_{false};
  std::vector<std::string> log_;
};

TEST_F(PreparationTest, TakesOutWhatTheResultBrings) {
  const std::string head = "*KEYWORD\n" + kInclude + "*NODE\n$ nid x y z\n";
  const std::string middle =
      "*ELEMENT_SHELL\n       1       1       1       2\n*Boundary_Spc_Node\n";
  const std::string spc[] = {"         1         0         1         1\n",
                             "         2         0         1         1\n"};
  const std::string tail = "*BOUNDARY_SPC_NODE_ID\n         1head\n         1         0\n" +
                           std::string("*NODE_RIGID_SURFACE\n") + kNodes[0] + kConstraints +
                           "\n*NODE\n-----BEGIN PGP MESSAGE-----\n" + kNodes[0] +
                           "\n-----END PGP MESSAGE-----\n*END\n*NODE\n" + kNodes[0] + kConstraints;
  const std::string deck = head + kNodes[0] + kConstraints + "\n" + kNodes[1] + kConstraints +
                           "\n" + kNodes[2] + "\n       3,short\n" + middle + spc[0] + spc[1] +
                           tail;
  const std::string result = "*KEYWORD\n*NODE\n" + kNodes[0] + "\n" + kNodes[2] +
                             "\n*ELEMENT_SHELL\n       2       2\n*END\n*NODE\n" + kNodes[1] + "\n";
  const std::string expected = head + "$" + kNodes[0] + kConstraints + "\n" + kNodes[1] + "\n$" +
                               kNodes[2] + "\n       3,short\n" + middle + "$" + spc[0] + spc[1] +
                               tail;
  EXPECT_EQ(Prepared(deck, result), expected);
  EXPECT_TRUE(prepared_);
  EXPECT_EQ(TempFolder::Read(folder_ / "deck.k.bak"), deck);
  EXPECT_FALSE(Exists("deck.k~~"));

  // The next run finds nothing to change and leaves the first deck in its backup.
  EXPECT_TRUE(Prepare(folder_ / "deck.k"));
  EXPECT_EQ(TempFolder::Read(folder_ / "deck.k"), expected);
  EXPECT_EQ(TempFolder::Read(folder_ / "deck.k.bak"), deck);

  EXPECT_EQ(Prepared(WithReturns(deck), WithReturns(result)), WithReturns(expected));
  EXPECT_TRUE(log_.empty());
}

TEST_F(PreparationTest, KnowsTheFormatsOfCards) {
  const std::string longNode =
      "                   1                 1.0                 2.0                 3.0";
  const std::string otherLong =
      "                   9                 1.0                 2.0                 3.0";
  const std::string tail = "                   7                   7\n";
  const std::string tenDigits = "1234567890             1.0             2.0             3.0";
  const std::string otherTen = "1234567899             1.0             2.0             3.0";
  const struct {
    const char* name;
    std::string deck;
    std::string expected;
    std::string result;
  } cases[] = {
      {"a long card",
       "*NODE +\n" + longNode + tail + otherLong + tail + "*NODE\n" + kNodes[0] + tail,
       "*NODE +\n$" + longNode + tail + otherLong + "\n*NODE\n$" + kNodes[0] + tail,
       "*NODE\n" + kNodes[0] + "\n"},
      {"a long deck",
       "*KEYWORD LONG=Y\n*node\n" + longNode + tail + otherLong + tail + "*NODE -\n" + kNodes[1] +
           tail + "*BOUNDARY_SPC_NODE\n" + longNode + tail,
       "*KEYWORD LONG=Y\n*node\n$" + longNode + tail + otherLong + "\n*NODE -\n" + kNodes[1] +
           "\n*BOUNDARY_SPC_NODE\n$" + longNode + tail,
       "*KEYWORD LONG = S\n*NODE+\n" + longNode + "\n"},
      {"ten digits", "*NODE %\n" + tenDigits + tail + otherTen + tail,
       "*NODE %\n$" + tenDigits + tail + otherTen + "\n",
       "*KEYWORD I10=Y\n*NODE\n" + tenDigits + "\n"},
      {"commas",
       "*NODE\n1,1.0,2.0,3.0,7,7\n 2 , 1.0 , 2.0 , 3.0 , 7,7\n3,1.,2.,3.\n"
       "*BOUNDARY_SPC_NODE\n1,0,1\n2,0,1\n",
       "*NODE\n$1,1.0,2.0,3.0,7,7\n 2 , 1.0 , 2.0 , 3.0 \n3,1.,2.,3.\n"
       "*BOUNDARY_SPC_NODE\n$1,0,1\n2,0,1\n",
       "*NODE\n1,0.,0.,0.\n"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Prepared(c.deck + kInclude, c.result), c.expected + kInclude) << c.name;
  }
}

TEST_F(PreparationTest, LeavesOtherDecksAlone) {
  const std::string nodes = "*NODE\n" + kNodes[0] + kConstraints + "\n";
  for (const std::string& include :
       {std::string("*INCLUDE\nresult.k\n"), std::string("$ result from previous case\n"),
        std::string("*INCLUDE\n$ the result from previous case\nresult.k\n"),
        std::string("*INCLUDE\n$ result from previous case\n*INCLUDE\nresult.k\n"),
        "*END\n" + kInclude}) {
    EXPECT_EQ(Prepared(nodes + include, nodes), nodes + include);
    EXPECT_TRUE(prepared_);
  }
  EXPECT_FALSE(Exists("deck.k.bak"));
  EXPECT_TRUE(log_.empty());
}

TEST_F(PreparationTest, AFailureLeavesTheDeck) {
  const std::string deck = kInclude + "*NODE\n" + kNodes[0] + kConstraints + "\n";
  const std::string result = "*NODE\n" + kNodes[0] + "\n";
  const std::string missing =
      folder_.Write("lost.k", "*INCLUDE\n$result from previous case\nno.k\n");
  EXPECT_FALSE(Prepare(missing));
  EXPECT_EQ(log_.back(), "Read file [" + (folder_ / "no.k") + "] failed");

  for (const char* obstacle : {"deck.k~~/x", "deck.k.bak/x"}) {
    std::filesystem::create_directories(folder_ / obstacle);
    EXPECT_EQ(Prepared(deck, result), deck);
    EXPECT_FALSE(prepared_);
    EXPECT_EQ(log_.back(),
              "Prepare deck [" + (folder_ / "deck.k") + "] failed, it stays as it was");
    std::filesystem::remove_all(std::filesystem::path(folder_ / obstacle).parent_path());
    EXPECT_FALSE(Exists("deck.k~~"));
  }

  log_.clear();
  stop_ = true;
  EXPECT_EQ(Prepared(deck, result), deck);
  EXPECT_FALSE(prepared_ || Exists("deck.k~~") || Exists("deck.k.bak"));
  EXPECT_TRUE(log_.empty());
}

// A solver of another job, or a user's editor, may look at the deck at any moment.
TEST_F(PreparationTest, ThereIsAlwaysAWholeDeck) {
  if (FileDirWrapper::kSeparator == '\\') GTEST_SKIP() << "there a reader may be kept out";
  const std::string deck = kInclude + "*NODE\n" + kNodes[0] + kConstraints + "\n";
  const std::string path = folder_.Write("deck.k", deck);
  std::string given = path;
  std::replace(given.begin(), given.end(), '/', '\\');
  std::atomic<bool> done{false};
  int missing = 0;
  std::thread reader([&] {
    while (!done) {
      if (TempFolder::Read(path).size() < deck.size() - kConstraints.size()) ++missing;
    }
  });
  for (int i = 0; i < 200; ++i) {
    FileDirWrapper::WriteFileWhole(path, deck);
    folder_.Write("result.k", i % 2 == 0 ? "*NODE\n" : "*NODE\n" + kNodes[0] + "\n");
    EXPECT_TRUE(Prepare(given));
  }
  done = true;
  reader.join();
  EXPECT_EQ(missing, 0);
  EXPECT_EQ(TempFolder::Read(path + ".bak"), deck);
}

// Lines that lie across the ends of the reader's pieces, one that is longer than a piece, and bytes
// that are no text.
TEST_F(PreparationTest, KeepsEveryByteOfOddDecks) {
  std::string before = kInclude + "*TITLE\n" + std::string("a\0b\r\r\n", 6);
  before += std::string(3 << 20, 'x') + "\n*NODE\n" + kNodes[0] + std::string(2 << 20, ' ') + "7\n";
  std::string deck = before;
  std::string expected = before;
  for (int i = 2; i < 40000; ++i) {
    std::string id = std::to_string(i);
    id.insert(0, 8 - id.size(), ' ');
    const std::string line = id + kNodes[0].substr(8);
    deck += line + kConstraints + "\n";
    expected += i % 2 == 0 ? "$" + line + kConstraints + "\n" : line + "\n";
  }
  std::string result = "*NODE\n";
  for (int i = 2; i < 40000; i += 2) result += std::to_string(i) + ",0.,0.,0.\n";
  EXPECT_TRUE(Prepared(deck, result) == expected);
}

}  // namespace
