// Jobs with stages: how decks become them, how they are changed, and how a group runs them.
#include "core/JobIntake.h"
#include "core/SenseSwitch.h"
#include "GroupFixture.h"

namespace {

class Stages : public GroupTest {
 protected:
  // A job with a stage for each command of the stand-in, the stages in folders of their own.
  std::shared_ptr<JobFileDyna> JobWith(const std::vector<std::string>& commands) {
    auto job = Job("main");
    for (const std::string& command : commands) {
      job->stages.push_back(Job("stage" + std::to_string(job->stages.size()), command));
    }
    return job;
  }

  std::vector<std::string> StageNotes() const {
    std::vector<std::string> notes;
    const std::string start = "stage " + std::to_string(Group()->Id()) + " 0 ";
    for (const std::string& note : seen_.Notes()) {
      if (note.starts_with(start)) notes.push_back(note.substr(start.size()));
    }
    return notes;
  }

  std::vector<int> Statuses() const {
    std::vector<int> statuses;
    Group()->ReadJob(0, [&](const JobFile& job) {
      for (const auto& stage : job.stages) statuses.push_back(stage->status);
    });
    return statuses;
  }

  static bool HasMessages(const JobFile& job) {
    return std::filesystem::exists(job.Folder() + "/messag");
  }

  std::shared_ptr<JobFileDyna> Make(JobRequest request, const std::string& deck) {
    JobIntake intake(*manager_);
    request.jobFile = deck;
    intake.Add(request);
    intake.Drain();
    return std::dynamic_pointer_cast<JobFileDyna>(Group()->GetJob(Group()->JobCount() - 1));
  }
};

TEST_F(Stages, AreChangedOnlyWhileTheJobIsQueued) {
  JobGroup& group = *Group();
  group.AddJob(Job("a"));
  std::vector<std::shared_ptr<JobFileDyna>> stages;
  for (int i = 0; i < 3; ++i) {
    stages.push_back(std::make_shared<JobFileDyna>(files_.Get()));
    EXPECT_EQ(group.AddStage(0, stages.back()), i);
  }
  EXPECT_TRUE(group.MoveStage(0, 1, true));  // 1 0 2: no stage becomes skipped
  EXPECT_EQ(group.GetJob(0)->firstStage, 0);
  EXPECT_TRUE(group.MoveStage(0, 1, true));  // 0 1 2
  EXPECT_TRUE(group.SetFirstStage(0, 1));
  EXPECT_FALSE(group.SetFirstStage(0, 3));
  EXPECT_TRUE(group.MoveStage(0, 1, true));  // 1 0 2
  EXPECT_EQ(group.GetJob(0)->firstStage, 0);
  EXPECT_TRUE(group.MoveStage(0, 0, false));  // 0 1 2
  EXPECT_FALSE(group.MoveStage(0, 2, false));
  EXPECT_FALSE(group.MoveStage(0, 0, true));
  EXPECT_TRUE(group.RemoveStage(0, 0));  // 1 2
  EXPECT_EQ(group.GetJob(0)->firstStage, 0);
  EXPECT_EQ(group.GetStage(0, 0), stages[1]);
  EXPECT_FALSE(group.GetStage(0, 2));
  EXPECT_TRUE(group.SetFirstStage(0, 1));
  EXPECT_TRUE(group.RemoveStage(0, 1));  // the first one to run itself, and the last
  EXPECT_EQ(group.GetJob(0)->firstStage, 0);

  EXPECT_TRUE(group.SetMemory(0, 700));
  EXPECT_TRUE(group.ChangeStage(0, 0, [](JobFile& stage) {
    stage.ncpu = 3;
    return true;
  }));
  EXPECT_EQ(stages[1]->memory, 700u);
  EXPECT_EQ(stages[1]->ncpu, 3);
  EXPECT_TRUE(group.SetStageStatus(0, 0, JobStatus::kFinished));
  EXPECT_EQ(StageNotes(), std::vector<std::string>{"0 3"});

  for (const int status : {JobStatus::kWaiting, JobStatus::kRunning}) {
    group.GetJob(0)->status = status;
    EXPECT_EQ(group.AddStage(0, stages[0]), -1);
    EXPECT_FALSE(group.RemoveStage(0, 0));
    EXPECT_FALSE(group.MoveStage(0, 0, false));
  }
  EXPECT_FALSE(group.SetFirstStage(0, 0));
  EXPECT_FALSE(group.SetStageStatus(0, 0, JobStatus::kQueued));
  EXPECT_FALSE(group.ChangeStage(0, 0, [](JobFile&) { return true; }));
  group.GetJob(0)->status = JobStatus::kQueued;
  EXPECT_EQ(group.AddStage(0, group.GetJob(0)), -1);
  EXPECT_EQ(group.AddStage(0, nullptr), -1);
  EXPECT_EQ(group.AddStage(1, stages[0]), -1);
}

TEST_F(Stages, StopEndsTheStageThatRunsAndResubmitGoesOnFromIt) {
  const auto job = JobWith({"", "hang", ""});
  Group()->AddJob(job);
  ASSERT_TRUE(Group()->Submit());
  ASSERT_TRUE(WaitUntil([&] { return HasMessages(*job->stages[1]); }));
  EXPECT_FALSE(Group()->RemoveStage(0, 2));
  EXPECT_TRUE(Group()->Stop());
  EXPECT_FALSE(job->stages[1]->process.IsActive());
  EXPECT_EQ(Status(*Group(), 0), JobStatus::kAborted);
  EXPECT_EQ(StageNotes(), (std::vector<std::string>{"0 1", "0 2", "0 3", "1 1", "1 2", "1 4"}));

  Deck("stage1/deck.k");
  ASSERT_TRUE(Group()->SetFirstStage(0, 1));
  ASSERT_TRUE(Group()->Resubmit(0));
  EXPECT_EQ(Statuses(), (std::vector<int>{3, 0, 0}));
  ASSERT_TRUE(Group()->Submit());
  ASSERT_TRUE(WaitForEnd(*Group()));
  EXPECT_EQ(Status(*Group(), 0), JobStatus::kFinished);
  EXPECT_EQ(Statuses(), (std::vector<int>{3, 3, 3}));
  EXPECT_EQ(job->MessageFile(), job->stages[2]->MessageFile());
}

TEST_F(Stages, TheRequestToStopGoesToTheStageThatRuns) {
  EXPECT_EQ(AskSolverToStop(*manager_), SenseSwitch::kNoJob);
  const auto job = JobWith({"", "run 60"});
  for (const char* other : {"main/bg_switch", "stage0/bg_switch"}) home_.Write(other, "");
  Group()->AddJob(job);
  ASSERT_TRUE(Group()->Submit());
  ASSERT_TRUE(WaitUntil([&] { return HasMessages(*job->stages[1]); }));
  EXPECT_EQ(AskSolverToStop(*manager_), SenseSwitch::kNoSwitch);
  home_.Write("stage1/bg_switch", "");
  EXPECT_EQ(AskSolverToStop(*manager_), SenseSwitch::kAsked);
  EXPECT_TRUE(WaitForEnd(*Group()));
  EXPECT_EQ(Statuses(), (std::vector<int>{3, 3})) << "it wrote its dump and ended well";
  EXPECT_FALSE(std::filesystem::exists(home_ / "main/d3kil"));
}

TEST_F(Stages, ARemovedJobLosesTheSolverOfItsStage) {
  const auto removed = JobWith({"hang", ""});
  Group()->AddJob(removed);
  Group()->AddJob(Job("next"));
  ASSERT_TRUE(Group()->Submit());
  ASSERT_TRUE(WaitUntil([&] { return HasMessages(*removed->stages[0]); }));
  ASSERT_TRUE(Group()->RemoveJob(0));
  ASSERT_TRUE(WaitForEnd(*Group()));
  EXPECT_EQ(Status(*Group(), 0), JobStatus::kFinished);
  EXPECT_FALSE(removed->stages[0]->process.IsActive());
  EXPECT_EQ(removed->stages[1]->status, JobStatus::kQueued);
  EXPECT_EQ(StageNotes(), (std::vector<std::string>{"0 1", "0 2"}));
}

TEST_F(Stages, ADeckThatNamesStagesBecomesAJobWithThem) {
  const std::string one = home_.Write(
      "one.k", "*KEYWORD 800M\n$ SIMULATION: HOT FORMING\n$ RCMD-SOLVER: DOUBLE\n*END\n");
  const std::string two = Deck("two.dyn");
  const std::string text =
      "$ RUNFIRST: 2\n$ SPC WORKS IN ALL STAGES: "
      "YES\n*KEYWORD\n*INCLUDE\none.k\n*INCLUDE\ntwo.dyn\n";
  const std::string deck = home_.Write("main.k", text + "*END\n");
  JobRequest request = MakeJobRequest(files_.Get());
  request.pause = 6;
  request.ncpu = 5;
  request.dump = false;
  request.sGiven = true;
  request.restartFile = home_ / "d3dump01";
  const auto job = Make(request, deck);
  ASSERT_EQ(job->stages.size(), 2u);
  EXPECT_EQ(job->firstStage, 1);
  const auto& first = dynamic_cast<JobFileDyna&>(*job->stages[0]);
  const auto& second = dynamic_cast<JobFileDyna&>(*job->stages[1]);
  EXPECT_EQ(first.jobFile, one);
  EXPECT_EQ(first.simulationType, "HOT FORMING");
  EXPECT_EQ(first.solverType, Settings::kLsDynaDouble);
  EXPECT_EQ(first.memory, 800u);
  EXPECT_EQ(first.restartFile, "");
  EXPECT_EQ(second.jobFile, two);
  EXPECT_EQ(second.solverType, Settings::kLsDynaSingle);
  EXPECT_EQ(second.memory, 500u);
  EXPECT_EQ(second.pause, 6);
  EXPECT_EQ(second.ncpu, 5);
  EXPECT_FALSE(second.dump);
  EXPECT_TRUE(second.useSFile);
  EXPECT_TRUE(second.keepDeck);
  EXPECT_EQ(second.restartFile, request.restartFile);

  request.kind = 1;
  request.memory = 77;
  const auto forced = Make(request, deck);
  EXPECT_EQ(forced->stages[0]->GetSolverType(), Settings::kLsDynaSingle);
  EXPECT_EQ(forced->stages[0]->memory, 77u);

  const auto incomplete = Make(request, home_.Write("bad.k", text + "*INCLUDE\ngone.k\n"));
  EXPECT_TRUE(incomplete->stages.empty());
  EXPECT_TRUE(LogHolds(files_, "File [" + home_ / "gone.k" + "] does not exist"));
}

}  // namespace
