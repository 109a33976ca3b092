// Groups that run jobs: real solver processes.
#include <sstream>

#include "core/JobTimeLeft.h"
#include "GroupFixture.h"

namespace {

using std::chrono::seconds;
using Clock = std::chrono::steady_clock;

class GroupRun : public GroupTest {
 protected:
  std::string StatusNote(int index, int status, int group = 0) const {
    return "status " + std::to_string(Group(group)->Id()) + " " +
           RecordingObserver::Text(Id(index, group)) + " " + std::to_string(status);
  }

  std::vector<std::string> StatusNotes() const {
    std::vector<std::string> notes = seen_.Notes();
    std::erase_if(notes, [](const std::string& note) { return !note.starts_with("status"); });
    return notes;
  }

  // Without the times.
  std::string LogLines() {
    std::istringstream log(TempFolder::Read(files_.Log().Path()));
    std::string lines;
    for (std::string line; std::getline(log, line);) {
      if (line.ends_with('\r')) line.pop_back();
      lines += line.substr(line.find(">> ") + 3) + "\n";
    }
    return lines;
  }

  std::shared_ptr<JobFileDyna> Add(const std::string& name, const std::string& command = {},
                                   int pause = 0) {
    auto job = Job(name, command);
    job->pause = pause;
    Group()->AddJob(job);
    return job;
  }
  void RunToTheEnd() {
    ASSERT_TRUE(Group()->Submit());
    ASSERT_TRUE(WaitForEnd(*Group()));
  }
  // Until it waits in its pause.
  std::shared_ptr<JobFileDyna> AddPaused() {
    auto job = Add("paused", "", 1000);
    Add("next");
    EXPECT_TRUE(Group()->Submit());
    EXPECT_TRUE(WaitForStatus(*Group(), 0, JobStatus::kWaiting));
    return job;
  }
  // Until its solver writes.
  std::shared_ptr<JobFileDyna> StartHanging() {
    auto job = Add("hangs", "hang");
    EXPECT_TRUE(Group()->Submit());
    EXPECT_TRUE(WaitUntil([&] { return std::filesystem::exists(job->Folder() + "/messag"); }));
    return job;
  }
};

TEST_F(GroupRun, TakesTheJobsInOrderAndJudgesEach) {
  Add("good");
  Add("bad", "fail");
  Add("missing")->jobFile += ".gone";
  RunToTheEnd();
  EXPECT_EQ(StatusNotes(),
            (std::vector<std::string>{StatusNote(0, 1), StatusNote(0, 2), StatusNote(0, 3),
                                      StatusNote(1, 1), StatusNote(1, 2), StatusNote(1, 4),
                                      StatusNote(2, 1), StatusNote(2, 2), StatusNote(2, 4)}));
  EXPECT_NE(manager_->runErrorCode, 0);
  EXPECT_EQ(JobIn(*Group(), Id(0))->process.ExitCode(), -1);  // thousands of them may have ended
  EXPECT_TRUE(WaitUntil([&] { return seen_.Count("run " + std::to_string(Group()->Id())) == 2; }));

  ASSERT_TRUE(Group()->Resubmit(Id(0)));
  RunToTheEnd();
  EXPECT_EQ(Status(*Group(), 0), JobStatus::kFinished);
  EXPECT_EQ(Status(*Group(), 1), JobStatus::kAborted);
}

TEST_F(GroupRun, ASecondSubmitStartsNothing) {
  Add("a", "run 1");
  ASSERT_TRUE(Group()->Submit());
  EXPECT_FALSE(Group()->Submit());
  EXPECT_EQ(Group()->LastError(), "Running work thread is found, submit job failed");
  EXPECT_TRUE(LogHolds(files_, "Running work thread is found, submit job failed"));
  ASSERT_TRUE(WaitForEnd(*Group()));
  EXPECT_EQ(seen_.Count(StatusNote(0, 2)), 1);
}

TEST_F(GroupRun, WhenItEndsIsToldByWhatHasFinishedWhereNoDeckHasRunBefore) {
  const PastRunOf none = [](const JobFile&) { return std::nullopt; };
  const auto left = [&] { return GroupTimeLeft(*Group(), manager_->Watch(), none).value_or(-1); };
  const auto addEnded = [&](const std::string& name, JobStatus status, int took) {
    const auto job = Job(name);
    job->status = status;
    job->started = 1000;
    job->ended = 1000 + took;
    Group()->AddJob(job);
  };
  addEnded("failed", JobStatus::kAborted, 9000);
  for (const int took : {50, 100}) addEnded("a", JobStatus::kFinished, took);
  Add("running", "run 60");
  Add("next");
  EXPECT_EQ(left(), -1) << "it does not run";
  ASSERT_TRUE(Group()->Submit());
  ASSERT_TRUE(WaitUntil([&] { return Status(*Group(), 3) == JobStatus::kRunning; }));
  EXPECT_EQ(left(), -1) << "two tell too little";
  addEnded("b", JobStatus::kFinished, 150);
  EXPECT_NEAR(left(), 200, 20);
  EXPECT_TRUE(Group()->Stop());
}

TEST_F(GroupRun, FailuresInARowForOneReasonPauseItUntilItIsSubmittedAgain) {
  files_.Set(&Settings::stop_after_failures, 3);
  Add("other", "fail");
  for (int i = 0; i < 6; ++i) Add("licence" + std::to_string(i), "no-licence");
  RunToTheEnd();
  EXPECT_EQ(Group()->Paused(), (GroupPause{3, Message(MessageId::kFailedLicence)}));
  EXPECT_EQ(Status(*Group(), 3), JobStatus::kAborted);
  EXPECT_EQ(Status(*Group(), 4), JobStatus::kQueued);
  EXPECT_TRUE(LogHolds(files_,
                       "Group [Group1] pauses: 3 jobs in a row failed within a minute each: no "
                       "licence. 3 jobs stay Queued"));
  RunToTheEnd();
  EXPECT_EQ(Group()->Paused(), (GroupPause{4, Message(MessageId::kFailedLicence)}));
  EXPECT_EQ(Status(*Group(), 5), JobStatus::kQueued) << "what is away still costs one job";
  // With nothing left to go on with it has simply ended.
  RunToTheEnd();
  RunToTheEnd();
  EXPECT_FALSE(Group()->Paused());

  files_.SetSolverPath(SolverKind::kLsDynaSingle, home_ / "gone");
  files_.Set(&Settings::stop_after_failures, 0);
  for (int i = 0; i < 4; ++i) Add("missing" + std::to_string(i));
  RunToTheEnd();
  EXPECT_FALSE(Group()->Paused());
  files_.Set(&Settings::stop_after_failures, 2);
  for (int i = 7; i < 11; ++i) ASSERT_TRUE(Group()->Resubmit(Id(i)));
  RunToTheEnd();
  ASSERT_TRUE(Group()->Paused());
  EXPECT_EQ(Group()->Paused()->reason,
            Message(MessageId::kSolverMissing, std::string(home_ / "gone")));
  EXPECT_EQ(Status(*Group(), 9), JobStatus::kQueued);
}

// After a crash it is all that there is.
TEST_F(GroupRun, TheLogTellsWhatBecameOfEachJob) {
  const auto first = Add("first", "run 60"), second = Job("second");
  second->jobFile.swap(second->restartFile);
  ASSERT_TRUE(Group()->Submit());
  ASSERT_TRUE(WaitUntil([&] { return LogLines().find(" as process ") != std::string::npos; }));
  Group()->AddJob(second);
  std::string expected = "Job [" + first->jobFile + "] submitted in group [Group1]\nJob [" +
                         first->jobFile + "] started as process " +
                         std::to_string(first->process.ChildId()) + "\nJob [" +
                         second->restartFile + "] submitted in group [Group1]\n";
  EXPECT_EQ(LogLines(), expected);
  EXPECT_TRUE(Group()->Stop());
  expected += "Job [" + first->jobFile + "] ended: Aborted\n";
  EXPECT_EQ(LogLines(), expected);
}

TEST_F(GroupRun, AnEmptyGroupEndsAtOnceAndCanBeSubmittedAgain) {
  for (int i = 0; i < 20; ++i) RunToTheEnd();
  EXPECT_TRUE(StatusNotes().empty());
}

TEST_F(GroupRun, StopInThePauseAbortsWithoutASolver) {
  const auto job = AddPaused();
  EXPECT_TRUE(manager_->IsAnyJobActive());
  const auto begin = Clock::now();
  EXPECT_TRUE(Group()->Stop());
  EXPECT_LT(Clock::now() - begin, seconds(30));
  EXPECT_EQ(Status(*Group(), 0), JobStatus::kAborted);
  EXPECT_EQ(Status(*Group(), 1), JobStatus::kQueued);
  EXPECT_FALSE(std::filesystem::exists(job->Folder() + "/messag"));
  EXPECT_FALSE(manager_->IsAnyJobActive());

  job->pause = 0;
  ASSERT_TRUE(Group()->Resubmit(Id(0)));
  RunToTheEnd();
  EXPECT_EQ(Status(*Group(), 0), JobStatus::kFinished);
  EXPECT_EQ(Status(*Group(), 1), JobStatus::kFinished);
}

TEST_F(GroupRun, AJobRemovedInThePauseIsNotRun) {
  const auto removed = AddPaused();
  ASSERT_TRUE(Group()->RemoveJob(Id(0)));
  ASSERT_TRUE(WaitForEnd(*Group()));
  EXPECT_EQ(Status(*Group(), 0), JobStatus::kFinished);
  EXPECT_FALSE(std::filesystem::exists(removed->Folder() + "/messag"));
}

TEST_F(GroupRun, ARemovedRunningJobLosesItsSolverAndTheNextGoesOn) {
  const auto removed = StartHanging();
  Add("next");
  const auto kept = Group()->RemoveJobs({Id(0)});
  ASSERT_TRUE(WaitForEnd(*Group()));
  EXPECT_EQ(Status(*Group(), 0), JobStatus::kFinished);
  EXPECT_FALSE(removed->process.IsActive());
  Group()->ReturnJobs(kept);
  EXPECT_EQ(Status(*Group(), 0), JobStatus::kAborted);

  // It comes back before its run has returned.
  ASSERT_TRUE(Group()->Resubmit(Id(0)));
  ASSERT_TRUE(Group()->Submit());
  ASSERT_TRUE(WaitForStatus(*Group(), 0, JobStatus::kRunning));
  Group()->ReturnJobs(Group()->RemoveJobs({Id(0)}));
  ASSERT_TRUE(WaitForEnd(*Group()));
  EXPECT_EQ(Status(*Group(), 0), JobStatus::kAborted);
}

TEST_F(GroupRun, FollowsItsJobThroughReordering) {
  Add("first", "run 2");
  Add("second");
  Add("third");
  ASSERT_TRUE(Group()->Submit());
  ASSERT_TRUE(WaitForStatus(*Group(), 0, JobStatus::kRunning));
  EXPECT_TRUE(Group()->MoveJob(Id(2), true));
  EXPECT_FALSE(Group()->MoveJob(Id(1), true));
  ASSERT_TRUE(Group()->RemoveJob(Id(2)));
  Add("late");
  ASSERT_TRUE(WaitForEnd(*Group()));
  ASSERT_EQ(Group()->JobCount(), 3);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(Status(*Group(), i), JobStatus::kFinished) << i;
  EXPECT_FALSE(std::filesystem::exists(home_ / "second/messag.krb"));
}

TEST_F(GroupRun, GroupsRunAtTheSameTimeEachWithItsFolderAndVariables) {
  manager_->AddGroup("Group2");
  std::vector<std::shared_ptr<JobFileDyna>> jobs;
  for (int i = 0; i < 6; ++i) {
    jobs.push_back(Job("job" + std::to_string(i), "run 0.5\n$ standin: echo"));
    if (i < 3) jobs.back()->calculationMethod = "IMPLICIT DYNAMIC";
    Group(i % 2)->AddJob(jobs.back());
  }
  ASSERT_TRUE(Group(0)->Submit());
  ASSERT_TRUE(Group(1)->Submit());
  EXPECT_TRUE(WaitUntil([&] {
    return Group(0)->ActiveJob() != JobId::kNone && Group(1)->ActiveJob() != JobId::kNone;
  }));
  ASSERT_TRUE(WaitUntil([&] { return !manager_->IsAnyGroupRunning(); }));
  for (const auto& job : jobs) {
    EXPECT_EQ(job->status, JobStatus::kFinished);
    const std::string echo = TempFolder::Read(job->Folder() + "/standin_echo.txt");
    EXPECT_NE(echo.find(FileDirWrapper::ShortPath(job->jobFile)), std::string::npos);
    EXPECT_NE(echo.find("cwd=" + job->Folder()), std::string::npos);
    EXPECT_EQ(echo.find("LSTC_MEMORY=auto") == std::string::npos, job->calculationMethod != "");
  }
}

TEST_F(GroupRun, AGroupThatIsRemovedEndsItsSolver) {
  const auto job = StartHanging();
  ASSERT_TRUE(manager_->RemoveGroup(0));
  EXPECT_TRUE(manager_->IsAnyGroupRunning());
  EXPECT_TRUE(manager_->Stop(-1));
  EXPECT_FALSE(manager_->IsAnyGroupRunning());
  EXPECT_FALSE(job->process.IsActive());
}

TEST_F(GroupRun, TheManagerCanGoWhileAGroupRuns) {
  const auto job = StartHanging();
  manager_.reset();
  EXPECT_FALSE(job->process.IsActive());
}

TEST_F(GroupRun, ThreadsThatAllChangeOneGroupDoNotCollide) {
  files_.Set(&Settings::stop_after_failures, 0);
  std::atomic<bool> end{false};
  std::thread adder([&] {
    for (int i = 0; i < 40; ++i) {
      auto job = std::make_shared<JobFileDyna>(files_.Get());
      job->jobFile = home_ / "missing.k";
      Group()->AddJob(job);
      Group()->Submit();
    }
    end = true;
  });
  std::thread mover([&] {
    for (int i = 0; !end; i = (i + 1) % 8) {
      Group()->MoveJob(Id(i), i % 2 == 0);
      Group()->SetMemory(Id(i), 100);
      if (i == 7) Group()->RemoveJob(Id(3));
    }
  });
  while (!end) {
    Group()->ReadJobs([](const JobFile& job) { EXPECT_LE(job.status, JobStatus::kAborted); });
    manager_->IsAnyJobActive();
    manager_->SetObserver(nullptr);
    manager_->SetObserver(&seen_);
  }
  adder.join();
  mover.join();
  Group()->Submit();
  ASSERT_TRUE(WaitForEnd(*Group()));
  Group()->ReadJobs([](const JobFile& job) { EXPECT_EQ(job.status, JobStatus::kAborted); });
}

}  // namespace
