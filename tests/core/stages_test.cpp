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

  // Place and status of each change that was told of the job's stages.
  std::vector<std::string> StageNotes(const JobFile& job) const {
    std::vector<std::string> notes;
    for (const std::string& note : seen_.Notes()) {
      for (std::size_t stage = 0; stage < job.stages.size(); ++stage) {
        const std::string start = "stage " + std::to_string(Group()->Id()) + " " +
                                  RecordingObserver::Text(job.id) + " " +
                                  RecordingObserver::Text(job.stages[stage]->id) + " ";
        if (note.starts_with(start))
          notes.push_back(std::to_string(stage) + " " + note.substr(start.size()));
      }
    }
    return notes;
  }

  std::vector<JobStatus> Statuses() const {
    std::vector<JobStatus> statuses;
    Group()->ReadJob(Id(0), [&](const JobFile& job) {
      for (const auto& stage : job.stages) statuses.push_back(stage->status);
    });
    return statuses;
  }

  static bool HasMessages(const JobFile& job) {
    return std::filesystem::exists(job.Folder() + "/messag");
  }

  JobFileDyna* Make(JobRequest request, const std::string& deck) {
    JobIntake intake(*manager_);
    request.jobFile = deck;
    intake.Add(request);
    intake.Drain();
    return dynamic_cast<JobFileDyna*>(JobIn(*Group(), Id(Group()->JobCount() - 1)));
  }
};

TEST_F(Stages, AreChangedOnlyWhileTheJobIsQueued) {
  JobGroup& group = *Group();
  const auto job = Job("a");
  const JobId id = job->id;
  group.AddJob(job);
  const auto stage = [&](std::size_t place) { return job->stages.at(place)->id; };
  std::vector<std::shared_ptr<JobFileDyna>> stages;
  for (int i = 0; i < 3; ++i) {
    stages.push_back(std::make_shared<JobFileDyna>(files_.Get()));
    EXPECT_TRUE(group.AddStage(id, stages.back()));
  }
  EXPECT_TRUE(group.SetFirstStage(id, stage(1)));
  EXPECT_FALSE(group.SetFirstStage(id, id));
  EXPECT_TRUE(group.MoveStage(id, stage(1), true));  // 1 0 2
  EXPECT_EQ(job->firstStage, 0);
  EXPECT_TRUE(group.MoveStage(id, stage(0), false));  // 0 1 2
  EXPECT_TRUE(group.RemoveStage(id, stage(0)));       // 1 2
  EXPECT_EQ(job->firstStage, 0);
  EXPECT_EQ(stage(0), stages[1]->id);
  EXPECT_TRUE(group.SetFirstStage(id, stage(1)));
  EXPECT_TRUE(group.RemoveStage(id, stage(1)));  // the first one to run itself, and the last
  EXPECT_EQ(job->firstStage, 0);

  EXPECT_TRUE(group.SetMemory(id, 700));
  EXPECT_TRUE(group.ChangeStage(id, stage(0), [](JobFile& found) {
    found.ncpu = 3;
    return true;
  }));
  EXPECT_EQ(stages[1]->memory, 700u);
  EXPECT_EQ(stages[1]->ncpu, 3);

  for (const JobStatus status : {JobStatus::kWaiting, JobStatus::kRunning}) {
    job->status = status;
    EXPECT_FALSE(group.AddStage(id, stages[0]));
    EXPECT_FALSE(group.RemoveStage(id, stage(0)));
    EXPECT_FALSE(group.MoveStage(id, stage(0), false));
  }
  EXPECT_FALSE(group.SetFirstStage(id, stage(0)));
  EXPECT_FALSE(group.ChangeStage(id, stage(0), [](JobFile&) { return true; }));
  job->status = JobStatus::kQueued;
  EXPECT_FALSE(group.AddStage(id, stages[1])) << "twice";
}

