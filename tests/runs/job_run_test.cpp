// Whole runs without a group, with a positioning library that writes down its calls.
#include <filesystem>
#include <fstream>
#include <limits>

#include "RunFixture.h"
#include "runs/SolverVersion.h"
#include "solvers/LastWords.h"

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using Clock = std::chrono::steady_clock;

class JobRunTest : public RunTest {
 protected:
  JobRunTest() {
    UseLibrary("qvas_whole");
    setup_.autoPosition = &autoPosition_;
  }

  void UseLibrary(const std::string& folder) {
    library_ = std::make_unique<PositioningLibrary>(std::string(KR_TEST_BIN_DIR) + "/" + folder);
    setup_.positioning = library_.get();
  }

  // A job in a folder of its own whose stages run in folders of theirs.
  std::shared_ptr<JobFileDyna> Job(const std::string& name, const std::string& mainComments,
                                   const Lines& stageCommands) {
    std::filesystem::create_directory(folder_ / name);
    auto job = std::make_shared<JobFileDyna>(context_.settings);
    job->jobFile = folder_.Write(name + "/main.k", mainComments + "*KEYWORD\n*END\n");
    for (const std::string& commands : stageCommands) {
      const std::string number = std::to_string(job->stages.size());
      std::filesystem::create_directory(folder_ / (name + "/" + number));
      auto stage = std::make_shared<JobFileDyna>(context_.settings);
      stage->jobFile =
          folder_.Write(name + "/" + number + "/stage" + number + ".k", Deck(commands));
      stage->pause = 0;
      job->stages.push_back(stage);
    }
    return job;
  }

  // Statuses of stages are written down among the library's calls.
  JobStatus RunWhole(JobFile& job) {
    JobRunSetup setup = setup_;
    setup.setStageStatus = [this, &job](JobFile& stage, JobStatus status) {
      stage.status = status;
      if (status == JobStatus::kRunning) sawAutoPosition_ = sawAutoPosition_ || autoPosition_;
      std::ofstream(Beside(job, "calls.txt"), std::ios::app)
          << "stage " << NumberOf(job, stage) << " " << static_cast<int>(status) << '\n';
    };
    return RunJob(job, setup);
  }

  static std::ptrdiff_t NumberOf(const JobFile& job, const JobFile& stage) {
    return std::find_if(job.stages.begin(), job.stages.end(),
                        [&](const auto& one) { return one.get() == &stage; }) -
           job.stages.begin();
  }
  static std::string Beside(const JobFile& job, const std::string& name) {
    return FileDirWrapper::Join(job.Folder(), name);
  }
  static Lines Calls(const JobFile& job) { return ReadLines(Beside(job, "calls.txt")); }

  int CountInLog(const std::string& part) {
    const std::lock_guard<std::mutex> lock(logMutex_);
    return static_cast<int>(std::count_if(log_.begin(), log_.end(), [&](const std::string& line) {
      return line.find(part) != std::string::npos;
    }));
  }

  static std::string HostOfConsoles() {
    const std::string host = std::string(KR_TEST_BIN_DIR) + "/krconsole";
    return FileDirWrapper::FileExists(host) ? host : host + ".exe";
  }

  // A solver in a folder of its own, since its report lies beside it.
  std::string OwnSolver() {
    const std::string name = std::filesystem::path(StandinSolver()).filename().string();
    std::filesystem::create_directory(folder_ / "solver with blank");
    const std::string copy = folder_ / ("solver with blank/" + name);
    std::filesystem::copy_file(StandinSolver(), copy);
    context_.settings.SolverPath(SolverKind::kLsDynaSingle) = copy;
    return copy;
  }

  std::unique_ptr<PositioningLibrary> library_;
  std::atomic<bool> autoPosition_{false};
  std::atomic<bool> sawAutoPosition_{false};
};

