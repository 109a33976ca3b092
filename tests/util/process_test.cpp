#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <thread>

#include "support/ScopedVariable.h"
#include "support/TempFolder.h"
#include "TestChild.h"
#include "util/files/FileDirWrapper.h"
#include "util/process/ProcessUse.h"
#include "util/process/PTWrapper.h"

namespace {

bool Runs(const std::string& pidFile) {
  const int pid = std::stoi(TempFolder::Read(pidFile));
  std::vector<PTWrapperProcessInfo> list;
  PTWrapperProcess::FindRunningProcessName(list);
  return std::any_of(list.begin(), list.end(),
                     [pid](const PTWrapperProcessInfo& entry) { return entry.processId == pid; });
}

bool IsWritten(const std::string& file) {
  return TempFolder::Read(file).ends_with("\n");
}

// A child, the child's child and that one's, each of which writes its id to this file and its
// depth.
bool StartTree(PTWrapperProcess& process, const std::string& pid) {
  return StartTestChild(process, "tree 2 " + pid) && WaitUntil([&] {
           return IsWritten(pid + "0") && IsWritten(pid + "1") && IsWritten(pid + "2") &&
                  Runs(pid + "0") && Runs(pid + "1") && Runs(pid + "2");
         });
}
bool TreeHasEnded(const std::string& pid) {
  return WaitUntil([&] { return !Runs(pid + "0") && !Runs(pid + "1") && !Runs(pid + "2"); });
}

TEST(Process, ReportsTheExitCodeAndStaysHeldUntilTerminated) {
  PTWrapperProcess process;
  EXPECT_EQ(process.ExitCode(), -1);
  EXPECT_FALSE(process.WaitProc());
  EXPECT_EQ(process.LastError(), "the process is not opened");
  ASSERT_TRUE(StartTestChild(process, "exit 7")) << process.LastError();
  EXPECT_GT(process.ChildId(), 0);
  EXPECT_NE(process.ChildId(), process.ProcessId());
  EXPECT_TRUE(process.WaitProc());
  EXPECT_FALSE(process.IsActive());
  EXPECT_EQ(process.ExitCode(), 7);

  EXPECT_FALSE(StartTestChild(process, "exit 0"));
  EXPECT_EQ(process.LastError(), "the process is opened");
  EXPECT_TRUE(process.Terminate());
  EXPECT_EQ(process.ChildId(), 0);
  EXPECT_TRUE(process.Terminate());
  EXPECT_TRUE(StartTestChild(process, "exit 0"));
}

TEST(Process, RefusesWhatCannotBeStarted) {
  const TempFolder folder;
  PTWrapperProcess process;
  const std::string missing = folder / "no such program";
  EXPECT_FALSE(process.Create(missing, "x", "", false, 0, "", true));
  EXPECT_EQ(process.LastError(), missing + " does not exist");
  const std::string text = folder.Write("text.bin", "not a program");
  EXPECT_FALSE(process.Create(text, "x y", "", false, 0, "", true));
  EXPECT_EQ(process.LastError(),
            "CreateProcess " + FileDirWrapper::ShortPath(text) + " x y failed");
  const std::string endless(200000, 'x');
  EXPECT_FALSE(process.Create(FileDirWrapper::ProgramPath(), endless, "", false, 0, "", true));
  EXPECT_NE(process.LastError().find(endless + " failed"), std::string::npos);
}

TEST(Process, FolderAndVariablesAreTheChildsAlone) {
  const TempFolder folder;
  const InFolder back(folder.Path());
  const ScopedVariable word("KR_WORD", "ours");
  const std::string seen = folder / "seen";
  FileDirWrapper::CreateDirTree(folder / "job");
  PTWrapperProcessStart start = TestChildStart("look " + seen);
  start.folder = "job";
  start.variables.insert(start.variables.end(), {{"KR_EMPTY", ""}, {"KR_WORD", "its"}});
  PTWrapperProcess process;
  ASSERT_TRUE(process.Create(start)) << process.LastError();
  EXPECT_TRUE(process.WaitProc());
  EXPECT_EQ(ReadLines(seen), (std::vector<std::string>{folder / "job", "its", ""}));
  EXPECT_STREQ(std::getenv("KR_WORD"), "ours");
  std::string current;
  FileDirWrapper::CurrentDir(current);
  EXPECT_EQ(current, folder.Path());
}

TEST(Process, TerminatesFromAnotherThreadWhileItIsWaitedFor) {
  PTWrapperProcess process;
  ASSERT_TRUE(StartTestChild(process, "sleep"));
  EXPECT_TRUE(process.IsActive());
  EXPECT_EQ(process.ExitCode(), 259);
  std::atomic<bool> waits{false};
  std::atomic<int> looks{0};
  std::thread waiter([&] {
    waits = true;
    process.WaitProc();
  });
  std::thread poller([&] {
    for (; process.IsActive(); ++looks) std::this_thread::yield();
  });
  EXPECT_TRUE(WaitUntil([&] { return waits && looks > 100; }));
  EXPECT_TRUE(process.Terminate());
  waiter.join();
  poller.join();
  EXPECT_EQ(process.ExitCode(), -1);
}

TEST(Process, AnAbortEndsEverythingThatWasStarted) {
  const TempFolder folder;
  const std::string pid = folder / "pid";
  PTWrapperProcess process;
  ASSERT_TRUE(StartTree(process, pid));
  EXPECT_TRUE(process.Terminate());
  EXPECT_TRUE(TreeHasEnded(pid));

  ASSERT_TRUE(StartTestChild(process, "leave " + (folder / "left")));
  EXPECT_TRUE(process.WaitProc());
  EXPECT_EQ(process.ExitCode(), 0);
  ASSERT_TRUE(WaitUntil([&] { return IsWritten(folder / "left0"); }));
  EXPECT_TRUE(Runs(folder / "left0"));
  EXPECT_TRUE(process.TerminateAll());
  EXPECT_TRUE(WaitUntil([&] { return !Runs(folder / "left0"); }));
}

TEST(Process, WhatAnotherStartedIsOpenedAndEndedAsAWhole) {
  const TempFolder folder;
  const std::string pid = folder / "pid";
  ProcessIdentity child;
  std::string token;
  {
    PTWrapperProcess starter;
    ASSERT_TRUE(StartTree(starter, pid));
    child = IdentityOfProcess(starter.ChildId());
    const auto uses = UseOfTrees({child, {1, "first"}, {child.id, child.mark + "1"}});
    ASSERT_TRUE(uses.size() == 3 && uses[0]);
    EXPECT_GE(uses[0]->processes, 3);
    EXPECT_GT(uses[0]->memory, std::uint64_t{100000} * 3);
    EXPECT_LT(uses[0]->processorSeconds, 60);
    EXPECT_FALSE(uses[1] || uses[2]);
    token = starter.Token();
  }
  PTWrapperProcess process;
  EXPECT_FALSE(process.Open({child.id, child.mark + "1"}, token)) << "another has its id now";
  EXPECT_EQ(process.LastError(), "process " + std::to_string(child.id) + " does not run");
  ASSERT_TRUE(process.Open(child, token)) << process.LastError();
  EXPECT_EQ(process.ChildId(), child.id);
  EXPECT_EQ(process.Token(), token);
  EXPECT_EQ(process.ExitCode(), 259);
  EXPECT_FALSE(StartTestChild(process, "exit 0")) << "one at a time";
  PTWrapperProcess watcher;
  ASSERT_TRUE(watcher.Open(child.id));
  EXPECT_TRUE(process.Terminate());
  EXPECT_TRUE(TreeHasEnded(pid));
  EXPECT_TRUE(watcher.WaitProc());
  EXPECT_FALSE(watcher.IsActive());
  EXPECT_FALSE(process.Open(child, token));
}

TEST(Process, ManyRunsLeaveNothingOpen) {
#ifdef _WIN32
  constexpr int kKept = 1;  // of each run: the child's own handle keeps its id from being reused
#else
  constexpr int kKept = 0;
#endif
#if defined(_WIN32) || defined(KR_ADDRESS_SANITIZER) || defined(KR_THREAD_SANITIZER)
  constexpr int kRuns = 200;  // a start takes a fifth of a second under Wine
#else
  constexpr int kRuns = 1000;
#endif
  PTWrapperProcess process;
  const auto run = [&] {
    return StartTestChild(process, "exit 0") && process.WaitProc() && process.Terminate();
  };
  ASSERT_TRUE(run());
  const int before = OpenHandles();
  for (int i = 0; i < kRuns; ++i) ASSERT_TRUE(run()) << i;
  EXPECT_LE(OpenHandles() - before, kRuns * kKept);
}

}  // namespace
