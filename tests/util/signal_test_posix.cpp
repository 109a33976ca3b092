#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <thread>

#include "support/TempFolder.h"
#include "TestChild.h"
#include "util/files/FileDirWrapper.h"
#include "util/process/PTWrapper.h"
#include "util/signals/SharedFile_posix.h"

namespace {

using Clock = std::chrono::steady_clock;

std::string NewName(const std::string& prefix) {
  return prefix + "KR_TEST_P_" + std::to_string(Clock::now().time_since_epoch().count());
}

TEST(SignalPosix, NoNameLeavesTheFolderAndTheLastHolderRemovesTheFile) {
  EXPECT_EQ(SharedFile::PathOf("../x").find(".."), std::string::npos);
  const std::filesystem::path longest = SharedFile::PathOf(std::string(259, '.'));
  EXPECT_LT(longest.filename().string().size(), 256u);
  const std::string global = NewName("Global\\");
  PTWrapperSignal event;
  EXPECT_EQ(event.CreateEventSignal(global), 1);
  EXPECT_TRUE(event.CloseEventSignal());
  EXPECT_FALSE(FileDirWrapper::FileExists(SharedFile::PathOf(global)));
}

TEST(SignalPosix, AnotherUserSharesGlobalNamesOnly) {
  constexpr char kNobody[] = "setpriv --reuid=65534 --regid=65534 --clear-groups";
  PTWrapperProcess other;
  if (geteuid() != 0 || !StartTestChild(other, "exit 0", kNobody) || !other.WaitProc() ||
      other.ExitCode() != 0)
    GTEST_SKIP() << "cannot act for another user";
  const auto setByOther = [&](const std::string& name) {
    other.Terminate();
    return StartTestChild(other, "set " + name, kNobody) && other.WaitProc() &&
           other.ExitCode() == 0;
  };
  PTWrapperSignal global, own;
  const std::string globalName = NewName("Global\\"), ownName = NewName("");
  EXPECT_EQ(global.CreateEventSignal(globalName), 1);
  EXPECT_EQ(own.CreateEventSignal(ownName), 1);
  EXPECT_TRUE(setByOther(globalName));
  EXPECT_EQ(global.WaitForEventSignal(0), 0);
  EXPECT_FALSE(setByOther(ownName));
  EXPECT_EQ(own.WaitForEventSignal(0), 1);
}

// What another user may put in the place of a global object, or do to its file.
TEST(SignalPosix, HostileFilesAreRefusedWithoutDelay) {
  const TempFolder folder;
  const std::string target = folder.Write("target", "untouched");
  const std::string name = NewName("Global\\"), path = SharedFile::PathOf(name);
  PTWrapperSignal event, other;
  const Clock::time_point begin = Clock::now();

  ASSERT_EQ(symlink(target.c_str(), path.c_str()), 0);
  EXPECT_EQ(event.CreateEventSignal(name), 0);
  EXPECT_EQ(TempFolder::Read(target), "untouched");
  unlink(path.c_str());
  ASSERT_EQ(mkfifo(path.c_str(), 0666), 0);
  EXPECT_EQ(event.CreateEventSignal(name), 0);
  unlink(path.c_str());
  ASSERT_EQ(mkdir(path.c_str(), 0777), 0);
  EXPECT_EQ(event.CreateEventSignal(name), 0);
  rmdir(path.c_str());

  folder.Write("junk", std::string(100000, 'x'));
  std::filesystem::copy_file(folder / "junk", path);
  EXPECT_EQ(event.CreateEventSignal(name), 1) << "nobody holds it: made anew";
  ASSERT_EQ(truncate(path.c_str(), 0), 0);
  EXPECT_EQ(event.WaitForEventSignal(-1), 3);
  EXPECT_EQ(event.LastError(), "Unknown error");
  EXPECT_TRUE(event.CloseEventSignal());

  EXPECT_EQ(event.CreateEventSignal(name), 1);
  const UniqueFd hostile(open(path.c_str(), O_RDWR | O_CLOEXEC));
  struct flock all {};
  all.l_type = F_WRLCK;
  all.l_len = 1;  // nobody else may open it, nor its holder close it
  ASSERT_EQ(fcntl(hostile.get(), F_OFD_SETLK, &all), 0);
  all.l_start = 2;
  ASSERT_EQ(fcntl(hostile.get(), F_OFD_SETLK, &all), 0);
  EXPECT_EQ(event.WaitForEventSignal(-1), 3);
  EXPECT_TRUE(event.CloseEventSignal());
  EXPECT_EQ(other.CreateEventSignal(name), 0);
  unlink(path.c_str());
  EXPECT_LT(Clock::now() - begin, std::chrono::seconds(5));
}

}  // namespace
