#include <gtest/gtest.h>

#include <thread>

#include "support/TempFolder.h"
#include "util/files/IOWrapper.h"

namespace {

using Texts = std::vector<std::string>;

std::string Value(const std::string& file, const std::string& section, const std::string& key) {
  std::string value = "untouched";
  EXPECT_TRUE(IOWrapperIni().ReadValFromIni(section, key, value, file));
  return value;
}

void Set(const std::string& file, const std::string& section, const std::string& key,
         const std::string& value) {
  EXPECT_TRUE(IOWrapperIni().WriteValToIni(section, key, value, file));
}

TEST(Ini, EmptyArgumentsFailAndMissingOnesAreEmpty) {
  const TempFolder temp;
  IOWrapperIni ini;
  std::string value = "untouched";
  EXPECT_FALSE(ini.ReadValFromIni("", "k", value, "f"));
  EXPECT_FALSE(ini.ReadValFromIni("s", "", value, "f"));
  EXPECT_FALSE(ini.ReadValFromIni("s", "k", value, ""));
  EXPECT_EQ(value, "untouched");
  EXPECT_FALSE(ini.WriteValToIni("s", "", "v", temp / "f"));
  EXPECT_FALSE(ini.RemoveSectionInFile("", temp / "f"));
  EXPECT_FALSE(ini.RemoveKeyInFile("s", "", temp / "f"));
  Texts names{"kept"};
  EXPECT_FALSE(ini.GetAllSections("", names));
  EXPECT_TRUE(ini.GetAllSections(temp / "missing", names));
  EXPECT_EQ(names, Texts{"kept"});
  EXPECT_EQ(Value(temp / "missing", "s", "k"), "");
  EXPECT_TRUE(ini.RemoveKeyInFile("s", "k", temp / "missing"));
  EXPECT_TRUE(ini.RemoveSectionInFile("s", temp / "missing"));
  EXPECT_FALSE(FileDirWrapper::FileExists(temp / "missing"));
  EXPECT_EQ(ini.LastError(), "");
}

TEST(Ini, ReadsByTheServicesRules) {
  const TempFolder temp;
  const std::string file = temp.Write("f.ini",
                                      "orphan=1\r\n"
                                      "; [A] is below\r\n"
                                      "  [A]  ; remark\r\n"
                                      "\t Plain Key \t=  two words \t\r\n"
                                      "double = \"  kept \" \r\n"
                                      "single='x'\r\n"
                                      "mixed='x\"\r\n"
                                      "quote=\"\r\n"
                                      "equals=a=b\r\n"
                                      "bare\r\n"
                                      "empty=\r\n"
                                      ";hidden=1\r\n"
                                      "twice=1\r\n"
                                      "TWICE=2\r\n"
                                      "[B]\r\n"
                                      "k=b\r\n"
                                      "[a]\r\n"
                                      "late=1\r\n"
                                      "[C]\r\n"
                                      "last=no line end");
  EXPECT_EQ(Value(file, " a ", "PLAIN KEY"), "two words");
  EXPECT_EQ(Value(file, "A", " plain key "), "two words");
  EXPECT_EQ(Value(file, "A", "double"), "  kept ");
  EXPECT_EQ(Value(file, "A", "single"), "x");
  EXPECT_EQ(Value(file, "A", "mixed"), "'x\"");
  EXPECT_EQ(Value(file, "A", "quote"), "\"");
  EXPECT_EQ(Value(file, "A", "equals"), "a=b");
  EXPECT_EQ(Value(file, "A", "bare"), "");
  EXPECT_EQ(Value(file, "A", "empty"), "");
  EXPECT_EQ(Value(file, "A", "twice"), "1");
  EXPECT_EQ(Value(file, "A", "late"), "");
  EXPECT_EQ(Value(file, "A", "orphan"), "");
  EXPECT_EQ(Value(file, "A", "k"), "");
  EXPECT_EQ(Value(file, "C", "last"), "no line end");
  Texts names;
  EXPECT_TRUE(IOWrapperIni().GetAllSections(file, names));
  EXPECT_EQ(names, (Texts{"A", "B", "a", "C"}));
}

TEST(Ini, LongValuesAndListsAreCut) {
  const TempFolder temp;
  const std::string file = temp / "f.ini";
  Set(file, "s", "long", std::string(5000, 'v'));
  EXPECT_EQ(Value(file, "s", "long"), std::string(4095, 'v'));

  std::string sections;
  for (int i = 0; i < 30; ++i) sections += "[" + std::string(99, 'n') + "]\n";
  Texts names;
  EXPECT_TRUE(IOWrapperIni().GetAllSections(temp.Write("g.ini", sections), names));
  ASSERT_EQ(names.size(), 21u);
  EXPECT_EQ(names[19].size(), 99u);
  EXPECT_EQ(names[20].size(), 46u);
}

TEST(Ini, ValuesWithLineEndsCannotAddLines) {
  const TempFolder temp;
  const std::string file = temp / "f.ini";
  Set(file, "A", "k", "v\n[SOLVER]\nls_dyna_s=evil");
  Set(file, "A\n[B]", "x\ny", "1");
  EXPECT_EQ(Value(file, "A", "k"), "v");
  EXPECT_EQ(Value(file, "A\nB", "x\nz"), "1");
  Texts names;
  IOWrapperIni().GetAllSections(file, names);
  EXPECT_EQ(names, Texts{"A"});
}

TEST(Ini, RelativeNamesAreInTheCurrentFolder) {
  const TempFolder temp;
  const InFolder in(temp.Path());
  Set("f.ini", "A", "k", "v");
  EXPECT_EQ(Value(temp / "f.ini", "A", "k"), "v");
}

class Image : public IOWrapperIni {
 public:
  using IOWrapperIni::ClearTmpData;
  using IOWrapperIni::loaded_;
  using IOWrapperIni::ReadIni;
  using IOWrapperIni::sections_;
  using IOWrapperIni::WriteIni;
};

TEST(Ini, ImageKeepsSectionOrderAndSortsKeys) {
  const TempFolder temp;
  const std::string file = temp.Write("f.ini",
                                      "ignored=1\n [ Z ] \r\n b = 2 \n;c\nb =3\n\n"
                                      "a=\xFF"
                                      "c=4\n[A]\n");
  Image image;
  EXPECT_FALSE(image.WriteIni(temp / "out.ini"));
  ASSERT_TRUE(image.ReadIni(file));
  ASSERT_EQ(image.sections_.size(), 2u);
  EXPECT_EQ(image.sections_[0].first, " Z ");
  using Map = std::map<std::string, std::string>;
  EXPECT_EQ(image.sections_[0].second, (Map{{";c", ""}, {"a", ""}, {"b ", " 2"}, {"c", "4"}}));
  ASSERT_TRUE(image.WriteIni(temp / "out.ini"));
  std::string written = TempFolder::Read(temp / "out.ini");
  std::erase(written, '\r');
  EXPECT_EQ(written, "[ Z ]\n;c=\na=\nb = 2\nc=4\n[A]\n");

  EXPECT_FALSE(image.ReadIni(temp / "missing"));
  EXPECT_TRUE(image.loaded_ && image.sections_.empty());
  image.ClearTmpData();
  EXPECT_FALSE(image.WriteIni(temp / "out.ini"));
}

TEST(TextFiles, LinesEndAtLineFeedOrFF) {
  const TempFolder temp;
  const std::string big(100000, 'x');
  const std::string path = temp.Write("t", "one\r\n\n" + big + "\ntwo\xFFthree");
  std::FILE* file = std::fopen(path.c_str(), "rb");
  ASSERT_NE(file, nullptr);
  std::string line = "old";
  for (const std::string& expected : Texts{"one\r", "", big, "two", "three", "", ""}) {
    EXPECT_TRUE(IOWrapperTxt::ReadLine(file, line));
    EXPECT_EQ(line, expected);
  }
  EXPECT_TRUE(std::feof(file));
  std::fclose(file);
}

TEST(TextFiles, ParseLineKeepsEmptyPieces) {
  Texts lines{"old"};
  EXPECT_TRUE(IOWrapperTxt::ParseLine("a\nb\n", lines));
  EXPECT_EQ(lines, (Texts{"a", "b", ""}));
  EXPECT_FALSE(IOWrapperTxt::ParseLine("", lines));
  EXPECT_TRUE(lines.empty());
}

TEST(TextFiles, StatInfo) {
  const TempFolder temp;
  std::int64_t created = 0;
  std::int64_t accessed = 0;
  std::int64_t modified = 0;
  std::int64_t size = 0;
  const std::string path = temp.Write("t", "12345");
  EXPECT_TRUE(IOWrapperTxt::FileStatInfo(path, created, accessed, modified, size));
  EXPECT_EQ(size, 5);
  EXPECT_GT(created, 1400000000);
  EXPECT_GE(modified, created);
  EXPECT_FALSE(IOWrapperTxt::FileStatInfo(temp / "no", created, accessed, modified, size));
}

TEST(BinaryFiles, ReadAndWrite) {
  const TempFolder temp;
  IOWrapperBinary binary;
  const std::string path = temp / "b";
  EXPECT_TRUE(binary.WriteBufferToFile("a\0b\n", 4, path));
  EXPECT_EQ(TempFolder::Read(path), std::string("a\0b\n", 4));
  EXPECT_EQ(binary.ReadFileToBuffer(path, nullptr, 0), 4);
  char buffer[8] = "-------";
  EXPECT_EQ(binary.ReadFileToBuffer(path, buffer, 0), 4);
  EXPECT_EQ(binary.ReadFileToBuffer(path, buffer, 3), 3);
  EXPECT_EQ(std::string(buffer, 4), std::string("a\0b-", 4));
  EXPECT_EQ(binary.ReadFileToBuffer(path, buffer, 8), 4);
  EXPECT_EQ(binary.LastError(), "");

  EXPECT_FALSE(binary.WriteBufferToFile(nullptr, 4, path));
  EXPECT_EQ(binary.LastError(), "data buffer is empty");
  EXPECT_FALSE(binary.WriteBufferToFile("x", 1, ""));
  EXPECT_EQ(binary.LastError(), "file name is empty");
  EXPECT_FALSE(binary.WriteBufferToFile("x", 1, temp.Path()));
  EXPECT_EQ(binary.LastError(), "write file " + temp.Path() + " failed");
  EXPECT_EQ(binary.ReadFileToBuffer("", buffer, 8), 0);
  EXPECT_EQ(binary.LastError(), "file name is empty");
  for (const std::string& bad : {temp / "missing", temp.Path()}) {
    EXPECT_EQ(binary.ReadFileToBuffer(bad, buffer, 8), 0);
    EXPECT_EQ(binary.LastError(), "open file " + bad + " failed");
  }
  EXPECT_EQ(binary.ReadFileToBuffer(temp.Write("empty", ""), buffer, 8), 0);
  EXPECT_EQ(binary.LastError(), "file size is zero");
}

TEST(FileLocks, AreToldApartByTheirSpelling) {
  const TempFolder temp;
  const std::string path = temp.Write("a", "x");
  const std::string other = temp.Path() + "/./a";
  IOWrapperLocker locker;
  EXPECT_FALSE(locker.Lock(""));
  EXPECT_EQ(locker.LastError(), "file path name is empty");
  EXPECT_FALSE(locker.UnLock(temp / "no"));
  EXPECT_EQ(locker.LastError(), "file " + (temp / "no") + " not exists");
  EXPECT_FALSE(locker.Lock(temp.Path()));
  EXPECT_EQ(locker.LastError(), "open exists file with share read mode failed");

  EXPECT_TRUE(locker.Lock(path));
  EXPECT_TRUE(locker.Lock(other));
  EXPECT_FALSE(locker.Lock(path));
  EXPECT_EQ(locker.LastError(), "file " + path + " has been locked");
  EXPECT_EQ(TempFolder::Read(path), "x");
  EXPECT_TRUE(locker.UnLock(path));
  EXPECT_FALSE(locker.UnLock(path));
  EXPECT_EQ(locker.LastError(), "file " + path + " has not been locked");
  locker.UnLockAllFiles();
  EXPECT_TRUE(locker.Lock(other));
}

}  // namespace
