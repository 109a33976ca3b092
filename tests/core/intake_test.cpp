// How requests become jobs.
#include "core/JobIntake.h"
#include "GroupFixture.h"

namespace {

class Intake : public GroupTest {
 protected:
  // Adds a request for the file and gives the job that came of it.
  template <typename Kind>
  Kind* Make(const std::string& path, const std::function<void(JobRequest&)>& change = {}) {
    JobRequest request = MakeJobRequest(files_.Get());
    request.jobFile = path;
    if (change) change(request);
    intake_.Add(request);
    intake_.Drain();
    return dynamic_cast<Kind*>(JobIn(*Group(), Id(Group()->JobCount() - 1)));
  }

  JobIntake intake_{*manager_};
};

TEST_F(Intake, TheKindComesFromTheRequestThenTheEndingThenTheDeck) {
  const std::string asksForDouble = Deck("double.k", "$RCMD-SOLVER: DOUBLE\n");
  const struct {
    std::string path;
    std::optional<SolverKind> asked;
    SolverKind kind;
  } cases[] = {{home_.Write("a.DAT", ""), {}, SolverKind::kVorel},
               {home_.Write("b.dat", ""), SolverKind::kInc, SolverKind::kInc},
               {Deck("plain.k"), {}, SolverKind::kLsDynaSingle},
               {asksForDouble, {}, SolverKind::kLsDynaDouble},
               {asksForDouble, SolverKind::kLsDynaSingle, SolverKind::kLsDynaSingle}};
  for (const auto& [path, asked, kind] : cases) {
    const auto change = [asked = asked](JobRequest& request) { request.kind = asked; };
    EXPECT_EQ(Make<JobFile>(path, change)->GetSolverType(), kind) << path;
  }
}

TEST_F(Intake, MemoryIsTheRequestsThenTheDecksThenTheSettings) {
  const std::string deck = home_.Write("memory.k", "*KEYWORD 800M\n*END\n");
  EXPECT_EQ(Make<JobFile>(deck, [](JobRequest& r) { r.memory = 77; })->memory, 77u);
  EXPECT_EQ(Make<JobFile>(deck)->memory, 800u);
  EXPECT_EQ(Make<JobFile>(Deck("none.k"))->memory, 500u);
  files_.Set(&Settings::memory_auto, false);
  EXPECT_EQ(Make<JobFile>(deck)->memory, 500u);
  EXPECT_EQ(Make<JobFile>(home_.Write("v.dat", ""))->memory, 500u);
}

TEST_F(Intake, NoRequestIsLostWhateverIsWrongWithIt) {
  const auto missing = Make<JobFileDyna>(home_ / "missing.k", [](JobRequest& r) {
    r.sGiven = true;
    r.dump = false;
    r.ncpu = 5;
    r.pause = 6;
  });
  ASSERT_TRUE(missing);
  EXPECT_TRUE(missing->useSFile);
  EXPECT_FALSE(missing->dump);
  EXPECT_EQ(missing->ncpu, 5);
  EXPECT_EQ(missing->pause, 6);
  EXPECT_TRUE(LogHolds(files_, "File [" + home_ / "missing.k" + "] does not exist"));

  const auto restart = Make<JobFileDyna>("", [](JobRequest& r) { r.restartFile = "/x/d3dump01"; });
  ASSERT_TRUE(restart);
  EXPECT_EQ(restart->restartFile, FileDirWrapper::AbsolutePath("/x/d3dump01"));
  EXPECT_EQ(restart->jobFile, "");

  manager_->AddGroup("Group2");
  const auto gone = Make<JobFileDyna>(Deck("a.k"), [](JobRequest& r) { r.groupId = 123456; });
  EXPECT_TRUE(gone);

  manager_->RemoveGroup(1);
  manager_->RemoveGroup(0);
  intake_.Add(JobRequest());
  intake_.Drain();
  EXPECT_TRUE(LogHolds(files_, "No group for job [Null]"));
}

TEST_F(Intake, KeepsTheOrderAndTellsHowFarItIs) {
  std::vector<std::string> decks;
  for (int i = 0; i < 30; ++i) {
    decks.push_back(Deck(std::to_string(i) + ".k"));
    JobRequest request;
    request.jobFile = decks.back();
    intake_.Add(request);
  }
  intake_.Drain();
  std::vector<std::string> added;
  Group()->ReadJobs([&](const JobFile& job) { added.push_back(job.jobFile); });
  EXPECT_EQ(added, decks);
  EXPECT_FALSE(intake_.Busy());
  const std::vector<std::string> notes = seen_.Notes();
  const std::string last = notes.back();
  const std::size_t slash = last.find('/');
  EXPECT_EQ(last.substr(0, 7), "intake ");
  EXPECT_EQ(last.substr(7, slash - 7), last.substr(slash + 1)) << last;
}

TEST_F(Intake, CancelGivesUpWhatIsNotAJobYet) {
  std::string big = "*KEYWORD\n";
  while (big.size() < 30'000'000) big += "$ filling up a line of a deck that takes time to read\n";
  JobRequest request;
  request.jobFile = home_.Write("big.k", big);
  for (int i = 0; i < 50; ++i) intake_.Add(request);
  intake_.Cancel();
  intake_.Drain();
  EXPECT_LT(Group()->JobCount(), 50);
  const int before = Group()->JobCount();
  EXPECT_TRUE(Make<JobFileDyna>(Deck("after.k")));
  EXPECT_EQ(Group()->JobCount(), before + 1);
}

// Its job may move at any moment.
TEST_F(Intake, AStageJoinsItsJobWhereverThatMoves) {
  const std::string deck = Deck("stage.k");
  const auto job = Make<JobFileDyna>(Deck("main.k"));
  const auto other = Make<JobFileDyna>(Deck("other.k"));
  std::atomic<bool> end{false};
  std::vector<std::thread> movers(4);
  for (std::thread& mover : movers) {
    mover = std::thread([&] {
      while (!end) Group()->MoveJob(Id(0), false);
    });
  }
  JobRequest request = MakeJobRequest(files_.Get());
  request.jobFile = deck;
  request.stageOf = job->id;
  for (int i = 0; i < 800; ++i) intake_.Add(request);
  intake_.Drain();
  end = true;
  for (std::thread& mover : movers) mover.join();
  EXPECT_EQ(job->stages.size(), 800u);
  EXPECT_TRUE(other->stages.empty()) << other->stages.size();
}

}  // namespace
