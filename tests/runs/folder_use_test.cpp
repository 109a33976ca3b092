// Who may run in a folder.
#include "runs/FolderUse.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "support/TempFolder.h"
#include "util/files/FileLock.h"
#include "util/process/ProcessIdentity.h"
#include "util/process/PTWrapper.h"

namespace {

using Kind = FolderHolder::Kind;

TEST(FolderUse, OneJobOfThisProgramByWhateverPath) {
  const TempFolder folder;
  std::filesystem::create_directory(folder / "a");
  std::filesystem::create_directory(folder / "b");
  FolderUse first("first.k"), second("second.k");
  EXPECT_EQ(first.Take({folder / "a", folder / "a/../a", folder / "none"}).kind, Kind::kNobody);
  const FolderHolder holder = second.Take({folder / "b", folder / "b/../a"});
  EXPECT_EQ(holder.kind, Kind::kJob);
  EXPECT_EQ(holder.job, "first.k");
  FolderUse third("third.k");
  EXPECT_EQ(third.Take({folder / "b"}).kind, Kind::kNobody) << "who waits holds nothing";
  first.Release();
  third.Release();
  EXPECT_EQ(second.Take({folder / "b", folder / "a"}).kind, Kind::kNobody);
  second.Release();
  EXPECT_TRUE(std::filesystem::is_empty(folder / "a")) << "nothing is left behind";
}

TEST(FolderUse, AnotherProgramIsRespectedAndOneThatDiedIsNot) {
  const TempFolder folder;
  FolderUse mine("mine.k");
  FileLock other;
  ASSERT_EQ(other.Take(folder / ".kr_running.lock", 0), FileLock::Result::kTaken);
  EXPECT_EQ(mine.Take({folder.Path()}).kind, Kind::kOtherProgram);
  other.Release();
  folder.Write(".kr_running.lock", "");
  EXPECT_EQ(mine.Take({folder.Path()}).kind, Kind::kNobody);
}

TEST(FolderUse, ASolverThatOutlivedItsProgramIsKnown) {
  const TempFolder folder;
  PTWrapperProcess solver;
  const std::int32_t living = solver.ProcessId();
  ASSERT_TRUE(solver.Open(living));
  {
    FolderUse mine("mine.k");
    ASSERT_EQ(mine.Take({folder.Path()}).kind, Kind::kNobody);
    mine.NoteSolver(folder.Path(), solver);
    std::filesystem::copy_file(folder / ".kr_running.txt", folder / "copy");
  }
  FolderUse next("next.k");
  EXPECT_EQ(next.Take({folder.Path()}).kind, Kind::kNobody) << "the end of a run takes it away";
  next.Release();

  std::filesystem::rename(folder / "copy", folder / ".kr_running.txt");
  const FolderHolder holder = next.Take({folder.Path()});
  EXPECT_EQ(holder.kind, Kind::kSolver);
  EXPECT_EQ(holder.job, "mine.k");
  EXPECT_EQ(holder.processId, living);

  const std::string id = std::to_string(living);
  const std::string mark = IdentityOfProcess(living).mark;
  folder.Write(".kr_running.txt", "before\n" + id + "\n" + mark + "\nx.k\n");
  EXPECT_EQ(next.Take({folder.Path()}).kind, Kind::kSolver) << "the machine has been renamed";

  // The same id now belongs to another process, or to one of another machine; or it is no such
  // text.
  for (const std::string& text :
       {MachineName() + "\n" + id + "\n" + mark + "1\nx.k\n",
        "else\n" + id + "\n" + mark + "1\nx.k\n", MachineName() + "\n0\n\nx.k\n",
        std::string(100000, '\n'), std::string("\0\xff", 2)}) {
    folder.Write(".kr_running.txt", text);
    EXPECT_EQ(next.Take({folder.Path()}).kind, Kind::kNobody);
    const bool isOurs = text.starts_with(MachineName() + "\n");
    EXPECT_EQ(std::filesystem::exists(folder / ".kr_running.txt"), !isOurs) << "of a dead solver";
    next.Release();
  }
}

}  // namespace
