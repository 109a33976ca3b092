// Links, rights and the user's folders.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support/ScopedVariable.h"
#include "support/TempFolder.h"
#include "util/files/FileDirWrapper.h"
#include "util/files/IOWrapper.h"

namespace {

using Texts = std::vector<std::string>;

mode_t ModeOf(const std::string& path) {
  struct stat info {};
  return stat(path.c_str(), &info) == 0 ? info.st_mode & 07777 : 0;
}

TEST(FoldersOnLinux, BackslashesInRealNamesStay) {
  const TempFolder temp;
  const std::string odd = temp.Write("a\\b", "odd");
  FileDirWrapper::CreateDirTree(temp / "a");
  temp.Write("a/b", "other");
  EXPECT_TRUE(FileDirWrapper::RemoveFile(odd));
  EXPECT_TRUE(FileDirWrapper::FileExists(temp / "a/b"));

  std::filesystem::create_directory(temp / "o\\d");
  std::filesystem::create_directory(temp / "o\\d/end\\");
  const std::string deck = temp.Write("o\\d/end\\/d.k", "");
  std::string folder;
  std::string name;
  FileDirWrapper::DirOf(deck, folder);
  EXPECT_EQ(folder, temp / "o\\d/end\\");
  EXPECT_EQ(FileDirWrapper::Join(folder, "d.k"), deck);
  FileDirWrapper::FileNameOf(deck, name, true);
  EXPECT_EQ(name, "d.k");
  Texts files;
  Texts dirs;
  FileDirWrapper::ListDir(folder, files, dirs, false);
  EXPECT_EQ(files, Texts{deck});
  EXPECT_TRUE(FileDirWrapper::CreateDirTree(temp / "o\\d/new\\tree"));
  EXPECT_TRUE(FileDirWrapper::IsFolder(temp / "o\\d/new/tree"));
}

TEST(FoldersOnLinux, UserFolders) {
  const TempFolder temp;
  const ScopedVariable home("HOME", temp.Path());
  std::string dir;
  {
    const ScopedVariable config("XDG_CONFIG_HOME", std::nullopt);
    FileDirWrapper::AppDataDir(dir);
    EXPECT_EQ(dir, temp / ".config");
  }
  const ScopedVariable config("XDG_CONFIG_HOME", temp / "conf/");
  FileDirWrapper::CreateDirTree(temp / "conf");
  temp.Write("conf/user-dirs.dirs",
             "# XDG_DOCUMENTS_DIR=\"/no\"\nXDG_DOCUMENTS_DIR=\"$HOME/My \\\"Papers\\\"/\"\n"
             "XDG_DOCUMENTS_DIR=\"relative\"\n");
  FileDirWrapper::DocumentsDir(dir);
  EXPECT_EQ(dir, temp / "My \"Papers\"");
}

TEST(FoldersOnLinux, WritableTestFollowsNoLinkAndGoesAroundOne) {
  const TempFolder temp;
  const std::string victim = temp.Write("victim", "precious");
  FileDirWrapper::CreateDirTree(temp / "shared");
  ASSERT_EQ(symlink(victim.c_str(), (temp / "shared/filedirwrapper_tmpfile").c_str()), 0);
  EXPECT_TRUE(FileDirWrapper::IsDirWritable(temp / "shared"));
  EXPECT_EQ(TempFolder::Read(victim), "precious");
  Texts files;
  Texts dirs;
  FileDirWrapper::ListDir(temp / "shared", files, dirs, false);
  EXPECT_EQ(files.size(), 1U) << "only the link";
}

TEST(FilesOnLinux, ReplacingKeepsRightsAndLinks) {
  const TempFolder temp;
  const std::string path = temp.Write("real", "old");
  chmod(path.c_str(), 0640);
  FileDirWrapper::CreateDirTree(temp / "links");
  const std::string link = temp / "links/link";
  ASSERT_EQ(symlink("../real", link.c_str()), 0);
  EXPECT_TRUE(FileDirWrapper::WriteFileWhole(link, "new"));
  EXPECT_EQ(TempFolder::Read(path), "new");
  EXPECT_EQ(ModeOf(path), 0640u);
  EXPECT_TRUE(std::filesystem::is_symlink(link));
  const std::string output = temp / "output";
  ASSERT_EQ(symlink("real", output.c_str()), 0);
  EXPECT_TRUE(FileDirWrapper::WriteOutputFile(output, "whole"));
  EXPECT_EQ(TempFolder::Read(output), "whole");
  EXPECT_FALSE(std::filesystem::is_symlink(output));
  EXPECT_EQ(TempFolder::Read(path), "new");

  // A link to a file that is still missing, and one to itself.
  FileDirWrapper::RemoveFile(path);
  EXPECT_TRUE(FileDirWrapper::WriteFileWhole(link, "made"));
  EXPECT_EQ(TempFolder::Read(path), "made");
  ASSERT_EQ(symlink("self", (temp / "self").c_str()), 0);
  EXPECT_FALSE(FileDirWrapper::WriteFileWhole(temp / "self", "x"));
}

TEST(FilesOnLinux, WorkingCopiesAreForThisUserAlone) {
  const TempFolder temp;
  const std::string victim = temp.Write("victim", "precious");
  const std::string copy = temp / "settings.new";
  ASSERT_EQ(symlink(victim.c_str(), copy.c_str()), 0);
  EXPECT_TRUE(FileDirWrapper::WritePrivateFile(copy, "[A]\n"));
  IOWrapperIni().WriteValToIni("A", "k", "v", copy);
  EXPECT_EQ(ModeOf(copy), 0600u);
  EXPECT_EQ(TempFolder::Read(copy), "[A]\nk=v\n");
  EXPECT_EQ(TempFolder::Read(victim), "precious");
}

}  // namespace
