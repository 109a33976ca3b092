// The bytes that the settings-file service leaves behind, and what may stand in a file's place.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <thread>

#include "support/TempFolder.h"
#include "util/files/IOWrapper.h"

namespace {

std::string Changed(const TempFolder& temp, const std::string& before, const std::string& section,
                    const std::string& key, const std::string& value) {
  const std::string file = temp.Write("f.ini", before);
  EXPECT_TRUE(IOWrapperIni().WriteValToIni(section, key, value, file));
  return TempFolder::Read(file);
}

TEST(IniBytes, OtherLinesStayAsTheyAre) {
  const TempFolder temp;
  const std::string before = "junk\r\n[A] x\r\n; c\r\n Key\t= old\r\n\r\n[B]\r\nk=1\r\n";
  EXPECT_EQ(Changed(temp, before, "a", "KEY", "new"),
            "junk\r\n[A] x\r\n; c\r\nKey=new\r\n\r\n[B]\r\nk=1\r\n");
  EXPECT_EQ(Changed(temp, before, "a", "key", "old"), before);
  EXPECT_EQ(Changed(temp, before, "A", "more", " 1 "),
            "junk\r\n[A] x\r\n; c\r\n Key\t= old\r\nmore=1\r\n\r\n[B]\r\nk=1\r\n");
  EXPECT_EQ(Changed(temp, "[A]\nbare", "A", "bare", "v"), "[A]\nbare=v");
  EXPECT_EQ(Changed(temp, "[A]\n", "A", "a=b", "v"), "[A]\n");
  EXPECT_EQ(Changed(temp, "[A]\n", "A", "[B", "v]"), "[A]\n");
  EXPECT_EQ(Changed(temp, "\xEF\xBB\xBF[A]\nk=1\n", "A", "k", "v"), "\xEF\xBB\xBF[A]\nk=v\n");
  const std::string wide("\xFF\xFE[\0A\0]\0\n\0", 10);
  EXPECT_EQ(Changed(temp, wide, "A", "k", "v"), wide);
}

TEST(IniBytes, ThreadsDoNotUndoEachOthersChanges) {
  const TempFolder temp;
  const std::string file = temp / "f.ini";
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&file, t] {
      IOWrapperIni ini;
      for (int i = 0; i < 10; ++i) {
        ini.WriteValToIni("S" + std::to_string(t), std::to_string(i), "v", file);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  const std::string bytes = TempFolder::Read(file);
  EXPECT_EQ(std::count(bytes.begin(), bytes.end(), '\n'), 44);
}

TEST(HostilePlaces, PipesFoldersAndDevicesDoNotHang) {
  const TempFolder temp;
  const std::string pipe = temp / "pipe";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  IOWrapperIni ini;
  IOWrapperBinary binary;
  IOWrapperLocker locker;
  char buffer[4];
  for (const std::string& path : {pipe, temp.Path(), std::string("/dev/zero")}) {
    std::string value = "x";
    EXPECT_TRUE(ini.ReadValFromIni("s", "k", value, path));
    EXPECT_EQ(value, "");
    EXPECT_TRUE(ini.WriteValToIni("s", "k", "v", path));
    EXPECT_EQ(binary.ReadFileToBuffer(path, buffer, 4), 0);
    EXPECT_FALSE(FileDirWrapper::WriteFileWhole(path, "x"));
  }
  EXPECT_FALSE(binary.WriteBufferToFile("x", 1, pipe));
  EXPECT_TRUE(locker.Lock(pipe));
  EXPECT_FALSE(binary.WriteBufferToFile("x", 1, "/dev/full"));
  EXPECT_EQ(binary.LastError(), "fwrite failed");
}

TEST(HostilePlaces, ALockMeetsAWritersLock) {
  const TempFolder temp;
  const std::string path = temp.Write("a", "x");
  const int writer = open(path.c_str(), O_RDWR);
  ASSERT_EQ(flock(writer, LOCK_EX), 0);
  IOWrapperLocker locker;
  EXPECT_FALSE(locker.Lock(path));
  flock(writer, LOCK_UN);
  EXPECT_TRUE(locker.Lock(path));
  EXPECT_NE(flock(writer, LOCK_EX | LOCK_NB), 0);
  locker.UnLockAllFiles();
  EXPECT_EQ(flock(writer, LOCK_EX | LOCK_NB), 0);
  close(writer);
}

}  // namespace