TEST_F(Stages, StopEndsTheStageThatRunsAndResubmitGoesOnFromIt) {
  const auto job = JobWith({"", "hang", ""});
  Group()->AddJob(job);
  ASSERT_TRUE(Group()->Submit());
  ASSERT_TRUE(WaitUntil([&] { return HasMessages(*job->stages[1]); }));
  EXPECT_FALSE(Group()->RemoveStage(job->id, job->stages[2]->id));
  EXPECT_TRUE(Group()->Stop());
  EXPECT_FALSE(job->stages[1]->process.IsActive());
  EXPECT_EQ(Status(*Group(), 0), JobStatus::kAborted);
  EXPECT_EQ(StageNotes(*job), (std::vector<std::string>{"0 1", "0 2", "0 3", "1 1", "1 2", "1 4"}));

  Deck("stage1/deck.k");
  ASSERT_TRUE(Group()->SetFirstStage(job->id, job->stages[1]->id));
  ASSERT_TRUE(Group()->Resubmit(job->id));
  EXPECT_EQ(Statuses(),
            (std::vector{JobStatus::kFinished, JobStatus::kQueued, JobStatus::kQueued}));
  ASSERT_TRUE(Group()->Submit());
  ASSERT_TRUE(WaitForEnd(*Group()));
  EXPECT_EQ(Status(*Group(), 0), JobStatus::kFinished);
  EXPECT_EQ(Statuses(), (std::vector<JobStatus>(3, JobStatus::kFinished)));
  EXPECT_EQ(job->MessageFile(), job->stages[2]->MessageFile());
}

TEST_F(Stages, TheRequestToStopGoesToTheStageThatRuns) {
  const auto ask = [&] { return AskSolverToStop(SolverToStop(*manager_)); };
  EXPECT_EQ(ask(), SenseSwitch::kNoJob);
  const auto job = JobWith({"", "run 60"});
  for (const char* other : {"main/bg_switch", "stage0/bg_switch"}) home_.Write(other, "");
  Group()->AddJob(job);
  ASSERT_TRUE(Group()->Submit());
  ASSERT_TRUE(WaitUntil([&] { return HasMessages(*job->stages[1]); }));
  EXPECT_EQ(ask(), SenseSwitch::kNoSwitch);
  home_.Write("stage1/bg_switch", "");
  EXPECT_EQ(ask(), SenseSwitch::kAsked);
  EXPECT_TRUE(WaitForEnd(*Group()));
  EXPECT_EQ(Statuses(), (std::vector<JobStatus>(2, JobStatus::kFinished)))
      << "it wrote its dump and ended well";
  EXPECT_FALSE(std::filesystem::exists(home_ / "main/d3kil"));
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
  request.dump = false;
  request.restartFile = home_ / "d3dump01";
  const auto job = Make(request, deck);
  ASSERT_EQ(job->stages.size(), 2u);
  EXPECT_EQ(job->firstStage, 1);
  const auto& first = dynamic_cast<JobFileDyna&>(*job->stages[0]);
  const auto& second = dynamic_cast<JobFileDyna&>(*job->stages[1]);
  EXPECT_EQ(first.jobFile, one);
  EXPECT_EQ(first.simulationType, "HOT FORMING");
  EXPECT_EQ(first.solverType, SolverKind::kLsDynaDouble);
  EXPECT_EQ(first.memory, 800u);
  EXPECT_EQ(first.restartFile, "");
  EXPECT_EQ(second.jobFile, two);
  EXPECT_EQ(second.solverType, SolverKind::kLsDynaSingle);
  EXPECT_EQ(second.memory, 500u);
  EXPECT_EQ(second.pause, 6);
  EXPECT_FALSE(second.dump);
  EXPECT_TRUE(second.keepDeck);
  EXPECT_EQ(second.restartFile, request.restartFile);

  request.kind = SolverKind::kLsDynaSingle;
  request.memory = 77;
  const auto forced = Make(request, deck);
  EXPECT_EQ(forced->stages[0]->GetSolverType(), SolverKind::kLsDynaSingle);
  EXPECT_EQ(forced->stages[0]->memory, 77u);

  const auto incomplete = Make(request, home_.Write("bad.k", text + "*INCLUDE\ngone.k\n"));
  EXPECT_TRUE(incomplete->stages.empty());
  EXPECT_TRUE(LogHolds(files_, "File [" + home_ / "gone.k" + "] does not exist"));
}

}  // namespace