TEST_F(JobRunTest, EachStageIsPositionedBeforeItRuns) {
  const auto job = Job("a", "$ qvas: auto\n", {"", ""});
  EXPECT_EQ(RunWhole(*job), JobStatus::kFinished);
  EXPECT_EQ(Calls(*job),
            (Lines{"begin", "data main.k", "auto?", "open", "stage 0 1", "main main.k",
                   "position stage0.k", "stage 0 2", "stage 0 3", "stage 1 1", "main main.k",
                   "position stage1.k", "stage 1 2", "stage 1 3", "close", "end"}));
  EXPECT_TRUE(sawAutoPosition_);
  EXPECT_FALSE(autoPosition_);
  EXPECT_EQ(job->MessageFile(), Beside(*job->stages[1], "messag.krb"));
  EXPECT_EQ(job->RunErrorCode(), 0);
  EXPECT_EQ(job->run, nullptr);
}

TEST_F(JobRunTest, AStageThatFailsIsTheLast) {
  const auto job = Job("a", "$ qvas: auto\n", {"", "$ standin: fail\n", ""});
  EXPECT_EQ(RunWhole(*job), JobStatus::kAborted);
  const Lines calls = Calls(*job);
  EXPECT_EQ(Lines(calls.end() - 4, calls.end()), (Lines{"stage 1 2", "stage 1 4", "close", "end"}));
  EXPECT_EQ(job->stages[2]->status, JobStatus::kQueued);
  EXPECT_EQ(job->RunErrorCode(), 2);
  EXPECT_EQ(job->RunMessage().English(), job->stages[1]->RunMessage().English());
  EXPECT_EQ(runErrorCode_, 2);
}

TEST_F(JobRunTest, AFailedSolverTellsHowItEndedAndWhatItPrinted) {
  context_.console.host = HostOfConsoles();
  std::vector<RunRecord> records;
  setup_.recorded = [&](const JobFile&, const RunRecord& record) { records.push_back(record); };
  const auto refused = Job("a", "", {"$ standin: chatter 30\n$ standin: no-licence\n"});
  EXPECT_EQ(RunWhole(*refused), JobStatus::kAborted);
  EXPECT_EQ(refused->RunErrorCode(), 3);
  const std::string words = refused->LastWords().English();
  const std::string first = "The solver ended: exit code 1";
  EXPECT_TRUE(words.starts_with(first)) << words;
  EXPECT_EQ(records.back().lastWords, refused->LastWords());
  // A console that knows no colours shows what asked for them, behind the words.
  EXPECT_NE(words.find("\n part 30: 100%"), std::string::npos) << words;
  EXPECT_TRUE(
      words.ends_with("\n *** licence error: no server answers at 27008@licences\n"
                      "     checked 3 times within 15 seconds\n"
                      " the run ends: no licence"))
      << words;
  EXPECT_EQ(std::count(words.begin(), words.end(), '\n'), 21);

  // It has a message file: there is no need for more.
  const auto killed = Job("b", "", {"$ standin: kill 9\n"});
  EXPECT_EQ(RunWhole(*killed), JobStatus::kAborted);
  EXPECT_EQ(killed->RunErrorCode(), 2);
  const bool isSignal = PTWrapperProcess::SignalOf(128 + 9) == 9;
  EXPECT_EQ(killed->LastWords().English(),
            isSignal ? "The solver ended: killed by signal 9, out of memory?"
                     : "The solver ended: 0xC000013A: Ctrl+C, or its console was closed");

  // What lies there from an earlier run is not this one's.
  std::filesystem::remove(ConsoleFileOf(*refused->stages[0]));
  std::filesystem::create_directory(ConsoleFileOf(*refused->stages[0]));
  EXPECT_EQ(RunWhole(*refused), JobStatus::kAborted);
  EXPECT_EQ(refused->LastWords().English(), first);
  EXPECT_EQ(ExitWords(static_cast<int>(0xC0000135)).English(), "0xC0000135: a DLL is missing");
}

