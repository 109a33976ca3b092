// Job lists of groups and the list of groups, without a thread.
#include <future>
#include <thread>

#include "core/QueueUndo.h"
#include "GroupFixture.h"

namespace {

class GroupList : public GroupTest {
 protected:
  // Jobs that are called a, b, ...; of each: Q(ueued), R(unning), F(inished) or A(borted).
  void Fill(const std::string& statuses) {
    for (const char status : statuses) {
      auto job = std::make_shared<JobFileDyna>(files_.Get());
      job->jobFile = std::string(1, static_cast<char>('a' + Group()->JobCount()));
      job->status = status == 'Q'   ? JobStatus::kQueued
                    : status == 'R' ? JobStatus::kRunning
                    : status == 'F' ? JobStatus::kFinished
                                    : JobStatus::kAborted;
      Group()->AddJob(job);
    }
  }
  JobList::Jobs Ids(const std::string& names) {
    JobList::Jobs ids;
    Group()->ReadJobs([&](const JobFile& job) {
      if (names.find(job.jobFile) != std::string::npos) ids.push_back(job.id);
    });
    return ids;
  }
  std::string Names() {
    std::string names;
    Group()->ReadJobs([&](const JobFile& job) { names += job.jobFile; });
    return names;
  }
  std::string Statuses() {
    std::string letters;
    Group()->ReadJobs(
        [&](const JobFile& job) { letters += JobStatusWord(job.status).English().front(); });
    return letters;
  }

