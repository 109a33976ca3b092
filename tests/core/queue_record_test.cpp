#include "core/QueueRecord.h"

#include <gtest/gtest.h>

#include "core/QueueUndo.h"
#include "CoreFixture.h"
#include "support/Standin.h"
#include "util/process/ProcessIdentity.h"

namespace {

// The program from a start to its end, which is a crash unless it says otherwise.
struct Session {
  explicit Session(const char* title) : settings(title) {
    settings.SetSolverPath(SolverKind::kLsDynaSingle, StandinSolver());
    settings.Set(&Settings::pause_time, 0);
    record.Begin();
    for (const auto& [name, text] : record.LostGroups()) manager.AddGroup(name);
    if (manager.GroupCount() == 0) manager.AddGroup("Group1");
    manager.SetCurrentGroup(0);
    record.GroupsMade();
  }

  std::shared_ptr<JobFileDyna> Add(const std::string& deck, JobStatus status = JobStatus::kQueued,
                                   int group = 0) {
    auto job = std::make_shared<JobFileDyna>(settings.Get());
    job->jobFile = deck;
    job->status = status;
    manager.GroupAt(group)->AddJob(job);
    return job;
  }

  // "name: deck status, ..." of each group.
  std::vector<std::string> Queue() {
    std::vector<std::string> queue;
    for (int i = 0; i < manager.GroupCount(); ++i) {
      std::string line = manager.GroupAt(i)->Name() + ":";
      manager.GroupAt(i)->ReadJobs([&](const JobFile& job) {
        line += ' ' + job.jobFile + ' ' + JobStatusWord(job.status).English();
      });
      queue.push_back(line);
    }
    return queue;
  }

  SettingsAndPaths settings;
  std::vector<std::unique_ptr<JobSolver>> solvers = MakeQuickSolvers();
  QueueRecord record{settings};
  JobGroupManager manager{settings, solvers, &record};
  JobIntake intake{manager};
};

class QueueRecordTest : public CoreTest {
 protected:
  static std::unique_ptr<Session> Start() { return std::make_unique<Session>(kTitle); }

  // In a folder of its own, since the solver writes there; the command is for the stand-in.
  std::string DeckOf(const std::string& folder, const std::string& command) const {
    FileDirWrapper::CreateDirTree(home_ / folder);
    return Deck(folder + "/deck.k", "$ standin: " + command + "\n");
  }

