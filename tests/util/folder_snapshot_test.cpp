#include "util/files/FolderSnapshot.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "support/TempFolder.h"

namespace {

TEST(FolderSnapshotTest, TellsWhatHasBeenWrittenSince) {
  const TempFolder folder;
  const std::string odd = "k e%p\xc3\xa4";
  std::vector<std::string> files = {folder / "never"};
  for (const std::string& name :
       {odd, std::string("longer"), std::string("again"), std::string("replaced"),
        std::string("gone"), std::string("named")}) {
    files.push_back(folder.Write(name, "old"));
  }
  // The number of the file that goes may be given anew at once.
  using std::filesystem::file_time_type;
  std::filesystem::last_write_time(folder / "gone",
                                   file_time_type::clock::now() - std::chrono::hours(1));
  FolderSnapshot taken;
  taken.Take(files);
  const std::string text = taken.Text();
  EXPECT_TRUE(std::all_of(text.begin(), text.end(), [](char c) {
    return c == '\n' || (c >= ' ' && c < 0x7f);
  })) << text;
  FolderSnapshot before;
  EXPECT_TRUE(before.Read(text));
  std::ofstream(folder / "longer", std::ios::app) << "er";
  std::ofstream(folder / "again") << "new";
  std::filesystem::last_write_time(folder / "again",
                                   file_time_type::clock::now() + std::chrono::seconds(3));
  const auto written = std::filesystem::last_write_time(folder / "replaced");
  folder.Write("other", "new");
  std::filesystem::last_write_time(folder / "other", written);
  std::filesystem::rename(folder / "other", folder / "replaced");
  std::filesystem::remove(folder / "gone");
  std::filesystem::rename(folder / "named", folder / "otherwise");
  folder.Write("never", "new");
  for (const FolderSnapshot* snapshot : {&taken, &before}) {
    EXPECT_TRUE(snapshot->HoldsUnchanged(folder / odd));
    EXPECT_TRUE(snapshot->HoldsUnchanged(folder / "otherwise"));
    for (const char* name : {"longer", "again", "replaced", "gone", "never"}) {
      EXPECT_FALSE(snapshot->HoldsUnchanged(folder / name)) << name;
    }
  }
  // By the state that was taken, not by what lies there now.
  std::filesystem::last_write_time(folder / odd, written - std::chrono::hours(1));
  const auto now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
  taken.Take({folder / odd, folder / "longer"});
  taken.ForgetWrittenSince(now - 600);
  EXPECT_TRUE(taken.HoldsUnchanged(folder / odd));
  EXPECT_FALSE(taken.HoldsUnchanged(folder / "longer"));
  for (const char* torn : {"a", "a 1 2", "%4 1 2 3", "%zz 1 2 3", "a b c d"}) {
    EXPECT_FALSE(before.Read(torn)) << torn;
    EXPECT_FALSE(before.HoldsUnchanged(folder / odd));
  }
}

#ifndef _WIN32
TEST(FolderSnapshotTest, WhatCannotBeLookedAtIsTakenForOld) {
  const TempFolder folder;
  const std::string file = folder / "messag";
  std::filesystem::create_symlink(file, file);
  FolderSnapshot taken, before;
  taken.Take({file});
  std::filesystem::remove(file);
  folder.Write("messag", "whose is it?");
  EXPECT_TRUE(before.Read(taken.Text()));
  for (const FolderSnapshot* snapshot : {&taken, &before}) {
    EXPECT_TRUE(snapshot->HoldsUnchanged(file));
    EXPECT_TRUE(snapshot->IsUnknown(file));
  }
}
#endif

}  // namespace
