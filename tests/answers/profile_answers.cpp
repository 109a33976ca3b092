// Settings files: what the service reads, and what it makes of a file.

#include "Answers.h"
#include "support/TempFolder.h"
#include "util/files/IOWrapper.h"

namespace {

struct Reading {
  const char* name;
  std::string contents;
  const char* section = "S";
  const char* key = "k";
};

const std::vector<Reading>& Readings() {
  using namespace std::string_literals;
  static const std::vector<Reading> readings = {
      {"plain", "[S]\nk=v\n"},
      {"DOS line ends", "[S]\r\nk=v\r\n"},
      {"Mac line ends", "[S]\rk=v\r"},
      {"no final line end", "[S]\nk=v"},
      {"blanks around key and value", "[S]\n  k  =  v w  \n"},
      {"tabs around key and value", "[S]\n\tk\t=\tv\t\n"},
      {"blanks before a section", "  [S]\nk=v\n"},
      {"blanks in the brackets", "[ S ]\nk=v\n"},
      {"blanks in the brackets, asked with them", "[ S ]\nk=v\n", " S "},
      {"text behind a section", "[S] x\nk=v\n"},
      {"an open bracket", "[S\nk=v\n"},
      {"two closing brackets", "[S]]\nk=v\n"},
      {"other case", "[s]\nK=v\n"},
      {"asked with blanks around the key", "[S]\nk=v\n", "S", " k "},
      {"double quotes", "[S]\nk=\"v\"\n"},
      {"single quotes", "[S]\nk='v'\n"},
      {"blanks in quotes", "[S]\nk=\"  v  \"\n"},
      {"unequal quotes", "[S]\nk=\"v'\n"},
      {"one quote", "[S]\nk=\"\n"},
      {"nothing in quotes", "[S]\nk=\"\"\n"},
      {"quotes inside", "[S]\nk=a\"b\"c\n"},
      {"two pairs of quotes", "[S]\nk=\"\"v\"\"\n"},
      {"a quote at the end", "[S]\nk=v\"\n"},
      {"key in the second of two sections", "[S]\na=1\n[T]\nb=2\n[S]\nk=v\n"},
      {"key twice", "[S]\nk=v\nk=w\n"},
      {"key in an earlier section", "[A]\nk=a\n[S]\nk=v\n"},
      {"a semicolon comment", "[S]\n;k=a\nk=v\n"},
      {"a comment with blanks before", "[S]\n  ;k=a\nk=v\n"},
      {"a hash is no comment", "[S]\n#k=a\nk=v\n", "S", "#k"},
      {"a semicolon in the value", "[S]\nk=a;b\n"},
      {"a semicolon after a blank", "[S]\nk=a ;b\n"},
      {"a key alone", "[S]\nk\n"},
      {"a key alone, another after it", "[S]\nk\nk=v\n"},
      {"an empty value", "[S]\nk=\n"},
      {"two equal signs", "[S]\nk==v\n"},
      {"an equal sign in the value", "[S]\nk=a=b\n"},
      {"an equal sign alone", "[S]\n=v\nk=w\n"},
      {"no such key", "[S]\na=1\n"},
      {"no such section", "[T]\nk=v\n"},
      {"an empty file", ""},
      {"a key before any section", "k=v\n[T]\n"},
      {"empty lines", "[S]\n\n\na=1\n\nk=v\n"},
      {"a value with a tab inside", "[S]\nk=a\tb\n"},
      {"an umlaut in the code page", "[S]\nk=T\xFCr\n"},
      {"an umlaut in UTF-8", "[S]\nk=T\xC3\xBCr\n"},
      {"an umlaut in key and section", "[S\xFC]\nk\xFC=v\n", "S\xFC", "k\xFC"},
      {"Chinese in UTF-8", "[S]\nk=\xE9\x97\xA8\n"},
      {"a mark of UTF-8 before the section", "\xEF\xBB\xBF[S]\nk=v\n"},
      {"a path", "[S]\nk=C:\\Program Files\\a b.exe\n"},
      {"a percent sign", "[S]\nk=%TEMP%\n"},
      {"a bracket in the value", "[S]\nk=[v]\n"},
      {"a line that looks like a section in a value", "[S]\na=[T]\nk=v\n"},
      {"a form feed around", "[S]\nk=\fv\f\n"},
  };
  return readings;
}

struct Change {
  const char* name;
  std::string before;
  const char* key;
  const char* value;  // null: the key is removed
};

const Change kChanges[] = {
    {"into an empty file", "", "k", "v"},
    {"into a new section", "[T]\na=1\n", "k", "v"},
    {"into a new section, no final line end", "[T]\na=1", "k", "v"},
    {"over a value", "[S]\na=1\nk=old\nb=2\n", "k", "v"},
    {"over a value with blanks around", "[S]\n  k  =  old  \n", "k", "v"},
    {"over a key in other case", "[s]\nK=old\n", "k", "v"},
    {"over the first of two keys", "[S]\nk=1\nk=2\n", "k", "v"},
    {"over a key alone", "[S]\nk\n", "k", "v"},
    {"behind the last key", "[S]\na=1\n", "k", "v"},
    {"before the empty line of the next section", "[S]\na=1\n\n[T]\nb=2\n", "k", "v"},
    {"beside comments", "; top\n[S]\n; one\na=1\n; two\n", "k", "v"},
    {"into the first of two sections", "[S]\na=1\n[T]\n[S]\nb=2\n", "k", "v"},
    {"an empty value", "[S]\nk=old\n", "k", ""},
    {"a value with blanks around", "[S]\n", "k", "  v  "},
    {"a value in quotes", "[S]\n", "k", "\"v\""},
    {"a value with an equal sign", "[S]\n", "k", "a=b"},
    {"a value with a semicolon", "[S]\n", "k", ";v"},
    {"a value in UTF-8", "[S]\n", "k", "\xE9\x97\xA8"},
    {"beside foreign lines", "first\n[S]\nnot a key\na=1\n", "k", "v"},
    {"the same value", "[S]\nk=v\n", "k", "v"},
    {"removed", "[S]\na=1\nk=v\nb=2\n", "k", nullptr},
    {"removed, the only key", "[S]\nk=v\n[T]\n", "k", nullptr},
    {"removed, not there", "[S]\na=1\n", "k", nullptr},
    {"removed in other case", "[S]\nK=v\na=1\n", "k", nullptr},
};

std::string Names(const TempFolder& folder, const std::string& contents) {
  const std::string file = folder.Write("names.ini", contents);
  std::vector<std::string> names;
  IOWrapperIni ini;
  const bool good = ini.GetAllSections(file, names);
  std::string text = good ? "" : "failed ";
  for (const std::string& name : names) text += "<" + name + ">";
  return text;
}

}  // namespace

