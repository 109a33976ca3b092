// Job lists of groups and the list of groups, without a thread.
#include "GroupFixture.h"

namespace {

class GroupList : public GroupTest {
 protected:
  // Adds a job for each status given.
  void Fill(std::initializer_list<int> statuses) {
    for (const int status : statuses) {
      auto job = std::make_shared<JobFileDyna>(files_.Get());
      job->status = status;
      job->extraOptions = std::to_string(jobs_.size());
      jobs_.push_back(job);
      EXPECT_EQ(Group()->AddJob(job), static_cast<int>(jobs_.size()) - 1);
    }
  }

  std::string Order() const {
    std::string order;
    Group()->ReadJobs([&](int, const JobFile& job) { order += job.extraOptions; });
    return order;
  }

  std::vector<std::shared_ptr<JobFileDyna>> jobs_;
};

TEST_F(GroupList, MovesQueuedJobsOnly) {
  Fill({JobStatus::kFinished, JobStatus::kQueued, JobStatus::kQueued, JobStatus::kAborted});
  JobGroup& group = *Group();
  EXPECT_FALSE(group.MoveJob(1, true));  // past one that ran
  EXPECT_TRUE(group.MoveJob(2, true));
  EXPECT_EQ(Order(), "0213");
  EXPECT_TRUE(group.MoveJob(2, false));  // down past any
  EXPECT_EQ(Order(), "0231");
  EXPECT_FALSE(group.MoveJob(3, false));  // the last
  EXPECT_FALSE(group.MoveJob(0, false));  // has run
  EXPECT_FALSE(group.MoveJob(0, true));
  EXPECT_FALSE(group.MoveJob(-1, false));
  EXPECT_FALSE(group.MoveJob(4, true));
  EXPECT_EQ(Order(), "0231");
}

TEST_F(GroupList, RefusesIndicesOutOfRangeAndRunningJobs) {
  Fill({JobStatus::kRunning, JobStatus::kWaiting});
  JobGroup& group = *Group();
  for (const int index : {-1, 0, 2}) {
    EXPECT_FALSE(group.SetMemory(index, 5)) << index;
    EXPECT_FALSE(group.SetCpuCount(index, 5)) << index;
    EXPECT_FALSE(group.SetPause(index, 5)) << index;
    EXPECT_FALSE(group.SetPrecision(index, 1)) << index;
    EXPECT_FALSE(group.SetUseSFile(index, true)) << index;
    EXPECT_FALSE(group.SetDump(index, false)) << index;
    EXPECT_FALSE(group.SetRestartFile(index, "r")) << index;
    EXPECT_FALSE(group.SetExtraOptions(index, "x")) << index;
    EXPECT_FALSE(group.SetJobStatus(index, JobStatus::kQueued)) << index;
    EXPECT_FALSE(group.Resubmit(index)) << index;
  }
  EXPECT_FALSE(group.RemoveJob(2));
  EXPECT_FALSE(group.GetJob(2));
  EXPECT_EQ(group.AddJob(nullptr), -1);
  EXPECT_EQ(group.ActiveJob(), 0);
  EXPECT_TRUE(group.SetMemory(1, 5));
  EXPECT_TRUE(group.SetDump(1, false));
  EXPECT_FALSE(group.SetPrecision(1, Settings::kVorel));
  EXPECT_FALSE(group.SetJobStatus(1, 5));
  EXPECT_EQ(jobs_[1]->memory, 5u);
  EXPECT_FALSE(jobs_[1]->dump);
}

TEST_F(GroupList, ResubmitMakesAJobNew) {
  Fill({JobStatus::kAborted, JobStatus::kQueued, JobStatus::kFinished});
  jobs_[0]->abort = true;
  jobs_[0]->SetMessageFile("/old/messag.krb");
  jobs_[0]->SetRunError(2, "bad");
  EXPECT_TRUE(Group()->Resubmit(0));
  EXPECT_FALSE(Group()->Resubmit(1));
  EXPECT_TRUE(Group()->Resubmit(2));
  EXPECT_EQ(jobs_[0]->status, JobStatus::kQueued);
  EXPECT_FALSE(jobs_[0]->abort);
  EXPECT_EQ(jobs_[0]->MessageFile(), "");
  EXPECT_EQ(jobs_[0]->RunErrorCode(), 0);
  EXPECT_EQ(seen_.Count("status " + std::to_string(Group()->Id()) + " 0 0"), 1);
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
