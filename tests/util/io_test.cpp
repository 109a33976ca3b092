#include <gtest/gtest.h>

#include "support/TempFolder.h"
#include "util/files/IOWrapper.h"

namespace {

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
      {"[A]\nk=a\n[S]\n\na=1\n\nk=v\nk=w\n", "v"},
      {"[S]\na=1\n[T]\nb=2\n[S]\nk=v\n", ""},
      {"[S]\nk=\"  v  \"\n", "  v  "},
      {"[S]\nk=\"v'\n", "\"v'"},
      {"[S]\n  ;k=a\nk=a ;b\n", "a ;b"},
      {"[S]\n#k=a\n", "a", "S", "#k"},
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
  };
  const TempFolder temp;
  int count = 0;
  for (const auto& c : cases) {
    const std::string file = temp.Write(std::to_string(count++), c.before);
    Set(file, "S", "k", c.value);
    EXPECT_EQ(Plain(file), c.after) << c.before;
  }
}

TEST(Ini, ValuesWithLineEndsCannotAddLines) {
  const TempFolder temp;
  const InFolder in(temp.Path());  // a relative name is in the current folder
  Set("f.ini", "A", "k", "v\n[SOLVER]\nls_dyna_s=evil");
  const std::string file = temp / "f.ini";
  Set(file, "A\n[B]", "x\ny", "1");
  EXPECT_EQ(Value(file, "A", "k"), "v");
  EXPECT_EQ(Value(file, "A\nB", "x\nz"), "1");
}

}  // namespace
