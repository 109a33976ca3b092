// What a running solver is asked for through a file in its folder.
#include "core/SenseSwitch.h"

#include "GroupFixture.h"
#include "progress/RunCases.h"
#include "progress/RunFiles.h"
#include "progress/RunProgress.h"
#include "solvers/PostResult.h"

namespace {

class SwitchTest : public GroupTest {
 protected:
  // A job that runs, in a folder of its own.
  std::string Run(const std::string& command) {
    auto job = Job("job", command);
    folder_ = job->Folder();
    job_ = job.get();
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

  bool Ask(SolverSwitch what, double endTime = 0) const {
    return AskSolver(folder_, SwitchRunOf(folder_, job_->id), what, endTime);
  }

  std::string folder_;
  const JobFile* job_ = nullptr;
};

TEST_F(SwitchTest, TheSolverTakesEachAndGoesOnToTheNewEnd) {
  Run("run 60");
  ASSERT_TRUE(Ask(SolverSwitch::kTellTime));
  EXPECT_TRUE(IsTaken());
  EXPECT_NE(Messages().find("time step information"), std::string::npos);
  ASSERT_TRUE(Ask(SolverSwitch::kDump));
  EXPECT_TRUE(IsTaken());
  EXPECT_TRUE(Exists("d3dump01"));
  const std::string plot = folder_ + "/d3plot01";
  ASSERT_TRUE(Ask(SolverSwitch::kPlotState));
  EXPECT_TRUE(IsTaken());
  EXPECT_EQ(Status(*Group(), 0), JobStatus::kRunning);

  // Soon after what it has reached.
  RunProgress progress(FindRunFiles(folder_));
  progress.Look();
  const RunNews before = progress.News();
  ASSERT_TRUE(before.time && before.endTime);
  ASSERT_TRUE(Ask(SolverSwitch::kEndTime, *before.time + 0.01 * *before.endTime));
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
    if (!Exists("d3kil")) looks = Ask(SolverSwitch::kTellTime) ? 0 : -1;
    return ++looks > 30;
  }));
  const SwitchRun run = SwitchRunOf(folder_, job_->id);
  EXPECT_TRUE(Group()->Stop());
  EXPECT_FALSE(Exists("d3kil"));
  EXPECT_FALSE(AskSolver(folder_, run, SolverSwitch::kStop)) << "that run has ended";
  EXPECT_FALSE(Exists("d3kil"));
}

// However the solver calls the files of a case, the run is followed, asked and judged by them.
TEST_F(SwitchTest, ARunWithCasesIsAskedInTheCaseThatRuns) {
  struct Row {
    const char* options;
    const char* order;
    const char* prefix;
  };
  for (const Row& row : {Row{"", "", "CASE2."}, Row{"jobid=bar", "", "bar.CASE2."},
                         Row{"jobid=bar", "$ standin: case-names first\n", "CASE2.bar."},
                         Row{"jobid=bar", "$ standin: case-names alone\n", "CASE2."}}) {
    const std::string prefix = row.prefix;
    SCOPED_TRACE(prefix + row.order);
    auto job = Job("cases");
    job->extraOptions = row.options;
    job->caseRun = true;
    home_.Write("cases/deck.k", std::string("*KEYWORD\n") + row.order +
                                    "*CONTROL_TERMINATION\n1.0\n*CASE_BEGIN_1\n*CASE_END_1\n"
                                    "*CASE_BEGIN_2\n$ standin: run 60\n*CASE_END_2\n"
                                    "*CASE_BEGIN_3\n*CASE_END_3\n");
    folder_ = job->Folder();
    job_ = job.get();
    Group()->AddJob(job);
    ASSERT_TRUE(Group()->Submit());
    ASSERT_TRUE(WaitUntil([&] { return Exists(prefix + "glstat"); }));
    RunCases run;
    run.TakeFiles(FindCaseFiles(folder_, CasesBy::kName, {}, OutputNamesOf(*job)));
    run.Look();
    EXPECT_EQ(run.News().caseNumber, 2);
    const SwitchRun now = SwitchRunOf(folder_, job->id);
    ASSERT_TRUE(AskSolver(folder_, now, SolverSwitch::kStop));
    EXPECT_TRUE(WaitForEnd(*Group()));
    EXPECT_EQ(Status(*Group(), 0), JobStatus::kFinished);
    EXPECT_NE(TempFolder::Read(folder_ + "/" + prefix + "messag.krb").find("sense switch 1"),
              std::string::npos);
    for (const auto& entry : std::filesystem::directory_iterator(folder_))
      EXPECT_FALSE(entry.path().string().ends_with("d3kil")) << entry.path();
    std::string first = prefix;
    first.replace(first.find("CASE2"), 5, "CASE1");
    EXPECT_EQ(PostResults(PostSourceOf(*job)).front(),
              FileDirWrapper::Join(folder_, first + "d3plot"));
    Group()->RemoveJob(job->id);
    std::filesystem::remove_all(folder_);
  }
}

// In a folder in which one run follows another.
TEST_F(SwitchTest, ARequestIsForOneRunAlone) {
  constexpr auto kJob = static_cast<JobId>(7);
  std::filesystem::create_directory(home_ / "job");
  folder_ = home_ / "job";
  home_.Write("job/d3kil", "sw1");  // of a session that was cut off
  BeginSwitches(folder_, kJob, true);
  EXPECT_FALSE(Exists("d3kil"));
  const SwitchRun first = SwitchRunOf(folder_, kJob);
  EXPECT_EQ(SwitchRunOf(folder_, static_cast<JobId>(8)), SwitchRun::kNone);
  ASSERT_TRUE(AskSolver(folder_, first, SolverSwitch::kStop));
  EXPECT_EQ(TempFolder::Read(folder_ + "/d3kil"), "sw1");
  BeginSwitches(folder_, kJob, false);  // its process has a number now
  EXPECT_EQ(SwitchRunOf(folder_, kJob), first);
  EXPECT_EQ(RequestIn(folder_, first)->text, "sw1");
  EXPECT_TRUE(WithdrawSwitch(folder_, first, "sw1"));
  EXPECT_FALSE(WithdrawSwitch(folder_, first, "sw1")) << "it is gone";
  EXPECT_FALSE(Exists("d3kil"));

  BeginSwitches(folder_, kJob, true);
  EXPECT_FALSE(AskSolver(folder_, first, SolverSwitch::kStop));
  home_.Write("job/d3kil", "sw9");
  const SwitchRun second = SwitchRunOf(folder_, kJob);
  EXPECT_FALSE(WithdrawSwitch(folder_, second, "sw1")) << "another request than was seen";
  const std::optional<LyingRequest> lies = RequestIn(folder_, second);
  ASSERT_TRUE(lies);
  EXPECT_EQ(lies->text, "sw9");
  EXPECT_GT(lies->since, 1'700'000'000);
  EndSwitches(folder_);
  BeginSwitches(folder_, kJob, true);
  EXPECT_TRUE(Exists("d3kil")) << "it is somebody else's";
  EndSwitches(folder_);
}

}  // namespace
