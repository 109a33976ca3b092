// The bytes that the settings-file service leaves behind, and what may stand in a file's place.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "support/TempFolder.h"
#include "util/files/IOWrapper.h"

namespace {

TEST(IniBytes, OtherLinesStayAsTheyAre) {
  const TempFolder temp;
  const std::string head = "\xEF\xBB\xBFjunk\r\n[A] x\r\n; c\r\n";
  const std::string file = temp.Write("f.ini", head + " Key\t= old\r\n\r\n[B]\r\nk=1\r\n");
  EXPECT_TRUE(IOWrapperIni().WriteValToIni("a", "KEY", "new", file));
  EXPECT_EQ(TempFolder::Read(file), head + "Key=new\r\n\r\n[B]\r\nk=1\r\n");
}

TEST(HostilePlaces, PipesFoldersAndDevicesDoNotHang) {
  const TempFolder temp;
  const std::string pipe = temp / "pipe";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  IOWrapperIni ini;
  for (const std::string& path : {pipe, temp.Path(), std::string("/dev/zero")}) {
    std::string value = "x";
    EXPECT_TRUE(ini.ReadValFromIni("s", "k", value, path));
    EXPECT_EQ(value, "");
    EXPECT_TRUE(ini.WriteValToIni("s", "k", "v", path));
    EXPECT_FALSE(FileDirWrapper::WriteFileWhole(path, "x"));
  }
}

}  // namespace
