#include "util/files/FolderSnapshot.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "support/TempFolder.h"

namespace {

TEST(FolderSnapshotTest, TellsWhatHasBeenWrittenSince) {
  const TempFolder folder;
  for (const char* name : {"kept", "longer", "again", "replaced", "gone"})
    folder.Write(name, "old");
  FolderSnapshot before;
  before.Take(folder.Path());
  std::ofstream(folder / "longer", std::ios::app) << "er";
  std::ofstream(folder / "again") << "new";
  std::filesystem::last_write_time(
      folder / "again", std::filesystem::file_time_type::clock::now() + std::chrono::seconds(3));
  const auto written = std::filesystem::last_write_time(folder / "replaced");
  folder.Write("other", "new");
  std::filesystem::last_write_time(folder / "other", written);
  std::filesystem::rename(folder / "other", folder / "replaced");
  std::filesystem::remove(folder / "gone");
  EXPECT_TRUE(before.HoldsUnchanged(folder / "kept"));
  for (const char* name : {"longer", "again", "replaced", "gone", "never"}) {
    EXPECT_FALSE(before.HoldsUnchanged(folder / name)) << name;
  }
  before.Take(folder / "none");
  EXPECT_FALSE(before.HoldsUnchanged(folder / "kept"));
}

}  // namespace
