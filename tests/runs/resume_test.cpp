// Runs that another copy of the program began.
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "RunFixture.h"
#include "runs/FolderUse.h"
#include "solvers/LastWords.h"
#include "support/OwnProgram.h"
#include "util/process/ProcessIdentity.h"

namespace {

// The deck, with which this program runs once more as the first copy: it dies as soon as it has
// written down the record of a solver that it started.
constexpr char kFirstCopy[] = "KR_TEST_FIRST_COPY";

// The main deck, and its stages when there are any.
std::shared_ptr<JobFileDyna> JobOf(const std::string& deck, const Settings& settings) {
  auto job = std::make_shared<JobFileDyna>(settings);
  job->jobFile = deck;
  std::string folder;
  FileDirWrapper::DirOf(deck, folder);
  for (const char* name : {"stage0", "stage1"}) {
    const std::string path = FileDirWrapper::Join(FileDirWrapper::Join(folder, name), "s.k");
    if (!FileDirWrapper::FileExists(path)) continue;
    auto stage = std::make_shared<JobFileDyna>(settings);
    stage->jobFile = path;
    stage->pause = 0;
    job->stages.push_back(stage);
  }
  return job;
}

int RunAsFirstCopy(const std::string& deck) {
  JobRunContext context;
  context.settings.solver_path.fill(StandinSolver());
  const auto solvers = MakeQuickSolvers();
  JobRunSetup setup;
  setup.begin = [&] { return context; };
  setup.solverFor = [&](SolverKind) { return solvers.front().get(); };
  setup.setStageStatus = [](JobFile&, JobStatus) {};
  setup.recorded = [&](const JobFile&, const RunRecord& record) {
    const bool isStarted = record.process.id != 0;
    if (isStarted && Exists(deck + ".lost")) std::_Exit(0);
    std::ofstream(deck + ".record")
        << record.started << ' ' << record.stage << ' ' << record.process.id << ' '
        << (record.process.mark.empty() ? "ended" : record.process.mark) << ' ' << record.token
        << '\n'
        << record.filesBefore;
    if (isStarted) std::_Exit(0);
  };
  RunJob(*JobOf(deck, context.settings), setup);
  return 1;
}

const OwnProgramChild firstCopy(kFirstCopy, RunAsFirstCopy);

class ResumeTest : public RunTest {
 protected:
  void SetUp() override {
    context_.note = [this](const Message& message) { notes_.push_back(message.Id()); };
    setup_.recorded = [this](const JobFile&, const RunRecord& record) {
      records_.push_back(record);
    };
  }
  void TearDown() override {
    PTWrapperProcess left;
    if (left.Open(record_.process, record_.token)) left.TerminateAll();
  }

  // The first copy has started the deck's solver and has died.
  void Begin(const std::string& deck) {
    PTWrapperProcess copy;
    ASSERT_TRUE(copy.Create(OwnProgram(kFirstCopy, deck)));
    ASSERT_TRUE(copy.WaitProc());
    ASSERT_EQ(copy.ExitCode(), 0);
    copy.Terminate();
    std::ifstream text(deck + ".record");
    text >> record_.started >> record_.stage >> record_.process.id >> record_.process.mark >>
        record_.token;
    text.ignore();
    record_.filesBefore.assign(std::istreambuf_iterator<char>(text), {});
    job_ = JobOf(deck, context_.settings);
  }
  std::string DeckWith(const std::string& commands) { return folder_.Write("a.k", Deck(commands)); }
  void WaitForItsEnd() {
    EXPECT_TRUE(WaitUntil([this] { return !Runs(record_.process); }));
  }
  std::string EndedUnwatched() const {
    return "Job [" + job_->jobFile + "] ended while Kestrun was not running";
  }

