// What a running solver is asked for through a file in its folder.
#include "core/SenseSwitch.h"

#include "GroupFixture.h"
#include "progress/RunFiles.h"
#include "progress/RunProgress.h"

namespace {

class SwitchTest : public GroupTest {
 protected:
  // A job that runs, in a folder of its own.
  std::string Run(const std::string& command) {
    auto job = Job("job", command);
    folder_ = job->Folder();
    Group()->AddJob(job);
    EXPECT_TRUE(Group()->Submit());
    EXPECT_TRUE(WaitUntil([&] { return Exists("glstat"); }));
    return folder_;
  }
  bool Exists(const std::string& name) const {
    return std::filesystem::exists(folder_ + "/" + name);
  }
  bool IsTaken() const {
    return WaitUntil([&] { return !Exists("d3kil"); });
  }
  std::string Messages() const { return TempFolder::Read(folder_ + "/messag"); }

  std::string folder_;
};

TEST_F(SwitchTest, TheSolverTakesEachAndGoesOnToTheNewEnd) {
  Run("run 60");
  ASSERT_TRUE(AskSolver(folder_, SolverSwitch::kTellTime));
  EXPECT_TRUE(IsTaken());
  EXPECT_NE(Messages().find("time step information"), std::string::npos);
  ASSERT_TRUE(AskSolver(folder_, SolverSwitch::kDump));
  EXPECT_TRUE(IsTaken());
  EXPECT_TRUE(Exists("d3dump01"));
  const std::string plot = folder_ + "/d3plot01";
  ASSERT_TRUE(AskSolver(folder_, SolverSwitch::kPlotState));
  EXPECT_TRUE(IsTaken());
  EXPECT_EQ(Status(*Group(), 0), JobStatus::kRunning);

  // Soon after what it has reached.
  RunProgress progress(FindRunFiles(folder_));
  progress.Look();
  const RunNews before = progress.News();
  ASSERT_TRUE(before.time && before.endTime);
  ASSERT_TRUE(AskSolver(folder_, SolverSwitch::kEndTime, *before.time + 0.01 * *before.endTime));
  EXPECT_TRUE(WaitForEnd(*Group()));
  EXPECT_EQ(Status(*Group(), 0), JobStatus::kFinished);
  RunProgress after(FindRunFiles(folder_));
  after.Look();
  EXPECT_LT(*after.News().endTime, *before.endTime);
  EXPECT_EQ(after.News().ended, RunEnd::kNormal) << "it has reached its end time";
}

TEST_F(SwitchTest, WhatNobodyTookGoesWithTheEndOfTheRun) {
  Run("run 1\n$ standin: hang");
  // Once it hangs it looks for nothing any more.
  int looks = 0;
  EXPECT_TRUE(WaitUntil([&] {
    if (!Exists("d3kil")) looks = AskSolver(folder_, SolverSwitch::kTellTime) ? 0 : -1;
    return ++looks > 30;
  }));
  EXPECT_TRUE(Group()->Stop());
  EXPECT_FALSE(Exists("d3kil"));

  WithdrawSwitch(folder_);
  home_.Write("job/d3kil", "sw9");
  WithdrawSwitch(folder_);
  EXPECT_TRUE(Exists("d3kil")) << "it is somebody else's";
  std::filesystem::create_directory(home_ / "other");
  ASSERT_TRUE(AskSolver(home_ / "other", SolverSwitch::kStop));
  EXPECT_EQ(TempFolder::Read(home_ / "other/d3kil"), "sw1");
  WithdrawSwitch(home_ / "other");
  EXPECT_FALSE(std::filesystem::exists(home_ / "other/d3kil"));
  EXPECT_FALSE(AskSolver(home_ / "none", SolverSwitch::kStop));
}

}  // namespace