TEST_F(JobRunTest, HowAJobFailedIsAValue) {
  context_.console.host = HostOfConsoles();
  const auto how = [&](const std::string& name, const std::string& commands) {
    const auto job = Job(name, "", {commands});
    EXPECT_EQ(RunWhole(*job), JobStatus::kAborted) << name;
    EXPECT_EQ(job->HowFailed(), job->stages[0]->HowFailed());
    return FailureMessage(job->HowFailed()).English();
  };
  EXPECT_EQ(how("licence", "$ standin: no-licence\n"), "no licence");
  EXPECT_EQ(how("error", "$ standin: fail 40509\n"), "solver error 40509");
  EXPECT_EQ(how("silent", "$ standin: no-message\n"), "no message file");
  EXPECT_EQ(how("disk", "$ standin: disk-full\n"), "out of disk");
  const bool isSignal = PTWrapperProcess::SignalOf(128 + 9) == 9;
  EXPECT_EQ(how("killed", "$ standin: kill 9\n"), isSignal ? "killed by signal 9" : "crashed");
  setup_.stepFell = [](const JobFile&, const RunRecord&) { return true; };
  EXPECT_EQ(how("step", "$ standin: fail 40509\n"), "time step collapsed");

  // Stopped in its pause: nothing has failed.
  const auto stopped = Job("stopped", "", {""});
  stopped->abort = true;
  EXPECT_EQ(RunWhole(*stopped), JobStatus::kAborted);
  EXPECT_EQ(stopped->HowFailed(), Failure{FailureKind::kStopped});
  context_.settings.SolverPath(SolverKind::kLsDynaSingle) = folder_ / "no solver";
  EXPECT_EQ(how("missing", ""), "cannot start");
}

TEST_F(JobRunTest, WhenNothingIsToBePositioned) {
  const auto plain = Job("plain", "", {""});
  EXPECT_EQ(RunWhole(*plain), JobStatus::kFinished);
  EXPECT_EQ(Calls(*plain),
            (Lines{"begin", "data main.k", "auto?", "end", "stage 0 1", "stage 0 2", "stage 0 3"}));

  const auto restart = Job("restart", "$ qvas: auto\n", {""});
  restart->restartFile = folder_ / "d3dump01";
  EXPECT_EQ(RunWhole(*restart), JobStatus::kFinished);
  EXPECT_EQ(Calls(*restart), (Lines{"stage 0 1", "stage 0 2", "stage 0 3"}));
  EXPECT_FALSE(sawAutoPosition_);
}

TEST_F(JobRunTest, NothingRunsWhenTheLibraryCannotOpenItsOutput) {
  const auto job = Job("a", "$ qvas: auto\n$ qvas: cannot open\n", {""});
  EXPECT_EQ(RunWhole(*job), JobStatus::kAborted);
  const std::string message = "Auto Position [" + job->jobFile + "] open write dyna file failed";
  EXPECT_TRUE(Has(log_, message));
  EXPECT_EQ(job->RunMessage().English(), message);
  EXPECT_EQ(Calls(*job), (Lines{"begin", "data main.k", "auto?", "open"}));
  EXPECT_EQ(job->stages[0]->status, JobStatus::kQueued);
  EXPECT_FALSE(Exists(Beside(*job->stages[0], "messag.krb")));
}

TEST_F(JobRunTest, WithoutAWholeLibraryJobsRunAndTheLogSaysSoOnce) {
  for (const char* folder : {"qvas_broken", "no such folder"}) {
    UseLibrary(folder);
    for (const char* name : {"a", "b"}) {
      const auto job = Job(std::string(folder) + name, "$ qvas: auto\n", {""});
      EXPECT_EQ(RunWhole(*job), JobStatus::kFinished);
      EXPECT_EQ(Calls(*job), (Lines{"stage 0 1", "stage 0 2", "stage 0 3"}));
    }
  }
  EXPECT_EQ(CountInLog("jobs run without automatic positioning"), 2);
  EXPECT_EQ(CountInLog("it has no qvAsPositionEnd"), 1);
}

