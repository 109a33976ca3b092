#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <limits>

#include "d3plot/D3plotImage.h"
#include "d3plot/ptkPostD3plotManager.h"
#include "support/TempFolder.h"

namespace {

struct Database {
  explicit Database(const std::string& path) : open(manager.Open(path, grids)) {}

  int Nodes() const { return grids.Grid().NumberOfPoints(); }
  int Elements() const { return grids.Grid().NumberOfCells(); }
  const ptkUnstructuredGrid::Cells& Kinds() const { return grids.Grid().CellsByKind(); }
  const WordFormat& Format() const { return manager.Reader().Format(); }
  const std::vector<FileFamily>& Families() const { return manager.Reader().Families(); }
  std::string Error() const { return manager.Reader().Error().English(); }

  ptkPostD3plotManager manager;
  ptkUnstructuredGridManager grids;
  bool open;
};

TEST(D3plot, AllWordSizesAndByteOrders) {
  const D3plotModel model{.solids = -3, .thickShells = 1, .beams = 2, .shells = 4};
  const TempFolder folder;
  for (const std::size_t wordSize : {4u, 8u}) {
    for (const bool big : {false, true}) {
      for (const std::int64_t code : {2, 6}) {
        D3plotImage image(wordSize, big, model);
        const Database database(folder.Write("d3plot", image.Set(17, code).Bytes()));
        ASSERT_TRUE(database.open) << wordSize << big << code << database.Error();
        EXPECT_EQ(database.Format().wordSize, wordSize);
        EXPECT_STREQ(database.Format().ByteOrder(), big ? "big" : "little");
        EXPECT_TRUE(database.Format().versionKnown);
        EXPECT_EQ(database.Nodes(), 12);
        EXPECT_EQ(database.Elements(), 10);
        EXPECT_EQ(database.Kinds().solids, 3);
        EXPECT_EQ(database.Kinds().thickShells, 1);
        EXPECT_EQ(database.Kinds().beams, 2);
        EXPECT_EQ(database.Kinds().shells, 4);
      }
    }
  }
}

TEST(D3plot, AnUnknownVersionIsReadInTheOrderOfItsCode) {
  const TempFolder folder;
  D3plotImage image(8, true, {.shells = 2});
  const Database database(folder.Write("d3plot", image.SetVersion(1001).Bytes()));
  EXPECT_EQ(database.Elements(), 2) << database.Error();
  EXPECT_FALSE(database.Format().versionKnown);
}

TEST(D3plot, FamiliesAreFoundOverGaps) {
  const TempFolder folder;
  const std::string bytes = D3plotImage(4, false).Bytes();
  for (const char* name : {"d3plot", "d3plot01", "d3plot03", "d3plot10", "d3plot100", "d3plot499",
                           "d3plotab", "d3plotab02", "d3plotzz", "d3plotzz499"}) {
    folder.Write(name, bytes);
  }
  for (const char* name : {"d3plot1", "d3plot500", "d3plotac01", "d3plot.txt"}) {
    folder.Write(name, bytes);
  }
  std::filesystem::create_directory(folder / "d3plot02");

  const Database database(folder / "d3plot  ");
  ASSERT_TRUE(database.open);
  std::vector<std::vector<std::string>> names;
  for (const FileFamily& family : database.Families()) {
    names.emplace_back();
    for (const FileFamily::Member& member : family.members) {
      names.back().push_back(std::filesystem::path(member.name).filename().string());
      EXPECT_EQ(member.size, bytes.size());
    }
  }
  const std::vector<std::vector<std::string>> expected = {
      {"d3plot", "d3plot01", "d3plot03", "d3plot10", "d3plot100", "d3plot499"},
      {"d3plotab", "d3plotab02"},
      {"d3plotzz", "d3plotzz499"}};
  EXPECT_EQ(names, expected);
}

TEST(D3plot, TheGeometryMustEndWithinTheFiles) {
  const TempFolder folder;
  for (const D3plotModel& model :
       {D3plotModel{.ndim = 5, .solids = 2, .extra = 64}, D3plotModel{.solids = -2, .beams = 1},
        D3plotModel{.ndim = 2, .shells = 3, .numbering = 17}, D3plotModel{.thickShells = 2}}) {
    for (const std::size_t wordSize : {4u, 8u}) {
      const D3plotImage image(wordSize, false, model);
      const std::string whole = image.Bytes();
      const Database exact(folder.Write("d3plot", whole));
      EXPECT_TRUE(exact.open) << exact.Error();
      for (const std::size_t size : {whole.size() - 1, whole.size() / 2, 64 * wordSize,
                                     std::size_t{145}, std::size_t{143}, std::size_t{0}}) {
        const Database cut(folder.Write("d3plot", whole.substr(0, size)));
        EXPECT_FALSE(cut.open) << size;
        EXPECT_FALSE(cut.Error().empty());
        EXPECT_EQ(cut.Nodes(), 0);
        EXPECT_EQ(cut.Elements(), 0);
      }
    }
  }
}

TEST(D3plot, TheGeometryGoesOnInTheNextFile) {
  const TempFolder folder;
  D3plotImage image(8, true, {.nodes = 40, .solids = 5, .beams = 3, .shells = 30});
  image.Set(64 + 3 * 40 + 9 * 5 + 1, 0);  // the first beam is a spring to ground
  folder.Write("d3plot01", image.Tail(200));
  const Database continued(folder.Write("d3plot", image.Head(200)));
  EXPECT_TRUE(continued.open) << continued.Error();
  EXPECT_EQ(continued.Nodes(), 40);
  EXPECT_EQ(continued.Elements(), 38);
}

TEST(D3plot, ReducedRigidBodiesComeWithAndWithoutMaterialTypes) {
  const TempFolder folder;
  for (const std::int64_t ndim : {8, 9}) {
    D3plotImage image(4, false, {.ndim = ndim, .nodes = 40, .shells = 60});
    image.Set(65, -1);  // a coordinate, where the number of material types could be
    folder.Write("d3plot01", image.Tail(200));
    const Database database(folder.Write("d3plot", image.Head(200)));
    EXPECT_TRUE(database.open) << database.Error();
    EXPECT_EQ(database.Elements(), 60);
  }
}

TEST(D3plot, StatesAreNotTakenForTheEndOfACutModel) {
  const TempFolder folder;
  const D3plotImage image(4, false, {.nodes = 40, .shells = 60});
  std::string states;
  for (int i = 0; i < 2000; ++i) states += std::string("\0\0\x80\x3f", 4);
  folder.Write("d3plot01", states);
  EXPECT_TRUE(Database(folder.Write("d3plot", image.Bytes())).open);
  EXPECT_FALSE(Database(folder.Write("d3plot", image.Head(300))).open);
  EXPECT_FALSE(Database(folder.Write("d3plot", image.Bytes().substr(0, 1201))).open);
}

TEST(D3plot, HostileHeads) {
  const TempFolder folder;
  constexpr auto kLow = std::numeric_limits<std::int64_t>::min();
  constexpr auto kHigh = std::numeric_limits<std::int64_t>::max();
  for (const std::size_t word : {16u, 23u, 28u, 31u, 37u, 39u, 40u, 47u, 50u, 57u}) {
    for (const std::int64_t value : {kLow, kLow + 1, kHigh, std::int64_t{0x7fffffff},
                                     std::int64_t{-0x7fffffff}, std::int64_t{1} << 61}) {
      D3plotImage image(8, false, {.solids = 1});
      image.Set(word, value);
      // Everything but the counts of the model may be a leftover below zero.
      const bool harmless = value < 0 && (word == 37 || word == 39 || word >= 47);
      EXPECT_EQ(Database(folder.Write("d3plot", image.Bytes())).open, harmless) << word << value;
    }
  }
  for (const std::int64_t ndim : {0, 1, 10, -4}) {
    D3plotImage image(4, false);
    EXPECT_FALSE(Database(folder.Write("d3plot", image.Set(15, ndim).Bytes())).open);
  }
  EXPECT_FALSE(Database(folder.Write("d3plot", std::string(4096, '\6'))).open);
}

TEST(D3plot, NamesThatCannotBeOpened) {
  const TempFolder folder;
  EXPECT_FALSE(Database(folder / "absent").open);
  EXPECT_FALSE(Database(folder.Path()).open);
  const Database longName(std::string(1024, 'x'));
  EXPECT_FALSE(longName.open);
  EXPECT_NE(longName.Error().find("too long"), std::string::npos);
}

TEST(D3plot, FilesOfRealSolvers) {
  const char* data = std::getenv("KESTRUN_TEST_DATA");
  if (data == nullptr) GTEST_SKIP() << "KESTRUN_TEST_DATA is not set";
  struct Expected {
    const char* folder;
    int nodes, solids, beams, shells;
    std::size_t files;
  };
  for (const Expected& expected :
       {Expected{"shell_bumper", 4915, 0, 0, 4696, 2}, Expected{"solid_family", 106, 16, 0, 16, 23},
        Expected{"single_beam", 2, 0, 1, 0, 2}}) {
    const std::string path = std::string(data) + "/d3plot/" + expected.folder + "/d3plot";
    const Database database(path);
    ASSERT_TRUE(database.open) << path << database.Error();
    EXPECT_EQ(database.Nodes(), expected.nodes);
    EXPECT_EQ(database.Kinds().solids, expected.solids);
    EXPECT_EQ(database.Kinds().beams, expected.beams);
    EXPECT_EQ(database.Kinds().shells, expected.shells);
    EXPECT_EQ(database.Families().size(), 1u);
    EXPECT_EQ(database.Families()[0].members.size(), expected.files);
  }
}

}  // namespace
