// Job lists of groups and the list of groups, without a thread.
#include "GroupFixture.h"

namespace {

using GroupList = GroupTest;

TEST_F(GroupList, RefusesJobsThatAreNotThereAndRunningOnes) {
  JobGroup& group = *Group();
  const auto running = std::make_shared<JobFileDyna>(files_.Get());
  const auto gone = std::make_shared<JobFileDyna>(files_.Get());
  running->status = JobStatus::kRunning;
  EXPECT_TRUE(group.AddJob(running));
  for (const JobId job : {JobId::kNone, running->id, gone->id}) {
    EXPECT_FALSE(group.SetMemory(job, 5));
    EXPECT_FALSE(group.SetPrecision(job, SolverKind::kLsDynaDouble));
    EXPECT_FALSE(group.SetRestartFile(job, "r"));
    EXPECT_FALSE(group.Resubmit(job));
  }
  EXPECT_FALSE(group.RemoveJob(gone->id));
  EXPECT_FALSE(group.AddJob(nullptr));
  EXPECT_FALSE(group.AddJob(running)) << "twice";
  EXPECT_EQ(group.ActiveJob(), running->id);
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
  EXPECT_TRUE(manager_->RemoveGroup(0));
  EXPECT_EQ(manager_->CurrentGroupIndex(), -1);
  EXPECT_FALSE(manager_->CurrentGroup());
  EXPECT_FALSE(manager_->RemoveGroup(0));
  EXPECT_FALSE(manager_->SetCurrentGroup(0));
}

}  // namespace
