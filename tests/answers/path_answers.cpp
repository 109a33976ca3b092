// Paths, folders and command lines.

#include <algorithm>

#include "Answers.h"
#include "support/TempFolder.h"

namespace {

// Written with "/" for the system's own separator.
std::string Slashes(std::string text) {
  std::replace(text.begin(), text.end(), '\\', '/');
  return text;
}

const char* const kPaths[] = {
    "a.k",  "dir/a.k", "dir/a.b.k",          "dir/a",      "dir.d/a",   "dir/.k",
    "dir/", "dir//",   "dir//a.k",           "/a.k",       "/",         "//",
    "",     "a.",      "dir/a b.k",          "dir/a.k ",   "..",        "../a.k",
    ".",    "a.K",     "//server/share/a.k", "dir\\a b.k", "dir\\sub/", "a..k",
};

const char* const kCommandLines[] = {
    "a",
    "a b c",
    "a  b\tc ",
    "\"a b\" c",
    "a \"b c\" d",
    "a b\"c d\"e f",
    "a \"\"",
    "a \"\" b",
    "a \"b",
    "a \"b c",
    "a \\b",
    "a \\\\b",
    "a b\\ c",
    "a \"b\\\" c",
    "a \\\"b c\\\"",
    "a \"b\\\\\" c",
    "a \\\\\"b c\\\\\" d",
    "a \"b\"\"c\" d",
    "a \"b\"\"c d",
    "a \"b\"\"\"c d",
    "a \"\"\"b c\"\"\"",
    "\"a\\\" b",
    "\"a\"b c",
    "a\"b c\" d",
    "a i=\"b c.k\" memory=20m",
    "C:\\x\\y.exe \"C:\\a b\\\\\" c",
    "a 'b c'",
    "a b\nc",
};

std::string List(const std::vector<std::string>& paths) {
  std::string text;
  for (const std::string& path : paths) {
    std::string name;
    FileDirWrapper::FileNameOf(path, name, true);
    text += "<" + name + ">";
  }
  return text;
}

void AnswerListing() {
  const TempFolder folder;
  for (const char* name : {"b.k", "A.k", "c", "a10.k", "a2.k", "_x", ".dot", "Z.k", "~t", "B1"}) {
    folder.Write(name, "x");
  }
  FileDirWrapper::CreateDirTree(folder / "m/n");
  FileDirWrapper::CreateDirTree(folder / "D");
  folder.Write("m/inner.k", "x");
  folder.Write("m/n/deep.k", "x");
  std::vector<std::string> files, dirs;
  FileDirWrapper::ListDir(folder.Path(), files, dirs, false);
  Answer("folder", "which files, sorted", [&] {
    std::sort(files.begin(), files.end());
    return List(files);
  }());
  std::sort(dirs.begin(), dirs.end());
  Answer("folder", "which folders, sorted", List(dirs));
  files.clear();
  dirs.clear();
  FileDirWrapper::ListDir(folder / "m", files, dirs, true);
  Answer("folder", "with its folders", List(files) + " " + List(dirs));
  files.clear();
  dirs.clear();
  FileDirWrapper::ListDir(folder / "none", files, dirs, true);
  Answer("folder", "one that is not there", List(files) + " " + List(dirs));
  FileDirWrapper::ListDir(folder / "b.k", files, dirs, true);
  Answer("folder", "a file", List(files) + " " + List(dirs));
}

void AnswerFiles() {
  const TempFolder folder;
  const auto yesNo = [](bool value) { return value ? "yes" : "no"; };
  const std::string plain = folder.Write("plain.k", "x");
  std::string name;
  FileDirWrapper::FileNameOf(FileDirWrapper::ShortPath(plain), name, true);
  Answer("short name", "of a name that is short", name);
  const std::string longer = folder.Write("a long file name.k", "x");
  FileDirWrapper::FileNameOf(FileDirWrapper::ShortPath(longer), name, true);
  Answer("short name", "of a long name", name);
  FileDirWrapper::FileNameOf(FileDirWrapper::ShortPath(folder / "none.k"), name, true);
  Answer("short name", "of a file that is not there", name);
  Answer("file", "exists", yesNo(FileDirWrapper::FileExists(plain)));
  Answer("file", "in other case", yesNo(FileDirWrapper::FileExists(folder / "PLAIN.K")));
  Answer("file", "a folder exists", yesNo(FileDirWrapper::FileExists(folder.Path())));
  Answer("file", "a folder with a separator",
         yesNo(FileDirWrapper::FileExists(folder.Path() + "/")));
  Answer("file", "an empty name", yesNo(FileDirWrapper::FileExists("")));
  Answer("file", "removed twice",
         std::string(yesNo(FileDirWrapper::RemoveFile(longer))) + " " +
             yesNo(FileDirWrapper::RemoveFile(longer)));
  Answer("file", "a folder is removed", yesNo(FileDirWrapper::RemoveFile(folder.Path())));
  Answer("folder", "made with its parents, twice",
         std::string(yesNo(FileDirWrapper::CreateDirTree(folder / "x/y/z"))) + " " +
             yesNo(FileDirWrapper::CreateDirTree(folder / "x/y/z")));
  Answer("folder", "made below a file", yesNo(FileDirWrapper::CreateDirTree(plain + "/y")));
  Answer("folder", "is writable", yesNo(FileDirWrapper::IsDirWritable(folder.Path())));
  Answer("folder", "one that is not there is writable",
         yesNo(FileDirWrapper::IsDirWritable(folder / "none")));
}

}  // namespace

void AnswerCommandLines() {
  for (const char* line : kCommandLines) {
    std::string text;
    for (const std::string& word : SystemArguments(line)) text += "<" + word + ">";
    Answer("command line", line, text);
  }
}

void AnswerPaths() {
  for (const std::string path : kPaths) {
    std::string name, stem, folder, extension, trimmed, quoted;
    const bool hasName = FileDirWrapper::FileNameOf(path, name, true);
    FileDirWrapper::FileNameOf(path, stem, false);
    const bool hasFolder = FileDirWrapper::DirOf(path, folder);
    const bool hasExtension = FileDirWrapper::ExtensionOf(path, extension);
    FileDirWrapper::TrimTrailingSeparator(path, trimmed);
    FileDirWrapper::QuotePath(path, quoted);
    const auto shown = [](bool good, const std::string& text) {
      return (good ? "<" : "no <") + Slashes(text) + "> ";
    };
    Answer("path", path,
           shown(hasName, name) + shown(true, stem) + shown(hasFolder, folder) +
               shown(hasExtension, extension) + shown(true, trimmed) + shown(true, quoted) +
               shown(true, FileDirWrapper::Join(path, "n")));
  }
  AnswerListing();
  AnswerFiles();
}