TEST_F(JobRunTest, BeginsAtTheFirstStageToRunAndPausesByPlaceInTheList) {
  const auto job = Job("a", "", {"", "", ""});
  job->stages[0]->pause = 1000;
  job->stages[1]->status = JobStatus::kFinished;
  job->stages[2]->pause = 2;
  job->firstStage = 2;
  const auto begin = Clock::now();
  EXPECT_EQ(RunWhole(*job), JobStatus::kFinished);
  EXPECT_GE(Clock::now() - begin, seconds(2));
  EXPECT_EQ(job->stages[0]->status, JobStatus::kQueued);
  EXPECT_EQ(job->stages[1]->status, JobStatus::kFinished);

  job->firstStage = 3;
  EXPECT_EQ(RunWhole(*job), JobStatus::kAborted);
  EXPECT_EQ(job->RunMessage().English(),
            "Job [" + job->jobFile + "] is to begin at stage 4 but has 3");
}

TEST_F(JobRunTest, AnAbortEndsTheStageOrThePause) {
  const auto job = Job("a", "$ qvas: auto\n",
                       {"$ standin: ignore-term\n$ standin: child\n$ standin: hang\n", ""});
  const auto abortWhen = [&job](const std::function<bool()>& ready) {
    return std::thread([&job, ready] {
      EXPECT_TRUE(WaitUntil(ready));
      job->abort = true;
      for (const auto& stage : job->stages) stage->abort = true;
    });
  };
  const std::string child = Beside(*job->stages[0], "standin_child.pid");
  std::thread stopper = abortWhen([&] { return !ReadLines(child).empty(); });
  EXPECT_EQ(RunWhole(*job), JobStatus::kAborted);
  stopper.join();
  EXPECT_EQ(job->stages[0]->status, JobStatus::kAborted);
  EXPECT_EQ(job->stages[1]->status, JobStatus::kQueued);
  EXPECT_FALSE(job->stages[0]->process.IsActive());
  std::vector<PTWrapperProcessInfo> processes;
  PTWrapperProcess::FindRunningProcessName(processes);
  const int id = std::stoi(ReadLines(child).front());
  EXPECT_TRUE(std::none_of(processes.begin(), processes.end(),
                           [id](const auto& process) { return process.processId == id; }));
  EXPECT_EQ(Calls(*job).back(), "end");

  job->ResetForRun();
  std::filesystem::remove(Beside(*job, "calls.txt"));
  folder_.Write("a/0/stage0.k", Deck(""));
  job->stages[1]->pause = 1000;
  stopper = abortWhen([&] { return Has(Calls(*job), "stage 1 1"); });
  EXPECT_EQ(RunWhole(*job), JobStatus::kAborted);
  stopper.join();
  const Lines calls = Calls(*job);
  EXPECT_EQ(Lines(calls.end() - 5, calls.end()),
            (Lines{"stage 0 3", "stage 1 1", "stage 1 4", "close", "end"}));
  EXPECT_FALSE(Exists(Beside(*job->stages[1], "messag.krb")));
}

TEST_F(JobRunTest, NothingStartsInAnAbortedPauseOrWhenTheJobIsNotWanted) {
  const auto job = Job("a", "", {});
  setup_.pause = seconds(1000);
  job->abort = true;
  EXPECT_EQ(RunWhole(*job), JobStatus::kAborted);

  job->abort = false;
  setup_.pause = seconds(1);
  setup_.begin = [] { return std::nullopt; };
  const auto begin = Clock::now();
  EXPECT_EQ(RunJob(*job, setup_), JobStatus::kAborted);
  EXPECT_GE(Clock::now() - begin, seconds(1));
  EXPECT_FALSE(Exists(Beside(*job, "messag.krb")));
}

