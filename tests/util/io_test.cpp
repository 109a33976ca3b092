#include <gtest/gtest.h>

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

// A file's bytes, its lines ending as they do on Linux.
std::string Plain(const std::string& file) {
  std::string bytes = TempFolder::Read(file);
  std::erase(bytes, '\r');
  return bytes;
}

// The answers that the service of Windows gives; each is asked in a file of its own, since that
// service may remember files.
TEST(Ini, ReadsByTheServicesRules) {
  const struct {
    const char* contents;
    const char* value;
    const char* section = "S";
    const char* key = "k";
  } cases[] = {
      {"", ""},
      {"k=before any section\n[T]\nk=w\n", ""},
      {"\xEF\xBB\xBF[S]\r\n\tk \t=  two words \r\n", "two words"},
      {"[S]\rk=v", "v"},
      {"  [ S ] behind\nk=v\n", "v", "s", " K "},
      {"[S\nk=v\n", ""},
      {"[A]\nk=a\n[S]\n\na=1\n\nk=v\nk=w\n", "v"},
      {"[S]\na=1\n[T]\nb=2\n[S]\nk=v\n", ""},
      {"[S]\nk=\"  v  \"\n", "  v  "},
      {"[S]\nk='v'\n", "v"},
      {"[S]\nk=\"v'\n", "\"v'"},
      {"[S]\nk=\"\"v\"\"\n", "\"v\""},
      {"[S]\nk=a\"b\"\n", "a\"b\""},
      {"[S]\n  ;k=a\nk=a ;b\n", "a ;b"},
      {"[S]\n#k=a\n", "a", "S", "#k"},
      {"[S]\nk\nk=v\n", ""},
      {"[S]\nk==a=b\n", "=a=b"},
      {"[S\xFC]\nk\xFC=T\xC3\xBCr \xE9\x97\xA8\n", "T\xC3\xBCr \xE9\x97\xA8", "S\xFC", "k\xFC"},
  };
  const TempFolder temp;
  int count = 0;
  for (const auto& c : cases) {
    const std::string file = temp.Write(std::to_string(count++), c.contents);
    EXPECT_EQ(Value(file, c.section, c.key), c.value) << c.contents;
  }
  EXPECT_EQ(Value(temp / "missing", "S", "k"), "");
}

TEST(Ini, WritingChangesOneLine) {
  const struct {
    const char* before;
    const char* after;
    const char* value = "v";
  } cases[] = {
      {"", "[S]\nk=v\n"},
      {"[T]\na=1", "[T]\na=1\n[S]\nk=v\n"},
      {"; top\n[s]\na=1\n  K  =  old\nk=2\n", "; top\n[s]\na=1\nK=v\nk=2\n"},
      {"[S]\nk\n", "[S]\nk=v\n"},
      {"first\n[S]\nnot a key\n; one\na=1\n; two\n[T]\n[S]\nb=2\n",
       "first\n[S]\nnot a key\n; one\na=1\n; two\nk=v\n[T]\n[S]\nb=2\n"},
      {"[S]\n;k=1\nk=old\n", "[S]\n;k=1\nk=\n", ""},
      {"[S]\na=1\nK=v\nk=2\n[T]\n", "[S]\na=1\nk=2\n[T]\n", nullptr},
      {"[S]\na=1\n", "[S]\na=1\n", nullptr},
  };
  const TempFolder temp;
  int count = 0;
  for (const auto& c : cases) {
    const std::string file = temp.Write(std::to_string(count++), c.before);
    if (c.value) {
      Set(file, "S", "k", c.value);
    } else {
      EXPECT_TRUE(IOWrapperIni().RemoveKeyInFile("S", "k", file));
    }
    EXPECT_EQ(Plain(file), c.after) << c.before;
  }
  const std::string sections = temp.Write("sections", "; top\n[A]\na=1\n[S]\n; one\nk=v\n[T]\n");
  EXPECT_TRUE(IOWrapperIni().RemoveSectionInFile("s", sections));
  EXPECT_EQ(Plain(sections), "; top\n[A]\na=1\n[T]\n");
  EXPECT_TRUE(IOWrapperIni().RemoveSectionInFile("s", temp / "missing"));
  EXPECT_FALSE(FileDirWrapper::FileExists(temp / "missing"));
}

