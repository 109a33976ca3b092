#include <gtest/gtest.h>

#include <algorithm>

#include "support/TempFolder.h"
#include "TestChild.h"
#include "util/files/FileDirWrapper.h"

namespace {

using Texts = std::vector<std::string>;

std::string Sep(std::string path) {
  std::replace(path.begin(), path.end(), '/', FileDirWrapper::kSeparator);
  return path;
}

std::string Name(const std::string& path, bool withExtension = true) {
  std::string name = path;
  FileDirWrapper::FileNameOf(name, name, withExtension);
  return name;
}

std::string Dir(const std::string& path) {
  std::string dir = path;
  FileDirWrapper::DirOf(dir, dir);
  return dir;
}

std::string Ext(const std::string& path) {
  std::string ext = path;
  FileDirWrapper::ExtensionOf(ext, ext);
  return ext;
}

std::string Trimmed(const std::string& path) {
  std::string out;
  FileDirWrapper::TrimTrailingSeparator(path, out);
  return out;
}

TEST(Paths, PartsOfAPath) {
  EXPECT_EQ(Name(R"(a/b\deck.one.k)"), "deck.one.k");
  EXPECT_EQ(Name(R"(a\b/deck.one.k)", false), "deck.one");
  EXPECT_EQ(Name("folder/"), "");
  EXPECT_EQ(Ext("a.dir/deck"), "");
  EXPECT_EQ(Dir(R"(a/b\c.k)"), Sep("a/b"));
  EXPECT_EQ(Dir("c.k"), "");
  EXPECT_EQ(Dir("/c.k"), Sep("/"));
#ifdef _WIN32
  EXPECT_EQ(Dir("C:/c.k"), "C:\\");
  EXPECT_EQ(Trimmed("C:\\"), "C:\\");
  EXPECT_EQ(Dir("//server/share/c.k"), R"(\\server\share)");
#endif
}

TEST(Paths, TrimAndJoin) {
  EXPECT_EQ(Trimmed("a//"), "a/");
  EXPECT_EQ(Trimmed("/"), "/");
  EXPECT_EQ(FileDirWrapper::Join("a", "b"), Sep("a/b"));
  EXPECT_EQ(FileDirWrapper::Join("", "b"), "b");
  EXPECT_EQ(FileDirWrapper::Join("/", "b"), "/b");
}

TEST(Folders, TreesAreCreatedAndListed) {
  const TempFolder temp;
  {
    const InFolder in(temp.Path());
    EXPECT_TRUE(FileDirWrapper::CreateDirTree(R"(one/two\three/)"));
    EXPECT_TRUE(FileDirWrapper::CreateDirTree("one/two/three"));
    EXPECT_FALSE(FileDirWrapper::CreateDirTree(""));
    EXPECT_TRUE(FileDirWrapper::FileExists("one/two/three"));
  }
  temp.Write("one/a.k", "x");
  EXPECT_FALSE(FileDirWrapper::CreateDirTree(temp / "one/a.k/below"));
  Texts files{"kept"};
  Texts dirs;
  FileDirWrapper::ListDir(temp.Path() + "/one/", files, dirs, false);
  EXPECT_EQ(files, (Texts{"kept", temp / Sep("one/a.k")}));
  EXPECT_EQ(dirs, Texts{temp / Sep("one/two")});
}

TEST(Folders, WritableTestLeavesNothing) {
  const TempFolder temp;
  const std::string crashed = temp.Write("filedirwrapper_tmpfile", "left over by a crash");
  EXPECT_TRUE(FileDirWrapper::IsDirWritable(temp.Path()));
  EXPECT_FALSE(FileDirWrapper::FileExists(crashed));
  EXPECT_FALSE(FileDirWrapper::IsDirWritable(temp / "missing"));
  EXPECT_FALSE(FileDirWrapper::IsDirWritable(""));
}

TEST(Folders, CurrentAndAbsolute) {
  const TempFolder temp;
  FileDirWrapper::CreateDirTree(temp / "in");
  const InFolder in(temp / "in");
  std::string current;
  ASSERT_TRUE(FileDirWrapper::CurrentDir(current));
  EXPECT_EQ(Name(current), "in");
  EXPECT_EQ(FileDirWrapper::AbsolutePath("./a.k"), FileDirWrapper::Join(current, "a.k"));
  EXPECT_EQ(FileDirWrapper::AbsolutePath("../a.k"), FileDirWrapper::Join(Dir(current), "a.k"));
  EXPECT_EQ(FileDirWrapper::AbsolutePath(temp / "x.k"), temp / "x.k");
  EXPECT_EQ(FileDirWrapper::AbsolutePath(""), "");
}

TEST(Files, AreReplacedWhole) {
  const TempFolder temp;
  const std::string path = temp / "settings";
  EXPECT_TRUE(FileDirWrapper::WriteFileWhole(path, "first"));
  const std::string second(3000000, 'x');
  EXPECT_TRUE(FileDirWrapper::WriteFileWhole(path, second));
  EXPECT_EQ(TempFolder::Read(path), second);
  EXPECT_FALSE(FileDirWrapper::WriteFileWhole(temp.Path(), "a folder"));
  EXPECT_FALSE(FileDirWrapper::RemoveFile(temp.Path()));
  EXPECT_FALSE(FileDirWrapper::WriteFileWhole(temp / "missing/file", "x"));

  const std::string from = temp.Write("from", "new");
  EXPECT_TRUE(FileDirWrapper::ReplaceFileWith(from, path));
  EXPECT_EQ(TempFolder::Read(path), "new");
  EXPECT_FALSE(FileDirWrapper::ReplaceFileWith(from, path));
  EXPECT_EQ(TempFolder::Read(path), "new");
  Texts files;
  Texts dirs;
  FileDirWrapper::ListDir(temp.Path(), files, dirs, true);
  EXPECT_EQ(files, Texts{path});
}

TEST(Files, WhatAKilledProcessLeftBesideAFileIsRemoved) {
  const TempFolder temp;
  const std::string path = temp.Write("settings", "");
  PTWrapperProcess alive, killed;
  ASSERT_TRUE(StartTestChild(alive, "sleep"));
  ASSERT_TRUE(StartTestChild(killed, "sleep"));
  const auto leftBy = [&](const PTWrapperProcess& process) {
    return temp.Write(".kr" + std::to_string(process.ProcessId()) + "-3.tmp", "token");
  };
  Texts expected = {path, temp.Write(".kr1x-3.tmp", ""), temp.Write(".kr9-3.tmp.old", ""),
                    leftBy(alive)};
  leftBy(killed);
  killed.Terminate();
  FileDirWrapper::RemoveLeftTempFiles(path);
  alive.Terminate();
  Texts files;
  Texts dirs;
  FileDirWrapper::ListDir(temp.Path(), files, dirs, true);
  std::sort(files.begin(), files.end());
  std::sort(expected.begin(), expected.end());
  EXPECT_EQ(files, expected);
}

}  // namespace