TEST_F(JobRunTest, ReasonsThatNoDriverCouldGiveStayWithTheJobAndItsStage) {
  class Throwing : public JobSolver {
   public:
    Throwing() : JobSolver(SolverKind::kLsDynaSingle) {}

   private:
    bool Start(JobFile&) override { throw std::runtime_error("no more room"); }
    JobStatus Finish(JobFile&) override { return JobStatus::kFinished; }
  } throwing;
  for (const Lines& stages : {Lines(), Lines{"", ""}}) {
    const auto job = Job(stages.empty() ? "plain" : "staged", "", stages);
    const JobFile& first = stages.empty() ? *job : *job->stages[0];
    const auto expectReason = [&](int code, const std::string& reason) {
      EXPECT_EQ(RunWhole(*job), JobStatus::kAborted);
      EXPECT_EQ(runErrorCode_, code);
      EXPECT_TRUE(Has(log_, reason));
      for (const JobFile* one : {static_cast<const JobFile*>(job.get()), &first}) {
        EXPECT_EQ(one->RunErrorCode(), code);
        EXPECT_EQ(one->RunMessage().English(), reason);
      }
    };
    setup_.solverFor = [](SolverKind) { return nullptr; };
    expectReason(5, "No solver of type 0 for job [" + first.jobFile + "]");
    setup_.solverFor = [&](SolverKind) { return &throwing; };
    expectReason(6, "Run job [" + first.jobFile + "] failed: no more room");
  }
}

TEST_F(JobRunTest, JobsTakeTurnsAtTheLibraryAndAWaitingOneCanBeAborted) {
  const auto first = Job("a", "$ qvas: auto\n", {"$ standin: run 3\n"});
  const auto waiting = Job("b", "$ qvas: auto\n", {""});
  const auto aborted = Job("c", "$ qvas: auto\n", {""});
  std::thread firstThread([&] { EXPECT_EQ(RunWhole(*first), JobStatus::kFinished); });
  EXPECT_TRUE(WaitUntil([&] { return Has(Calls(*first), "stage 0 2"); }));
  std::thread waitingThread([&] { EXPECT_EQ(RunWhole(*waiting), JobStatus::kFinished); });
  std::thread abortedThread([&] { EXPECT_EQ(RunWhole(*aborted), JobStatus::kAborted); });
  EXPECT_TRUE(WaitUntil([&] { return CountInLog("waits for the positioning library") == 2; }));
  aborted->abort = true;
  abortedThread.join();
  EXPECT_FALSE(Has(Calls(*first), "end"));
  EXPECT_EQ(Calls(*aborted), (Lines{"stage 0 1", "stage 0 4"}));
  firstThread.join();
  waitingThread.join();
  EXPECT_EQ(Calls(*waiting).front(), "begin");
}

// The solver must answer within a time that is not ours to choose, so these run alone under Wine,
// where programs start slowly.
class JobRunVersionTest : public JobRunTest {};

TEST_F(JobRunVersionTest, HotFormingNeedsANewSolver) {
  const struct {
    const char* version;
    const char* simulation;
    bool runs;
  } cases[] = {{"R6.1.2 79068 old", "HOT FORMING", false},
               {"R6.1.2 79069 old", "HOT FORMING", true},
               {"R7.0.0 100 new", "HOT FORMING", true},
               {"R6.0.0 71482 new", "Hot Forming", true},
               {"R6.0.0 71482 new", "HOT FORMING ", true}};
  OwnSolver();
  int number = 0;
  for (const auto& c : cases) {
    const ScopedVariable version("STANDIN_VERSION", c.version);
    const auto job = Job(std::to_string(number++), "", Lines(c.runs ? 1 : 2));
    auto& last = dynamic_cast<JobFileDyna&>(*job->stages.back());
    last.simulationType = c.simulation;
    EXPECT_EQ(RunWhole(*job), c.runs ? JobStatus::kFinished : JobStatus::kAborted) << c.version;
    const std::string message =
        "LS-DYNA version is below R7.0.0 for the job [" + last.jobFile + "]  ";
    EXPECT_EQ(Has(log_, message), !c.runs);
    EXPECT_EQ(job->RunMessage().English(), c.runs ? "" : message);
    EXPECT_EQ(job->stages[0]->status, c.runs ? JobStatus::kFinished : JobStatus::kQueued);
  }
}

