// The room of a folder, against what the standard library is told.
#include "util/files/FreeSpace.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "support/TempFolder.h"
#include "support/WaitUntil.h"

namespace {

TEST(FreeSpace, IsWhatTheUserMayStillWrite) {
  TempFolder folder;
  // Others write meanwhile.
  const auto isNear = [&] {
    constexpr std::uint64_t kNear = 64U << 20;
    const std::uint64_t expected = std::filesystem::space(folder.Path()).available;
    const std::uint64_t space = FreeSpace(folder.Path()).value_or(0);
    return space != 0 && std::max(space, expected) - std::min(space, expected) < kNear;
  };
  EXPECT_TRUE(WaitUntil(isNear));
  EXPECT_FALSE(FreeSpace(folder / "gone"));
  EXPECT_FALSE(FreeSpace(""));
}

}  // namespace
