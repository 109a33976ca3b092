// The result files of the stand-in, read by the published layout: every block where it belongs.

#include <cstring>
#include <vector>

#include "demo/SolverProcess.h"

namespace {

// One file as words of 4 or 8 bytes.
class WordFile {
 public:
  WordFile(std::string bytes, std::size_t wordBytes)
      : bytes_(std::move(bytes)), wordBytes_(wordBytes) {}

  std::size_t Size() const { return bytes_.size() / wordBytes_; }
  bool WholeBlocks() const { return !bytes_.empty() && bytes_.size() % 2048 == 0; }
  std::int64_t Int(std::size_t index) const {
    return wordBytes_ == 8 ? At<std::int64_t>(index) : At<std::int32_t>(index);
  }
  double Real(std::size_t index) const {
    return wordBytes_ == 8 ? At<double>(index) : static_cast<double>(At<float>(index));
  }
  std::vector<std::int64_t> Ints(std::size_t first, std::size_t count) const {
    std::vector<std::int64_t> values;
    for (std::size_t i = 0; i < count; ++i) values.push_back(Int(first + i));
    return values;
  }

 private:
  template <typename T>
  T At(std::size_t index) const {
    T value{};
    if ((index + 1) * wordBytes_ > bytes_.size()) {
      ADD_FAILURE() << "word " << index << " is behind the end";
    } else {
      std::memcpy(&value, bytes_.data() + index * wordBytes_, sizeof value);
    }
    return value;
  }

  std::string bytes_;
  std::size_t wordBytes_;
};

using Ids = std::vector<std::int64_t>;

class StandinD3plot : public ScratchFolder {
 protected:
  // Every way to write a card that a deck may use, and one element of each kind.
  void WriteMixedDeck() {
    Write("deck.k",
          "*KEYWORD\n*PARAMETER\nR     tend       2.0I    first        10\n*TITLE\nMixed\n"
          "*CONTROL_TERMINATION\n     &tend\n*INCLUDE_PATH\nparts\n*INCLUDE\nnodes.k\n"
          "*ELEMENT_SOLID\n     900       7\n"
          "      10      20      30      40      50      60      70      80\n"
          "*ELEMENT_SHELL_THICKNESS\n"
          "     700       5      10      20      30      30\n"
          "             1.0             1.0             1.0             1.0\n"
          "     600       5      10      20      30      40\n"
          "             1.0             1.0             1.0             1.0\n"
          "*ELEMENT_BEAM\n800,9,10,20,80\n"
          "*ELEMENT_TSHELL\n"
          "     500       6      10      20      30      40      50      60      70      80\n"
          "*ELEMENT_SHELL_NURBS_PATCH\n       1       1\n*END\nnot read\n");
    std::filesystem::create_directory(folder_ / "parts");
    Write("parts/nodes.k",
          "*KEYWORD\n*NODE\n      80             0.0             1.0          1.0D0\n"
          "$ a comment\n"
          "  &first             0.0             0.0             0.0\n"
          "20,1.,0.,0.\n 30, 1. , 1. , 0.\n40,0,1,0\n50,0,0,1\n"
          "*NODE +\n"
          "                  60                 1.0                 0.0                 1.0\n"
          "                  70                 1.0                 1.0                 1.0\n"
          "*END\n");
  }

