// Job lists of groups and the list of groups, without a thread.
#include "GroupFixture.h"

namespace {

class GroupList : public GroupTest {
 protected:
  // Adds a job for each status given.
  void Fill(std::initializer_list<JobStatus> statuses) {
    for (const JobStatus status : statuses) {
      auto job = std::make_shared<JobFileDyna>(files_.Get());
      job->status = status;
      job->extraOptions = std::to_string(jobs_.size());
      jobs_.push_back(job);
      EXPECT_TRUE(Group()->AddJob(job));
    }
  }

  std::string Order() const {
    std::string order;
    Group()->ReadJobs([&](const JobFile& job) { order += job.extraOptions; });
    return order;
  }

  std::vector<std::shared_ptr<JobFileDyna>> jobs_;
};

TEST_F(GroupList, MovesQueuedJobsOnly) {
  Fill({JobStatus::kFinished, JobStatus::kQueued, JobStatus::kQueued, JobStatus::kAborted});
  JobGroup& group = *Group();
  EXPECT_FALSE(group.MoveJob(Id(1), true));  // past one that ran
  EXPECT_TRUE(group.MoveJob(Id(2), true));
  EXPECT_EQ(Order(), "0213");
  EXPECT_TRUE(group.MoveJob(Id(2), false));  // down past any
  EXPECT_EQ(Order(), "0231");
  EXPECT_FALSE(group.MoveJob(Id(3), false));  // the last
  EXPECT_FALSE(group.MoveJob(Id(0), false));  // has run
  EXPECT_FALSE(group.MoveJob(Id(0), true));
  EXPECT_FALSE(group.MoveJob(JobId::kNone, false));
  EXPECT_EQ(Order(), "0231");
}

TEST_F(GroupList, RefusesJobsThatAreNotThereAndRunningOnes) {
  Fill({JobStatus::kRunning, JobStatus::kWaiting});
  JobGroup& group = *Group();
  const auto gone = std::make_shared<JobFileDyna>(files_.Get());
  for (const JobId job : {JobId::kNone, jobs_[0]->id, gone->id}) {
    EXPECT_FALSE(group.SetMemory(job, 5));
    EXPECT_FALSE(group.SetCpuCount(job, 5));
    EXPECT_FALSE(group.SetPause(job, 5));
    EXPECT_FALSE(group.SetPrecision(job, SolverKind::kLsDynaDouble));
    EXPECT_FALSE(group.SetUseSFile(job, true));
    EXPECT_FALSE(group.SetDump(job, false));
    EXPECT_FALSE(group.SetRestartFile(job, "r"));
    EXPECT_FALSE(group.SetExtraOptions(job, "x"));
    EXPECT_FALSE(group.Resubmit(job));
  }
  EXPECT_FALSE(group.RemoveJob(gone->id));
  EXPECT_FALSE(group.AddJob(nullptr));
  EXPECT_FALSE(group.AddJob(jobs_[0])) << "twice";
  EXPECT_EQ(group.ActiveJob(), Id(0));
  EXPECT_TRUE(group.SetMemory(Id(1), 5));
  EXPECT_TRUE(group.SetDump(Id(1), false));
  EXPECT_FALSE(group.SetPrecision(Id(1), SolverKind::kVorel));
  EXPECT_EQ(jobs_[1]->memory, 5u);
  EXPECT_FALSE(jobs_[1]->dump);
}

TEST_F(GroupList, TheCurrentGroupFollowsRemovals) {
  for (const char* name : {"B", "C", "D"}) manager_->AddGroup(name);
  manager_->SetCurrentGroup(2);
  const int idOfC = manager_->CurrentGroup()->Id();
  EXPECT_TRUE(manager_->RemoveGroup(0));
  EXPECT_EQ(manager_->CurrentGroupIndex(), 1);
  EXPECT_EQ(manager_->CurrentGroup()->Name(), "C");
  EXPECT_EQ(manager_->IndexOfName("D"), 2);
  EXPECT_TRUE(manager_->RemoveGroup(1));
  EXPECT_EQ(manager_->CurrentGroup()->Name(), "D");
  EXPECT_FALSE(manager_->GroupById(idOfC));
  EXPECT_TRUE(manager_->RemoveGroup(1));
  EXPECT_EQ(manager_->CurrentGroupIndex(), 0);
  EXPECT_TRUE(manager_->RemoveGroup(0));
  EXPECT_EQ(manager_->CurrentGroupIndex(), -1);
  EXPECT_FALSE(manager_->CurrentGroup());
  EXPECT_FALSE(manager_->RemoveGroup(0));
  EXPECT_FALSE(manager_->SetCurrentGroup(0));
}

}  // namespace