  RunRecord record_;
  std::shared_ptr<JobFileDyna> job_;
  std::vector<RunRecord> records_;
  std::vector<MessageId> notes_;
};

TEST_F(ResumeTest, OneThatStillRunsIsWatchedToItsEnd) {
  Begin(DeckWith("$ standin: run 2\n"));
  EXPECT_TRUE(Runs(record_.process));
  FolderUse other("other.k");
  EXPECT_EQ(other.Take({folder_.Path()}).kind, FolderHolder::Kind::kSolver);
  other.Release();

  EXPECT_EQ(ResumeRun(*job_, setup_, record_), JobStatus::kFinished);
  EXPECT_EQ(job_->RunMessage().English(), "");
  EXPECT_EQ(job_->MessageFile(), folder_ / "messag.krb");
  ASSERT_EQ(records_.size(), 2u);
  EXPECT_EQ(records_[0].verdict, JobStatus::kRunning);
  EXPECT_EQ(records_[1].verdict, JobStatus::kFinished);
  EXPECT_EQ(records_[1].started, record_.started);
  EXPECT_GE(records_[1].ended, record_.started);
  EXPECT_EQ(records_[1].errors, 0);
  EXPECT_GT(records_[1].nodes.value_or(0), 0);
#ifdef _WIN32
  EXPECT_EQ(records_[1].exitCode, 0);
  EXPECT_EQ(notes_, (std::vector{MessageId::kJobTakenOver, MessageId::kProcessEnded}));
#else
  EXPECT_EQ(records_[1].exitCode, std::nullopt);
  EXPECT_EQ(notes_, (std::vector{MessageId::kJobTakenOver, MessageId::kProcessEndedUnknown}));
#endif
  EXPECT_FALSE(Exists(folder_ / ".kr_running.txt"));
}

// The copy died before it could write down what it had started.
TEST_F(ResumeTest, OneWhoseProcessNobodyKnowsIsFoundByItsToken) {
  const std::string deck = DeckWith("$ standin: run 2\n");
  folder_.Write("a.k.lost", "");
  Begin(deck);
  EXPECT_EQ(record_.process.id, 0);
  record_.folder = folder_.Path();
  EXPECT_EQ(ResumeRun(*job_, setup_, record_), JobStatus::kFinished);
  EXPECT_EQ(job_->RunMessage().English(), "");
  EXPECT_NE(records_[0].process.id, 0);
  EXPECT_EQ(notes_.front(), MessageId::kJobTakenOver);
}

TEST_F(ResumeTest, AStopEndsIt) {
  Begin(DeckWith("$ standin: run 60\n"));
  std::thread stopper([this] {
    EXPECT_TRUE(WaitUntil([this] { return !job_->MessageFile().empty(); }));
    job_->abort = true;
  });
  EXPECT_EQ(ResumeRun(*job_, setup_, record_), JobStatus::kAborted);
  stopper.join();
  EXPECT_FALSE(Runs(record_.process));
  EXPECT_EQ(PTWrapperProcess::FindStarted(record_.token, folder_.Path()), 0);
}

TEST_F(ResumeTest, OneThatEndedMeanwhileIsJudgedByItsFiles) {
  folder_.Write("messag.krb", " E r r o r   t e r m i n a t i o n\n");  // of an earlier run
  Begin(DeckWith(""));
  WaitForItsEnd();
  const std::string messages = TempFolder::Read(folder_ / "messag");
  EXPECT_EQ(ResumeRun(*job_, setup_, record_), JobStatus::kFinished);
  EXPECT_EQ(job_->RunMessage().English(), EndedUnwatched());
  EXPECT_EQ(records_.back().exitCode, std::nullopt);

  // Its first copy was cut off after it had judged it.
  EXPECT_EQ(ResumeRun(*job_, setup_, record_), JobStatus::kFinished);
  EXPECT_EQ(TempFolder::Read(folder_ / "messag.krb"), messages);

  // All that is known of its end is when it last said something.
  using std::chrono::seconds;
  std::filesystem::remove(folder_ / "messag.krb");
  record_.started -= 1000;
  std::filesystem::last_write_time(ConsoleFileOf(*job_),
                                   std::filesystem::file_time_type::clock::now() - seconds(400));
  EXPECT_EQ(ResumeRun(*job_, setup_, record_), JobStatus::kAborted);
  EXPECT_NEAR(static_cast<double>(records_.back().ended - record_.started), 600, 10);
  EXPECT_EQ(job_->RunErrorCode(), 3);
  EXPECT_EQ(job_->RunMessage().English(), "No message file been generated when run job [" +
                                              job_->jobFile +
                                              "]; it ended while Kestrun was not running");
}

TEST_F(ResumeTest, WhatAnEarlierRunWroteDoesNotCount) {
  Begin(DeckWith("$ standin: run 60\n"));
  PTWrapperProcess solver;
  ASSERT_TRUE(solver.Open(record_.process, record_.token));
  solver.TerminateAll();
  std::filesystem::remove(folder_ / "messag");
  // As where it could not be removed before the start.
  FolderSnapshot before;
  before.Take({folder_.Write("a.messag", " N o r m a l    t e r m i n a t i o n\n")});
  record_.filesBefore = before.Text();
  EXPECT_EQ(ResumeRun(*job_, setup_, record_), JobStatus::kAborted);
  record_.filesBefore = "torn";
  EXPECT_EQ(ResumeRun(*job_, setup_, record_), JobStatus::kAborted);
}

TEST_F(ResumeTest, StagesGoOnAfterTheOneThatRan) {
  for (const char* name : {"stage0", "stage1"}) {
    std::filesystem::create_directory(folder_ / name);
    folder_.Write(std::string(name) + "/s.k", Deck("$ standin: run 1\n"));
  }
  Begin(folder_.Write("main.k", "*KEYWORD\n*END\n"));
  EXPECT_EQ(record_.stage, 0);
  EXPECT_EQ(ResumeRun(*job_, setup_, record_), JobStatus::kFinished);
  for (const auto& stage : job_->stages) EXPECT_EQ(stage->status, JobStatus::kFinished);
  ASSERT_EQ(records_.size(), 5u);
  EXPECT_EQ(records_[2].stage, 1);
  EXPECT_EQ(records_[2].process.id, 0) << "not started yet";
  EXPECT_EQ(records_[4].exitCode, 0);
}

}  // namespace