  // A run whose process is gone, or is somebody else's.
  static RunRecord RunOf(const JobFile& job, std::int32_t process, const std::string& mark) {
    RunRecord run;
    run.started = 1000;
    run.jobFile = job.jobFile;
    run.folder = job.Folder();
    run.machine = MachineName();
    run.process = {process, mark};
    return run;
  }
};

// Started by a session that crashes at once.
struct LeftSolver {
  LeftSolver(Session& session, const std::shared_ptr<JobFileDyna>& job, RunRecord run) {
    PTWrapperProcessStart start;
    start.program = StandinSolver();
    FileDirWrapper::QuotePath(start.program, start.commandLine);
    start.commandLine += " i=" + job->jobFile;
    start.folder = job->Folder();
    start.showWindow = false;
    EXPECT_TRUE(process.Create(start));
    run.process = IdentityOfProcess(process.ChildId());
    run.token = process.Token();
    session.record.RunRecorded(job->id, run);
  }
  ~LeftSolver() { process.TerminateAll(); }
  PTWrapperProcess process;
};

using Queue = std::vector<std::string>;

TEST_F(QueueRecordTest, EachJobComesBackAsItsStatusWants) {
  auto first = Start();
  first->manager.AddGroup("Empty");
  first->manager.AddGroup("Second");
  first->manager.SetCurrentGroup(2);
  const auto finished = first->Add("a.k", JobStatus::kFinished);
  finished->SetMessageFile("messag.kra");
  first->manager.GroupAt(0)->SetMemory(finished->id, 77);
  first->Add("b.k", JobStatus::kWaiting);
  first->Add("c.k", JobStatus::kRunning);
  const auto stages = first->Add("d.k", JobStatus::kQueued, 2);
  for (const char* deck : {"d1.k", "d2.k"}) {
    auto stage = std::make_shared<JobFileDyna>(first->settings.Get());
    stage->jobFile = deck;
    first->manager.GroupAt(2)->AddStage(stages->id, stage);
  }
  first.reset();

  const auto second = Start();
  const LeftBehind left = second->record.Left();
  EXPECT_EQ(left.queued, 2);
  EXPECT_EQ(left.wereRunning, 1);
  EXPECT_EQ(left.stillRun, 0);
  EXPECT_EQ(left.ended, 1);
  second->record.Restore(second->manager, second->intake);
  EXPECT_EQ(second->Queue(),
            (Queue{"Group1: a.k Finished b.k Queued c.k Aborted", "Empty:", "Second: d.k Queued"}));
  EXPECT_EQ(second->manager.CurrentGroupIndex(), 2);
  second->manager.GroupAt(0)->ReadJobs([](const JobFile& job) {
    if (job.jobFile == "a.k") {
      EXPECT_EQ(job.memory, 77U);
      EXPECT_EQ(job.MessageFile(), "messag.kra");
    }
    if (job.jobFile == "c.k") {
      EXPECT_EQ(job.RunMessage().Id(), MessageId::kEndedBeforeItsSolver);
    }
  });
  second->manager.GroupAt(2)->ReadJobs([](const JobFile& job) {
    ASSERT_EQ(job.stages.size(), 2U);
    EXPECT_EQ(job.stages[1]->jobFile, "d2.k");
  });
  EXPECT_EQ(second->record.Left().Jobs(), 0);
}

TEST_F(QueueRecordTest, ACrashBehindAnUndoHasTheJobsAtTheirPlaces) {
  auto first = Start();
  first->manager.AddGroup("Second");
  for (const char* deck : {"a.k", "b.k", "c.k", "d.k"}) first->Add(deck);
  const auto ended = first->Add("e.k", JobStatus::kFinished);
  first->manager.AddGroup("Third");
  QueueUndo undo(first->manager);
  const auto group = first->manager.GroupAt(0);
  const std::vector<JobId> all = group->JobIds();
  undo.Move(group, {all[2], all[3]}, JobList::Move::kUp);  // a c d b e
  undo.Resubmit(group, {ended->id});
  undo.Remove(group, {all[0], all[3], ended->id});
  undo.RemoveGroup(0);
  for (int step = 0; step < 3; ++step) undo.Undo();
  const Queue queue = first->Queue();
  EXPECT_EQ(queue.front(), "Group1: a.k Queued c.k Queued d.k Queued b.k Queued e.k Finished");
  undo.Remove(first->manager.GroupAt(1), {});
  first.reset();

  const auto second = Start();
  second->record.Restore(second->manager, second->intake);
  EXPECT_EQ(second->Queue(), queue);
}

// Stops the intake at the first deck.
struct Stopper : RecordingObserver {
  void IntakeProgress(int, int, const std::string&, int) override {
    ++calls;
    while (stops) std::this_thread::yield();
  }
  std::atomic<int> calls = 0;
  std::atomic<bool> stops = true;
};

TEST_F(QueueRecordTest, DecksThatWereStillBeingReadAreReadAgain) {
  const auto ask = [this](Session& session, const char* deck, int group, JobId stageOf) {
    JobRequest request = MakeJobRequest(session.settings.Get());
    request.jobFile = Deck(deck);
    request.groupId = session.manager.GroupAt(group)->Id();
    request.stageOf = stageOf;
    request.dump = false;
    return session.intake.Add(request);
  };
  Stopper stopper;
  {
    const auto first = Start();
    first->manager.AddGroup("Second");
    first->manager.SetObserver(&stopper);
    const auto job = first->Add(home_ / "job.k");
    first->record.TakeOver({"file"}, [&] {
      ask(*first, "a.k", 1, JobId::kNone);
      ask(*first, "stage.k", 0, job->id);
      ask(*first, "b.k", 1, JobId::kNone);
    });
    EXPECT_TRUE(WaitUntil([&] { return stopper.calls > 0; }));
    EXPECT_TRUE(WaitUntil([&] { return first->record.IsSafe(); }));
    first->intake.Close();
    stopper.stops = false;
    first->record.End(false);
  }
  {
    const auto second = Start();
    EXPECT_EQ(second->record.Left().queued, 4);
    EXPECT_TRUE(second->record.HasTaken("file"));
    second->record.Restore(second->manager, second->intake);
    second->intake.Drain();
    EXPECT_EQ(second->Queue(),
              (Queue{"Group1: " + home_ / "job.k" + " Queued",
                     "Second: " + home_ / "a.k" + " Queued " + home_ / "b.k" + " Queued"}));
    const auto groups = {second->manager.GroupAt(0), second->manager.GroupAt(1)};
    EXPECT_EQ(JobIn(**groups.begin(), (*groups.begin())->JobIds()[0])->stages.size(), 1U);
    second->manager.SetObserver(&stopper);
    stopper.calls = 0;
    stopper.stops = true;
    ask(*second, "c.k", 0, JobId::kNone);
    ask(*second, "d.k", 0, JobId::kNone);
    EXPECT_TRUE(WaitUntil([&] { return stopper.calls > 0; }));
    second->intake.Cancel();
    stopper.stops = false;
    second->intake.Drain();
  }
  EXPECT_EQ(Start()->record.Left().queued, 3) << "what the user gave up stays given up";
}

TEST_F(QueueRecordTest, WhatIsNotTakenStaysAndJoinsWhatIsQueuedMeanwhile) {
  Start()->Add("a.k");
  {
    const auto second = Start();
    EXPECT_EQ(second->record.Left().queued, 1);
    second->Add("b.k");
    second->record.End(false);
  }
  {
    const auto third = Start();
    EXPECT_EQ(third->record.Left().queued, 2);
    third->Add("c.k");
    third->record.Restore(third->manager, third->intake);
    EXPECT_EQ(third->Queue(), Queue{"Group1: c.k Queued a.k Queued b.k Queued"});
  }
  {
    const auto fourth = Start();
    EXPECT_EQ(fourth->record.Left().queued, 3) << "restored once, not twice";
    fourth->record.Forget();
  }
  EXPECT_EQ(Start()->record.Left().Jobs(), 0);
}

TEST_F(QueueRecordTest, AJobThatTheEndStoppedIsOffered) {
  for (const bool stops : {false, true}) {
    {
      const auto first = Start();
      first->Add("a.k", JobStatus::kAborted);
      first->record.EndStopsJobs(stops);
      first->record.End(false);
    }
    EXPECT_EQ(Start()->record.Left().Jobs(), stops ? 1 : 0);
  }
}

TEST_F(QueueRecordTest, TheSettingKeepsNothingAndALanguageWantsItsSessionBack) {
  {
    const auto first = Start();
    first->Add("a.k");
    first->record.End(false);
  }
  {
    const auto second = Start();
    second->Add("b.k", JobStatus::kFinished);
    second->record.End(true);
  }
  {
    const auto third = Start();
    EXPECT_TRUE(third->record.WantsRestore());
    third->record.RestoreWanted(third->manager, third->intake);
    EXPECT_EQ(third->Queue(), Queue{"Group1: b.k Finished"});
    EXPECT_EQ(third->record.Left().queued, 1) << "nobody has chosen yet";
  }
  {
    const auto second = Start();
    EXPECT_EQ(second->record.Left().Jobs(), 2);
    second->settings.Set(&Settings::keep_jobs, 0);
    second->settings.WriteSettings();
  }
  SettingsAndPaths settings(kTitle);
  settings.ReadSettings();
  {
    QueueRecord record(settings);
    record.Begin();
    EXPECT_EQ(record.Left().Jobs(), 0);
  }
  EXPECT_EQ(Start()->record.Left().Jobs(), 0);
}

// An id that another program has now is not the solver.
TEST_F(QueueRecordTest, ASolverThatIsGoneIsJudgedByItsFiles) {
  const std::int32_t own = PTWrapperProcess().ProcessId();
  {
    const auto first = Start();
    const auto job = first->Add(Deck("a/deck.k"), JobStatus::kRunning);
    first->record.RunRecorded(job->id, RunOf(*job, own, "another start"));
  }
  const auto second = Start();
  EXPECT_EQ(second->record.Left().stillRun, 0);
  EXPECT_EQ(second->record.Left().wereRunning, 1);
  second->record.Restore(second->manager, second->intake);
  const auto group = second->manager.GroupAt(0);
  ASSERT_TRUE(WaitUntil([&] { return !group->Running(); }));
  group->ReadJobs([](const JobFile& job) {
    EXPECT_EQ(job.status, JobStatus::kAborted);
    EXPECT_EQ(job.started, 1000);
    EXPECT_FALSE(job.RunMessage().Empty());
  });
}

// The jobs of an earlier session may come back long after the group was stopped.
TEST_F(QueueRecordTest, AStopBeforeIsNotForTheRunThatComesBack) {
  {
    const auto first = Start();
    const auto job = first->Add(Deck("a/deck.k"), JobStatus::kRunning);
    first->record.RunRecorded(job->id, RunOf(*job, 1, "another start"));
  }
  const auto second = Start();
  const auto group = second->manager.GroupAt(0);
  second->Add("b.k", JobStatus::kFinished);
  ASSERT_TRUE(group->Stop());
  second->record.Restore(second->manager, second->intake);
  ASSERT_TRUE(WaitUntil([&] { return !group->Running(); }));
  group->ReadJobs([](const JobFile& job) {
    EXPECT_EQ(job.RunMessage().Empty(), job.jobFile == "b.k") << "it was judged";
  });
}

TEST_F(QueueRecordTest, AGroupThatRunsWaitsForASolverThatIsTakenOver) {
  auto first = Start();
  const auto left = first->Add(DeckOf("a", "run 4"), JobStatus::kRunning);
  const LeftSolver solver(*first, left, RunOf(*left, 0, ""));
  first.reset();

  const auto second = Start();
  second->Add(DeckOf("b", "run 1"));
  const auto group = second->manager.GroupAt(0);
  ASSERT_TRUE(group->Submit());
  ASSERT_TRUE(WaitUntil([&] { return group->ActiveJob() != JobId::kNone; }));
  second->record.Restore(second->manager, second->intake);
  const auto later = second->Add(DeckOf("c", "run 0"));
  ASSERT_TRUE(WaitUntil([&] { return !group->Running(); }));
  const JobFile* const taken = JobIn(*group, group->JobIds()[1]);
  EXPECT_EQ(taken->status, JobStatus::kFinished);
  EXPECT_EQ(later->status, JobStatus::kFinished);
  EXPECT_GE(later->started, taken->ended);
}

TEST_F(QueueRecordTest, AStageWhoseRunHasEndedIsNotRunAgain) {
  {
    const auto first = Start();
    for (const JobStatus verdict : {JobStatus::kFinished, JobStatus::kAborted}) {
      auto job = std::make_shared<JobFileDyna>(first->settings.Get());
      job->jobFile = "a.k";
      job->status = JobStatus::kRunning;
      for (const JobStatus status : {JobStatus::kFinished, JobStatus::kRunning}) {
        job->stages.push_back(std::make_shared<JobFileDyna>(first->settings.Get()));
        job->stages.back()->status = status;
      }
      first->manager.GroupAt(0)->AddJob(job);
      RunRecord run = RunOf(*job, 0, "");
      run.stage = 1;
      run.ended = 2000;
      run.verdict = verdict;
      first->record.RunRecorded(job->id, run);
    }
  }
  const auto second = Start();
  second->record.Restore(second->manager, second->intake);
  EXPECT_EQ(second->Queue(), Queue{"Group1: a.k Finished a.k Aborted"});
}

}  // namespace