  void CheckMixedModel(std::size_t wordBytes) {
    const WordFile base(Read("d3plot"), wordBytes);
    ASSERT_TRUE(base.WholeBlocks());
    EXPECT_GT(base.Real(14), 910);
    EXPECT_LT(base.Real(14), 1000);
    EXPECT_EQ(base.Ints(15, 3), (Ids{4, 8, 6}));  // dimensions, nodes, code
    EXPECT_EQ(base.Int(23), 1);
    EXPECT_EQ(base.Int(28), 1);
    EXPECT_EQ(base.Int(31), 2);
    EXPECT_EQ(base.Int(40), 1);
    EXPECT_EQ(base.Int(51), 4);
    std::size_t at = 64;
    EXPECT_EQ(base.Real(at + 3), 1.0);          // node 20, x
    EXPECT_EQ(base.Real(at + 3 * 7 + 2), 1.0);  // node 80, z
    at += 3 * 8;
    EXPECT_EQ(base.Ints(at, 9), (Ids{1, 2, 3, 4, 5, 6, 7, 8, 3}));
    EXPECT_EQ(base.Ints(at + 9, 9), (Ids{1, 2, 3, 4, 5, 6, 7, 8, 2}));
    EXPECT_EQ(base.Ints(at + 18, 6), (Ids{1, 2, 8, 0, 0, 4}));
    EXPECT_EQ(base.Ints(at + 24, 10), (Ids{1, 2, 3, 4, 1, 1, 2, 3, 3, 1}));
    at += 34;
    const auto numbering = static_cast<std::size_t>(base.Int(39));
    EXPECT_LT(base.Int(at), 0);
    EXPECT_EQ(base.Ints(at + 16, 8), (Ids{10, 20, 30, 40, 50, 60, 70, 80}));
    EXPECT_EQ(base.Ints(at + 24, 5), (Ids{900, 800, 600, 700, 500}));
    EXPECT_EQ(base.Ints(at + numbering - 8, 4), (Ids{5, 6, 7, 9}));
    EXPECT_EQ(base.Real(at + numbering), -999999.0);
  }

  void CheckMixedStates(std::size_t wordBytes) {
    const WordFile states(Read("d3plot01"), wordBytes);
    ASSERT_TRUE(states.WholeBlocks());
    const std::size_t globals = 6 + 7 * 4;
    const std::size_t length = 1 + globals + 3 * 8 + 7 + 6 + 5;
    std::size_t count = 0;
    while (states.Real(count * length) != -999999.0 && count < 100) {
      EXPECT_EQ(states.Real(count * length + 1 + globals + 3), 1.0);
      EXPECT_EQ(states.Real((count + 1) * length - 1), 1.0);  // the last element is there
      ++count;
    }
    ASSERT_GT(count, 2U);
    EXPECT_EQ(states.Real(0), 0.0);
    EXPECT_DOUBLE_EQ(states.Real((count - 1) * length), 2.0);
  }
};

TEST_F(StandinD3plot, HoldsTheDecksModelInBothPrecisions) {
  WriteMixedDeck();
  ASSERT_EQ(Run("i=deck.k"), 0) << Read("messag");
  EXPECT_TRUE(Contains(Read("messag"), "not read: *ELEMENT_SHELL_NURBS_PATCH"));
  CheckMixedModel(4);
  CheckMixedStates(4);
  ASSERT_EQ(Run("i=deck.k", SolverPath("standin_solver_d")), 0);
  EXPECT_TRUE(Contains(Read("messag"), "Double precision (I8R8)"));
  CheckMixedModel(8);
  CheckMixedStates(8);
}

TEST_F(StandinD3plot, BeginsANewFileForStatesThatDoNotFit) {
  std::string nodes = "*NODE\n";
  for (int i = 1; i <= 120000; ++i) nodes += std::to_string(i) + ",0.,0.,1.\n";
  WriteDeck(nodes);
  Write("d3plot04", "of an earlier run");
  for (const char* old : {"d3plot01", "d3plot02", "d3plot03"}) Write(old, "of an earlier run");
  ASSERT_EQ(Run("i=deck.k"), 0);
  const std::size_t length = 1 + 6 + 3 * 120000;
  EXPECT_EQ(WordFile(Read("d3plot01"), 4).Real(5 * length), -999999.0);
  EXPECT_EQ(WordFile(Read("d3plot02"), 4).Real(0), 1.0);
  EXPECT_EQ(WordFile(Read("d3plot02"), 4).Real(length), -999999.0);
  EXPECT_FALSE(Exists("d3plot03") || Exists("d3plot04"));
}

}  // namespace
