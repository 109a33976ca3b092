#include "util/files/FileLock.h"

#include <gtest/gtest.h>

#include "support/TempFolder.h"
#include "TestChild.h"

namespace {

using Result = FileLock::Result;

TEST(FileLockTest, OneHolderAtATimeAndADeadOneLetsGo) {
  const TempFolder folder;
  const std::string path = folder / "a.lock";
  FileLock mine, other;
  EXPECT_EQ(mine.Take(path, 0), Result::kTaken);
  EXPECT_EQ(mine.Take(path, 0), Result::kTaken) << "again";
  EXPECT_EQ(other.Take(path, 50), Result::kBusy);
  mine.Release();
  EXPECT_EQ(other.Take(path, 0), Result::kTaken);
  other.Release();

  PTWrapperProcess holder;
  ASSERT_TRUE(StartTestChild(holder, "lock " + path + " " + (folder / "held")));
  ASSERT_TRUE(WaitUntil([&] { return FileDirWrapper::FileExists(folder / "held"); }));
  EXPECT_EQ(mine.Take(path, 50), Result::kBusy);
  EXPECT_TRUE(holder.Terminate());
  EXPECT_EQ(mine.Take(path, 5000), Result::kTaken);
}

TEST(FileLockTest, WhatIsNoFileOfOursIsNoLock) {
  const TempFolder folder;
  FileLock lock;
  EXPECT_EQ(lock.Take(folder.Path(), 0), Result::kFailed);
  EXPECT_EQ(lock.Take(folder / "none/a.lock", 0), Result::kFailed);
  EXPECT_FALSE(lock.Taken());
}

}  // namespace
