#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

#include "support/TempFolder.h"
#include "TestChild.h"
#include "util/FileDirWrapper.h"
#include "util/PTWrapper.h"

namespace {

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
  EXPECT_EQ(process.LastError(), "CreateProcess " + FileDirWrapper::ShortPath(text) + " x y failed");
  EXPECT_FALSE(process.Create("", "kr-no-such-program-anywhere 1", "", false, 0, "", true));
  EXPECT_EQ(process.LastError(), "CreateProcess  kr-no-such-program-anywhere 1 failed");
  EXPECT_FALSE(process.Create("", "", "", false, 0, "", true));
  const std::string endless(200000, 'x');
  EXPECT_FALSE(process.Create(FileDirWrapper::ProgramPath(), endless, "", false, 0, "", true));
  EXPECT_NE(process.LastError().find(endless + " failed"), std::string::npos);
  const std::string nowhere = folder / "no such folder";
  EXPECT_FALSE(process.Create(FileDirWrapper::ProgramPath(), "x", "", false, 0, nowhere, true));
  EXPECT_FALSE(process.IsActive());
}

TEST(Process, TerminatesFromAnotherThreadWhileItIsWaitedFor) {
  PTWrapperProcess process;
  ASSERT_TRUE(StartTestChild(process, "sleep"));
  EXPECT_TRUE(process.IsActive());
  EXPECT_EQ(process.ExitCode(), 259);
  std::thread waiter([&] { process.WaitProc(); });
  std::thread poller([&] {
    while (process.IsActive()) std::this_thread::yield();
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_TRUE(process.Terminate());
  waiter.join();
  poller.join();
  EXPECT_EQ(process.ExitCode(), -1);
}

TEST(Process, ListsExecutablesAndTheirUsers) {
  std::vector<PTWrapperProcessInfo> list;
  PTWrapperProcess process;
  ASSERT_TRUE(PTWrapperProcess::FindRunningProcessName(list));
  const auto own = std::find_if(list.begin(), list.end(), [&](const PTWrapperProcessInfo& entry) {
    return entry.processId == process.ProcessId();
  });
  ASSERT_NE(own, list.end());
  std::string name, user, current;
  FileDirWrapper::FileNameOf(FileDirWrapper::ProgramPath(), name, true);
  EXPECT_EQ(own->exeName, name);
  EXPECT_TRUE(PTWrapperProcess::GetCurrProcessUser(current));
  EXPECT_TRUE(PTWrapperProcess::GetProcessUser(own->processId, user));
  EXPECT_EQ(user, current);
  EXPECT_FALSE(user.empty());
  EXPECT_FALSE(PTWrapperProcess::GetProcessUser(0x7ffffff0, user));
  EXPECT_TRUE(user.empty());
  EXPECT_FALSE(PTWrapperProcess::Terminate(std::string()));
  EXPECT_FALSE(PTWrapperProcess::Terminate("kr-no-such-program-anywhere"));
}

}  // namespace
