#include "core/QueueRecord.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "core/QueueUndo.h"
#include "CoreFixture.h"
#include "record/History.h"
#include "record/Journal.h"
#include "support/Standin.h"
#include "util/process/ProcessIdentity.h"
#include "util/text/DateTimeWrapper.h"

namespace {

// The program from a start to its end, which is a crash unless it says otherwise.
struct Session {
  explicit Session(const char* title) : settings(title) {
    settings.ReadSettings();
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
    run.process = identity = IdentityOfProcess(process.ChildId());
    run.token = process.Token();
    session.record.RunRecorded(job->id, run);
  }
  ~LeftSolver() { process.TerminateAll(); }
  PTWrapperProcess process;
  ProcessIdentity identity;
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
    request.extraOptions = "jobid=x";
    request.memory = 77;
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
    EXPECT_EQ(first->intake.Waiting(), 2) << "a stage is no job";
    first->intake.Close();
    stopper.stops = false;
    first->record.End(false);
  }
  {
    const auto second = Start();
    EXPECT_EQ(second->record.Left().queued, 4);
    EXPECT_TRUE(second->record.HasTaken("file"));
    second->record.TakeOver({"other"}, [] {});
    second->record.Restore(second->manager, second->intake);
    second->intake.Drain();
    EXPECT_EQ(second->Queue(),
              (Queue{"Group1: " + home_ / "job.k" + " Queued",
                     "Second: " + home_ / "a.k" + " Queued " + home_ / "b.k" + " Queued"}));
    const auto groups = {second->manager.GroupAt(0), second->manager.GroupAt(1)};
    EXPECT_EQ(JobIn(**groups.begin(), (*groups.begin())->JobIds()[0])->stages.size(), 1U);
    second->manager.GroupAt(1)->ReadJobs([](const JobFile& job) {
      EXPECT_EQ(job.extraOptions, "jobid=x");
      EXPECT_EQ(job.memory, 77U);
      EXPECT_FALSE(dynamic_cast<const JobFileDyna&>(job).dump);
    });
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
  const auto third = Start();
  EXPECT_EQ(third->record.Left().queued, 3) << "what the user gave up stays given up";
  EXPECT_TRUE(third->record.HasTaken("other"));
  EXPECT_TRUE(third->record.HasTaken("file")) << "it may lie where the second session did not look";
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
  for (const bool wanted : {false, true}) {
    {
      const auto kept = Start();
      EXPECT_EQ(kept->record.Left().Jobs(), 0) << "not even once more";
      EXPECT_FALSE(kept->record.WantsRestore());
      kept->Add("c.k");
      kept->record.End(wanted);
    }
    const auto next = Start();
    EXPECT_EQ(next->record.WantsRestore(), wanted);
    next->record.RestoreWanted(next->manager, next->intake);
    EXPECT_EQ(next->Queue(), Queue{wanted ? "Group1: c.k Queued" : "Group1:"});
    next->record.End(false);
  }
}

// The groups of both, and what had not been read yet, beside what is there already.
TEST_F(QueueRecordTest, SeveralSessionsComeBackIntoTheGroupsOfTheirNames) {
  const auto ask = [this](Session& session, const char* deck, int group) {
    JobRequest request = MakeJobRequest(session.settings.Get());
    request.jobFile = Deck(deck);
    request.groupId = session.manager.GroupAt(group)->Id();
    session.intake.Add(request);
  };
  Stopper stopper;
  const auto crash = [&](const char* group, const std::string& name) {
    stopper.stops = true;
    stopper.calls = 0;
    const auto session = Start();
    session->manager.AddGroup(group);
    session->manager.SetObserver(&stopper);
    session->Add(name + "1");
    session->Add(name + "2", JobStatus::kQueued, session->manager.GroupCount() - 1);
    ask(*session, (name + ".k").c_str(), session->manager.GroupCount() - 1);
    EXPECT_TRUE(WaitUntil([&] { return stopper.calls > 0; }));
    session->record.Flush();
    session->intake.Close();
    stopper.stops = false;
  };
  crash("A", "a");
  crash("B", "b");
  const auto third = Start();
  EXPECT_EQ(third->record.Left().queued, 6);
  third->Add("c.k", JobStatus::kQueued, 2);
  third->record.Restore(third->manager, third->intake);
  third->intake.Drain();
  EXPECT_EQ(third->Queue(),
            (Queue{"Group1: a1 Queued b1 Queued", "A: a2 Queued " + home_ / "a.k" + " Queued",
                   "B: c.k Queued b2 Queued " + home_ / "b.k" + " Queued"}));
}

// The writer's thread hangs, as on a server that does not answer.
TEST_F(QueueRecordTest, ARestoreDoesNotWaitForTheDisk) {
  {
    const auto first = Start();
    for (int i = 0; i < 3; ++i) first->Add("a.k");
    const auto job = first->Add(Deck("a/deck.k"), JobStatus::kRunning);
    first->record.RunRecorded(job->id, RunOf(*job, 1, "another start"));
  }
  SettingsAndPaths settings(kTitle);
  QueueRecord record(settings);
  const std::vector<std::unique_ptr<JobSolver>> solvers = MakeQuickSolvers();
  JobGroupManager manager(settings, solvers, &record);
  JobIntake intake(manager);
  std::atomic<bool> hangs = false, goesOn = false;
  settings.Log().SetListener([&](const Message& message) {
    if (message.Id() != MessageId::kRecordNotWritten) return;
    hangs = true;
    while (!goesOn) std::this_thread::yield();
  });
  const RecordFiles& files = record.Files();
  const std::string text = TempFolder::Read(files.queue);
  std::ofstream(files.queue, std::ios::binary)  // an older title, so it is written anew
      << JournalLine("kestrun queue 1 " + files.machine + " 0") << text.substr(text.find('\n') + 1);
  std::filesystem::create_directories(files.queue + ".new/full");
  record.Begin();
  manager.AddGroup("Group1");
  record.GroupsMade();
  EXPECT_TRUE(WaitUntil([&] { return hangs.load(); }));
  const auto begin = std::chrono::steady_clock::now();
  record.Restore(manager, intake);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(4)) << "nor for 5 s";
  EXPECT_EQ(manager.GroupAt(0)->JobCount(), 4);
  goesOn = true;
  EXPECT_TRUE(WaitUntil([&] { return !manager.GroupAt(0)->Running(); }));
  settings.Log().SetListener(nullptr);
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

// Also where a clock was set back while it ran.
TEST_F(QueueRecordTest, TheRowOfARunThatNobodyWatchedHasTheTimesOfItsHistory) {
  const auto begin = [this](const std::string& name, std::int64_t started) {
    const auto session = Start();
    auto job = std::make_shared<JobFileDyna>(session->settings.Get());
    job->jobFile = DeckOf(name, "");
    job->status = JobStatus::kRunning;
    job->started = started - 500;
    for (const JobStatus status : {JobStatus::kFinished, JobStatus::kRunning}) {
      job->stages.push_back(std::make_shared<JobFileDyna>(session->settings.Get()));
      job->stages.back()->jobFile = job->jobFile;
      job->stages.back()->status = status;
      job->stages.back()->started = started - 100;
    }
    session->manager.GroupAt(0)->AddJob(job);
    RunRecord run = RunOf(*job, 1, "another start");
    run.stage = 1;
    run.started = started;
    session->record.RunRecorded(job->id, run);
  };
  const std::int64_t now = DateTimeWrapper::CurrentTime();
  for (const std::int64_t started : {now - 5000, now + 5000}) {
    const std::string name = std::to_string(started);
    begin(name, started);
    const std::string messages =
        home_.Write(name + "/messag", " N o r m a l    t e r m i n a t i o n\n");
    std::filesystem::last_write_time(
        messages, std::filesystem::last_write_time(messages) - std::chrono::seconds(1000));
    const auto second = Start();
    second->record.Restore(second->manager, second->intake);
    const auto group = second->manager.GroupAt(0);
    ASSERT_TRUE(WaitUntil([&] { return !group->Running(); }));
    second->record.Flush();
    const RecordFiles& files = second->record.Files();
    const RunRecord last = ReadHistory(files.history, files.machine).back();
    const JobFile& job = *JobIn(*group, group->JobIds()[0]);
    EXPECT_EQ(job.status, JobStatus::kFinished) << job.RunMessage().English();
    EXPECT_EQ(job.started, started - 500);
    EXPECT_EQ(job.stages[1]->started, started - 100);
    EXPECT_EQ(last.started, started);
    EXPECT_EQ(last.verdict, JobStatus::kFinished);
    EXPECT_EQ(job.ended, last.ended);
    EXPECT_EQ(job.stages[1]->ended, last.ended);
    if (started < now) {
      EXPECT_NEAR(static_cast<double>(last.ended), static_cast<double>(now - 1000), 60);
    }
    second->record.End(false);
  }
}

TEST_F(QueueRecordTest, ARunThatEndsBeforeItsSolverIsAskedForIsInTheHistory) {
  const auto session = Start();
  const std::vector<std::string> decks = {home_ / "gone.k", home_ / "gone2.k"};
  for (const std::string& deck : decks) session->Add(deck);
  const auto group = session->manager.GroupAt(0);
  ASSERT_TRUE(group->Submit());
  ASSERT_TRUE(WaitUntil([&] { return !group->Running(); }));
  const auto old = session->Add(DeckOf("old", ""));
  old->stages.push_back(std::make_shared<JobFileDyna>(session->settings.Get()));
  old->firstStage = 1;
  ASSERT_TRUE(group->Submit());
  ASSERT_TRUE(WaitUntil([&] { return !group->Running(); }));
  session->record.Flush();
  const RecordFiles& files = session->record.Files();
  const std::vector<RunRecord> runs = ReadHistory(files.history, files.machine);
  ASSERT_EQ(runs.size(), 3U) << "also of one second";
  for (std::size_t i = 0; i < runs.size(); ++i) {
    const JobFile& job = *JobIn(*group, group->JobIds()[i]);
    EXPECT_EQ(runs[i].jobFile, job.jobFile);
    EXPECT_EQ(runs[i].verdict, JobStatus::kAborted);
    EXPECT_EQ(runs[i].reason, job.RunMessage());
    EXPECT_FALSE(runs[i].reason.Empty());
    EXPECT_EQ(runs[i].ended, job.ended);
    EXPECT_EQ(runs[i].folder, job.Folder());
  }
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

// The program is killed before they have ended.
TEST_F(QueueRecordTest, SolversOfRemovedAndStoppedJobsAreEndedByTheNextStart) {
  auto first = Start();
  first->manager.AddGroup("Removed");
  const auto job = first->Add(DeckOf("a", "run 60"), JobStatus::kRunning);
  const auto other = first->Add(DeckOf("b", "run 60"), JobStatus::kRunning, 1);
  const auto unknown = first->Add(DeckOf("c", "run 60"), JobStatus::kRunning, 1);
  const auto back = first->Add(DeckOf("d", "run 60"), JobStatus::kRunning);
  first->manager.AddGroup("Left");
  const auto left = first->Add(DeckOf("f", "run 60"), JobStatus::kRunning, 2);
  first->manager.AddGroup("Stopped");
  const auto halted = first->Add(DeckOf("g", "run 60"), JobStatus::kRunning, 3);
  first->Add("h.k", JobStatus::kWaiting, 3);
  const LeftSolver solver(*first, job, RunOf(*job, 0, ""));
  const LeftSolver ofGroup(*first, other, RunOf(*other, 0, ""));
  const LeftSolver ofUnknown(*first, unknown, RunOf(*unknown, 0, ""));
  const LeftSolver restored(*first, back, RunOf(*back, 0, ""));
  const LeftSolver untouched(*first, left, RunOf(*left, 0, ""));
  const LeftSolver ofStopped(*first, halted, RunOf(*halted, 0, ""));
  RunRecord starting = RunOf(*unknown, 0, "");
  starting.started = DateTimeWrapper::CurrentTime();
  starting.token = ofUnknown.process.Token();
  first->record.RunRecorded(unknown->id, starting);
  starting = RunOf(*left, 0, "");
  starting.token = untouched.process.Token();
  first->record.RunRecorded(left->id, starting);
  QueueUndo undo(first->manager);
  const auto group = first->manager.GroupAt(0);
  undo.Remove(group, {job->id});
  undo.RemoveGroup(1);
  undo.Remove(group, {back->id});
  undo.Undo();
  first->manager.GroupAt(2)->RequestStop();
  const auto gone = first->Add("e.k", JobStatus::kRunning);
  RunRecord ended = RunOf(*gone, PTWrapperProcess().ProcessId(), "another start");
  ended.token = "ended";
  first->record.RunRecorded(gone->id, ended);
  undo.Remove(group, {gone->id});
  ended.verdict = JobStatus::kAborted;
  first->record.RunRecorded(gone->id, ended);
  first.reset();

  const auto second = Start();
  EXPECT_EQ(second->record.Left().Jobs(), 4) << "no removed job comes back";
  EXPECT_TRUE(WaitUntil([&] { return !second->record.Left().isSearched; }));
  EXPECT_EQ(second->record.Left().stillRun, 1);
  EXPECT_EQ(second->record.Left().wereRunning, 2);
  for (const LeftSolver* const stopped : {&solver, &ofGroup, &ofUnknown, &restored, &ofStopped}) {
    EXPECT_TRUE(WaitUntil([&] { return !Runs(stopped->identity); }));
  }
  EXPECT_TRUE(Runs(untouched.identity));
  second->record.Restore(second->manager, second->intake);
  const auto halt = second->manager.GroupAt(second->manager.IndexOfName("Stopped"));
  EXPECT_TRUE(WaitUntil([&] { return !halt->Running(); }));
  halt->ReadJobs([](const JobFile& one) { EXPECT_EQ(one.status, JobStatus::kAborted); });
  const RecordFiles& files = second->record.Files();
  int stopped = 0;
  EXPECT_TRUE(WaitUntil([&] {
    second->record.Flush();
    stopped = 0;
    for (const RunRecord& run : ReadHistory(files.history, files.machine)) {
      stopped += run.verdict == JobStatus::kAborted && run.failure.kind == FailureKind::kStopped;
    }
    return stopped == 3;
  })) << stopped;
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