  QueueUndo undo_{*manager_};
};

TEST_F(GroupList, ABlockMovesAndKeepsItsOrder) {
  using Move = JobList::Move;
  Fill("FQQRQQQQ");
  const auto move = [&](const char* names, Move where) {
    undo_.Move(Group(), Ids(names), where);
    return Names();
  };
  EXPECT_EQ(move("acg", Move::kUp), "acbdegfh") << "not past what has run; a itself stays";
  EXPECT_EQ(move("eg", Move::kUp), "acbdegfh");
  EXPECT_EQ(move("cgf", Move::kDown), "abcdehgf");
  EXPECT_EQ(move("cb", Move::kToBottom), "adehgfbc");
  EXPECT_EQ(move("gcf", Move::kToTop), "adgfcehb");
  EXPECT_EQ(move("dgfc", Move::kToTop), "adgfcehb");
  JobList::Jobs none = {JobId::kNone};
  const ManyDone done = Group()->MoveJobs(Ids("adgb"), Move::kUp);
  EXPECT_EQ(done.done, 1);
  EXPECT_EQ(done.LeftOut(), 2);
  EXPECT_EQ(Group()->MoveJobs(none, Move::kUp).LeftOut(), 0);
  Group()->MoveJobs(Ids("b"), Move::kDown);
  for (const char* before : {"adehgfbc", "abcdehgf", "acbdegfh", "abcdefgh"}) {
    ASSERT_TRUE(undo_.Undo());
    EXPECT_EQ(Names(), before);
  }
  EXPECT_FALSE(undo_.Undo()) << "what moved nothing is no step";
}

TEST_F(GroupList, WhatWasDoneToSeveralJobsIsTakenBackStepByStep) {
  Fill("FQRAQF");
  Group()->ReadJobs(
      [](const JobFile& job) { const_cast<JobFile&>(job).SetMessageFile(job.jobFile + ".krb"); });
  const auto vorel = std::make_shared<JobFileVorel>(files_.Get());
  vorel->jobFile = "g";
  Group()->AddJob(vorel);
  const auto stage = std::make_shared<JobFileDyna>(files_.Get());
  stage->memory = 5;
  Group()->AddStage(Ids("b").front(), stage);
  Group()->SetMemory(Ids("e").front(), 9);
  stage->memory = 6;

  const ManyDone memory =
      undo_.SetField(Group(), Ids("abcde"), JobField::kMemory, std::uint64_t{9});
  EXPECT_EQ(memory.done, 4);
  EXPECT_EQ(memory.running, 1);
  EXPECT_EQ(stage->memory, 9U);
  EXPECT_EQ(undo_.SetField(Group(), Ids("eg"), JobField::kForce, true).unfit, 1);
  EXPECT_EQ(undo_.SetField(Group(), Ids("e"), JobField::kPrecision, SolverKind::kVorel).done, 0);
  EXPECT_EQ(undo_.SetField(Group(), Ids("be"), JobField::kOptions, std::string("x")).done, 1);
  const ManyDone resubmitted = undo_.Resubmit(Group(), Ids("abcd"));
  EXPECT_EQ(resubmitted.done, 2);
  EXPECT_EQ(Statuses(), "QQRQQFQ");
  EXPECT_EQ(undo_.Remove(Group(), Ids("acef")), 4);
  EXPECT_EQ(Names(), "bdg");
  manager_->AddGroup("other");
  EXPECT_TRUE(undo_.RemoveGroup(0));
  manager_->GroupAt(0)->SetName("Group1");

  const auto group = undo_.Undo()->group;
  EXPECT_EQ(Group(), group);
  EXPECT_EQ(group->Name(), "Group1 2") << "another one has its name";
  EXPECT_EQ(Names(), "bdg");
  undo_.Undo();
  EXPECT_EQ(Names(), "abcdefg");
  EXPECT_EQ(Statuses(), "QQRQQFQ");
  Group()->BeginRun(*Group()->Share(Ids("d").front()));
  EXPECT_EQ(undo_.Undo()->leftOut, 1) << "it runs by now";
  EXPECT_EQ(Statuses(), "FQRRQFQ");
  Group()->ReadJob(Ids("a").front(),
                   [](const JobFile& job) { EXPECT_EQ(job.MessageFile(), "a.krb"); });
  undo_.Undo();
  undo_.Undo();
  const auto taken = undo_.Undo();
  EXPECT_EQ(taken->kind, QueueUndo::Kind::kField);
  EXPECT_EQ(taken->jobs, Ids("abd"));
  EXPECT_EQ(stage->memory, 6U);
  EXPECT_TRUE(undo_.Empty());
}

TEST_F(GroupList, TenStepsAreKeptAndTenThousandJobsAreQuick) {
  constexpr int kJobs = 10000;
  for (int i = 0; i < kJobs; ++i) Group()->AddJob(std::make_shared<JobFileDyna>(files_.Get()));
  const JobList::Jobs all = Group()->JobIds();
  JobList::Jobs half;
  for (std::size_t i = 0; i < all.size(); i += 2) half.push_back(all[i]);
  const auto began = std::chrono::steady_clock::now();
  for (int i = 0; i < 5; ++i) {
    EXPECT_EQ(undo_.SetField(Group(), all, JobField::kCpus, 2 + i).done, kJobs);
    EXPECT_EQ(undo_.Move(Group(), half, JobList::Move::kDown).done, kJobs / 2 - i);
  }
  EXPECT_EQ(undo_.Remove(Group(), half), kJobs / 2);
  for (std::size_t i = 0; i < QueueUndo::kMostSteps; ++i) EXPECT_TRUE(undo_.Undo()) << i;
  EXPECT_FALSE(undo_.Undo());
  EXPECT_EQ(Group()->JobCount(), kJobs);
  EXPECT_LT(std::chrono::steady_clock::now() - began, std::chrono::seconds(5)) << "not n by n";
}

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

TEST_F(GroupList, AMutexThatSomebodyKeepsForEverStopsNobody) {
  std::promise<void> kept, end;
  std::thread holder([&] {
    PTWrapperSignal mutex;
    mutex.CreateMutexSignal("KESTRUN_MUTEX_SIGNAL_NAME", false);
    mutex.WaitForMutexSignal(-1);
    kept.set_value();
    end.get_future().wait();
    mutex.ReleaseMutexSignal();
  });
  kept.get_future().wait();
  auto work = std::async(std::launch::async, [&] {
    for (int i = 0; i < 20; ++i) Group()->AddJob(std::make_shared<JobFileDyna>(files_.Get()));
  });
  EXPECT_EQ(work.wait_for(std::chrono::seconds(20)), std::future_status::ready);
  end.set_value();
  holder.join();
  work.wait();
  EXPECT_EQ(Group()->JobCount(), 20);
  EXPECT_TRUE(LogHolds(files_, "Time out return"));
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