TEST(Ini, LongValuesAndListsAreCut) {
  const TempFolder temp;
  const std::string file = temp / "f.ini";
  Set(file, "s", "long", std::string(5000, 'v'));
  EXPECT_EQ(Value(file, "s", "long"), std::string(4095, 'v'));

  std::string sections = "[ a ]\n[]\n;[b]\n";
  for (int i = 0; i < 30; ++i) sections += "[" + std::string(99, 'n') + "]\n";
  Texts names;
  EXPECT_TRUE(IOWrapperIni().GetAllSections(temp.Write("g.ini", sections), names));
  ASSERT_EQ(names.size(), 22u);
  EXPECT_EQ(names[0], "a");
  EXPECT_EQ(names[20].size(), 99u);
  EXPECT_LT(names[21].size(), 99u);
}

TEST(Ini, ValuesWithLineEndsCannotAddLines) {
  const TempFolder temp;
  const InFolder in(temp.Path());  // a relative name is in the current folder
  Set("f.ini", "A", "k", "v\n[SOLVER]\nls_dyna_s=evil");
  const std::string file = temp / "f.ini";
  Set(file, "A\n[B]", "x\ny", "1");
  EXPECT_EQ(Value(file, "A", "k"), "v");
  EXPECT_EQ(Value(file, "A\nB", "x\nz"), "1");
  Texts names;
  IOWrapperIni().GetAllSections(file, names);
  EXPECT_EQ(names, Texts{"A"});
}

class Image : public IOWrapperIni {
 public:
  using IOWrapperIni::ReadIni;
  using IOWrapperIni::WriteIni;
};

TEST(Ini, ImageKeepsSectionOrderAndSortsKeys) {
  const TempFolder temp;
  Image image;
  EXPECT_FALSE(image.WriteIni(temp / "out.ini"));
  ASSERT_TRUE(image.ReadIni(temp.Write("f.ini",
                                       "ignored=1\n [ Z ] \r\n b = 2 \n;c\nb =3\n\n"
                                       "a=\xFF"
                                       "c=4\n[A]\n")));
  ASSERT_TRUE(image.WriteIni(temp / "out.ini"));
  EXPECT_EQ(Plain(temp / "out.ini"), "[ Z ]\n;c=\na=\nb = 2\nc=4\n[A]\n");
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
  std::fclose(file);
  Texts lines{"old"};
  EXPECT_TRUE(IOWrapperTxt::ParseLine("a\nb\n", lines));
  EXPECT_EQ(lines, (Texts{"a", "b", ""}));
}

TEST(BinaryFiles, ReadAndWrite) {
  const TempFolder temp;
  IOWrapperBinary binary;
  const std::string path = temp / "b";
  EXPECT_TRUE(binary.WriteBufferToFile("a\0b\n", 4, path));
  EXPECT_EQ(binary.ReadFileToBuffer(path, nullptr, 0), 4);
  char buffer[8] = "-------";
  EXPECT_EQ(binary.ReadFileToBuffer(path, buffer, 3), 3);
  EXPECT_EQ(std::string(buffer, 4), std::string("a\0b-", 4));
  EXPECT_EQ(binary.ReadFileToBuffer(path, buffer, 8), 4);
  EXPECT_EQ(binary.LastError(), "");
  EXPECT_FALSE(binary.WriteBufferToFile("x", 1, temp.Path()));
  EXPECT_EQ(binary.LastError(), "write file " + temp.Path() + " failed");
  for (const std::string& bad : {temp / "missing", temp.Path()}) {
    EXPECT_EQ(binary.ReadFileToBuffer(bad, buffer, 8), 0);
    EXPECT_EQ(binary.LastError(), "open file " + bad + " failed");
  }
}

TEST(FileLocks, AreToldApartByTheirSpelling) {
  const TempFolder temp;
  const std::string path = temp.Write("a", "x");
  const std::string other = temp.Path() + "/./a";
  IOWrapperLocker locker;
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