void AnswerProfiles() {
  const TempFolder folder;
  IOWrapperIni ini;
  int count = 0;
  // Each in a file of its own: the service may remember files.
  const auto file = [&] { return folder / ("f" + std::to_string(count++) + ".ini"); };
  const auto contents = [](const std::string& path) { return TempFolder::Read(path); };
  for (const Reading& reading : Readings()) {
    const std::string path = file();
    std::ofstream(path, std::ios::binary) << reading.contents;
    std::string value = "untouched";
    const bool good = ini.ReadValFromIni(reading.section, reading.key, value, path);
    Answer("profile read", reading.name, (good ? "<" : "failed <") + value + ">");
  }
  std::string value = "untouched";
  ini.ReadValFromIni("S", "k", value, folder / "missing.ini");
  Answer("profile read", "no such file", "<" + value + ">");
  for (const std::size_t length : {4094U, 4095U, 4096U, 9000U}) {
    const std::string path = file();
    std::ofstream(path, std::ios::binary) << "[S]\nk=" << std::string(length, 'x') << "\nl=v\n";
    ini.ReadValFromIni("S", "k", value, path);
    Answer("profile read", "a value of " + std::to_string(length) + " bytes, its length",
           std::to_string(value.size()));
    ini.ReadValFromIni("S", "l", value, path);
    Answer("profile read", "behind a value of " + std::to_string(length) + " bytes", value);
  }
  for (const Change& change : kChanges) {
    const std::string path = file();
    std::ofstream(path, std::ios::binary) << change.before;
    if (change.value) {
      ini.WriteValToIni("S", change.key, change.value, path);
    } else {
      ini.RemoveKeyInFile("S", change.key, path);
    }
    Answer("profile write", change.name, contents(path));
  }
  const std::string created = file();
  ini.WriteValToIni("S", "k", "v", created);
  Answer("profile write", "into a new file", contents(created));
  const std::string removed = file();
  std::ofstream(removed, std::ios::binary) << "; top\n[A]\na=1\n[S]\n; one\nk=v\n\n[T]\nb=2\n";
  ini.RemoveSectionInFile("s", removed);
  Answer("profile write", "a section is removed", contents(removed));

  Answer("section names", "in their order", Names(folder, "[b]\nk=v\n[A]\n[c]\n"));
  Answer("section names", "twice", Names(folder, "[a]\n[b]\n[a]\n[A]\n"));
  Answer("section names", "none", Names(folder, "k=v\n"));
  Answer("section names", "blanks and nothing in brackets", Names(folder, "[ a ]\n[]\n[ ]\n"));
  Answer("section names", "in a comment", Names(folder, ";[a]\n[b]\n"));
  std::string many;
  for (int i = 0; i < 300; ++i) many += "[section" + std::to_string(100 + i) + "]\n";
  const std::string told = Names(folder, many);
  Answer("section names", "more than the buffer holds, the last one", told.substr(told.rfind('<')));
  Answer("section names", "more than the buffer holds, the bytes", std::to_string(told.size()));
}