TEST_F(JobRunVersionTest, AHotFormingJobIsItsOwnOnlyStage) {
  OwnSolver();
  const ScopedVariable version("STANDIN_VERSION", "R9.0.0 100000 new");
  const auto job = Job("a", "$ qvas: auto\n", {});
  EXPECT_EQ(RunWhole(*job), JobStatus::kFinished);
  EXPECT_EQ(Calls(*job), Lines()) << "not yet one";
  job->simulationType = "HOT FORMING";
  job->firstStage = 4;
  EXPECT_EQ(RunWhole(*job), JobStatus::kFinished);
  EXPECT_EQ(Calls(*job), (Lines{"begin", "data main.k", "auto?", "open", "main main.k",
                                "position main.k", "close", "end"}));
  EXPECT_EQ(job->MessageFile(), Beside(*job, "messag.krb"));
}

TEST_F(JobRunTest, AJobWaitsForSpaceInItsFolder) {
  const auto job = DynaJob(folder_.Write("big.k", Deck("")));
  int least = std::numeric_limits<int>::max();
  std::vector<std::string> told;
  setup_.minFreeMb = [&] { return least; };
  setup_.waits = [&](const Message& message) {
    told.push_back(message.English());
    EXPECT_EQ(job->RunMessage(), message);
    least = 0;
  };
  EXPECT_EQ(RunJob(*job, setup_), JobStatus::kFinished) << job->RunMessage().English();
  EXPECT_EQ(told, (std::vector<std::string>{"Job [" + job->jobFile +
                                                "] waits: less than 2147483647 MB are free in its "
                                                "folder [" +
                                                job->Folder() + "]",
                                            ""}));
  least = std::numeric_limits<int>::max();
  setup_.waits = [&](const Message&) { job->abort = true; };
  EXPECT_EQ(RunJob(*job, setup_), JobStatus::kAborted);
}

TEST_F(JobRunTest, AJobWaitsForTheOneThatRunsInItsFolder) {
  const auto first = DynaJob(folder_.Write("first.k", Deck("$ standin: run 1.5\n")));
  const auto second = DynaJob(folder_.Write("second.k", Deck("")));
  const auto third = DynaJob(folder_.Write("third.k", Deck("")));
  std::atomic<int> running{0}, most{0}, waiting{0};
  const auto run = [&](JobFile& job, JobStatus& status) {
    JobRunSetup setup = setup_;
    setup.waits = [&](const Message& message) {
      if (message.Empty()) return;
      ++waiting;
      EXPECT_EQ(job.RunMessage(), message);
      EXPECT_EQ(message.English(), "Job [" + job.jobFile + "] waits for the job [" +
                                       first->jobFile + "], which runs in the same folder");
      if (&job == third.get()) job.abort = true;
    };
    setup.begin = [&] {
      const int now = ++running;
      most = std::max(most.load(), now);
      return context_;
    };
    status = RunJob(job, setup);
    if (!job.abort) --running;
  };
  JobStatus statuses[3] = {};
  std::thread runner([&] { run(*first, statuses[0]); });
  EXPECT_TRUE(WaitUntil([&] { return running == 1; }));
  run(*third, statuses[2]);
  run(*second, statuses[1]);
  runner.join();
  EXPECT_EQ(statuses[0], JobStatus::kFinished) << first->RunMessage().English();
  EXPECT_EQ(statuses[1], JobStatus::kFinished) << second->RunMessage().English();
  EXPECT_EQ(statuses[2], JobStatus::kAborted);
  EXPECT_TRUE(third->RunMessage().Empty());
  EXPECT_EQ(most, 1);
  EXPECT_EQ(waiting, 2);
}

}  // namespace
