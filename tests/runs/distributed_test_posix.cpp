// Runs through an MPI launcher.
#include <signal.h>

#include <cstdlib>
#include <filesystem>

#include "RunFixture.h"
#include "runs/FolderUse.h"
#include "solvers/Verdict.h"
#include "support/ProcessesWith_posix.h"

namespace {

namespace fs = std::filesystem;

constexpr char kLauncher[] = "/usr/bin/mpiexec.hydra";

class DistributedTest : public RunTest {
 protected:
  DistributedTest() {
    context_.settings.use_mpp = true;
    context_.settings.mpi = 9;
  }
  // What is found as the launcher. Not a link: it looks for its helper beside the name that it was
  // called by.
  void SetLauncher(const std::string& script) {
    folder_.WriteProgram("mpiexec", "#!/bin/sh\n" + script);
  }
  const ScopedVariable path_{"PATH", folder_.Path() + ":" + std::getenv("PATH")};
};

TEST_F(DistributedTest, ADistributedRunOnFourRanks) {
  if (!Exists(kLauncher)) GTEST_SKIP() << "MPICH's launcher is not installed";
  SetLauncher(std::string("exec ") + kLauncher + " \"$@\"\n");
  context_.settings.mpi_param = "-n 4";
  fs::create_directory(folder_ / "my job");
  const std::string jobFolder = folder_ / "my job";
  const auto job = DynaJob(folder_.Write("my job/a.k", Deck("$ standin: echo\n")));
  folder_.Write("my job/d3kil", "sw1");
  folder_.Write("my job/mes0007", "old");
  EXPECT_EQ(Run(*job), JobStatus::kFinished) << job->RunMessage().English();
  EXPECT_EQ(job->MessageFile(), jobFolder + "/mes0000.krb");
  for (int rank = 1; rank < 4; ++rank) {
    EXPECT_TRUE(Exists(jobFolder + "/mes000" + std::to_string(rank)));
  }
  EXPECT_FALSE(Exists(jobFolder + "/mes0007"));
  EXPECT_FALSE(Exists(jobFolder + "/d3kil"));
  const Lines echo = ReadLines(jobFolder + "/standin_echo.txt");
  EXPECT_TRUE(Has(echo, "i=" + job->jobFile));
  EXPECT_TRUE(Has(echo, "memory2=50m"));
  EXPECT_TRUE(Has(echo, "LSTC_MEMORY=auto"));

  // Ranks end with their launcher.
  const auto endless = DynaJob(folder_.Write("my job/b.k", Deck("$ standin: run 60\n")));
  EXPECT_EQ(RunUntilItWrites(*endless), JobStatus::kAborted);
  EXPECT_TRUE(endless->process.Terminate());
}

// The others need not know of it: the first goes on to its end.
TEST_F(DistributedTest, AnErrorOfARankIsTheRunsWhateverTheFirstSays) {
  if (!Exists(kLauncher)) GTEST_SKIP() << "MPICH's launcher is not installed";
  SetLauncher(std::string("exec ") + kLauncher + " \"$@\"\n");
  context_.settings.mpi_param = "-n 4";
  const auto job = DynaJobWith("$ standin: failing-rank 2\n$ standin: fail 40500\n");
  EXPECT_EQ(RunJob(*job, setup_), JobStatus::kAborted);
  EXPECT_TRUE(ReadVerdict(folder_ / "mes0000.krb").normal);
  EXPECT_EQ(job->MessageFile(), folder_ / "mes0002.krb");
  const std::string words = job->RunMessage().English();
  EXPECT_NE(words.find("mes0002: *** Error 40500"), std::string::npos) << words;
  EXPECT_EQ(job->HowFailed(), (Failure{FailureKind::kSolverError, 40500}));
}

TEST_F(DistributedTest, ADistributedRunGoesOnFromTheDumpsOfAllItsRanks) {
  if (!Exists(kLauncher)) GTEST_SKIP() << "MPICH's launcher is not installed";
  SetLauncher(std::string("exec ") + kLauncher + " \"$@\"\n");
  context_.settings.mpi_param = "-n 2";
  const auto job = DynaJobWith("$ standin: dumps 4\n$ standin: run 5\n");
  context_.settings.host_lines = {"here 9"};
  int cpus = 0;
  setup_.recorded = [&cpus](const JobFile&, const RunRecord& record) { cpus = record.cpus; };
  std::thread stopper([&] {
    EXPECT_TRUE(WaitUntil([&] { return Exists(folder_ / "d3dump02.0000"); }));
    folder_.Write("d3dump03.0000", std::string(4096, ' '));  // the other rank did not come to it
    job->abort = true;
  });
  EXPECT_EQ(RunJob(*job, setup_), JobStatus::kAborted);
  stopper.join();
  EXPECT_EQ(job->RestartDump(), folder_ / "d3dump02");
  EXPECT_EQ(cpus, 2) << "the ranks that it had, whatever the table of hosts says";

  const auto restart = DynaJob("");
  restart->restartFile = job->RestartDump();
  EXPECT_EQ(RunJob(*restart, setup_), JobStatus::kFinished) << restart->RunMessage().English();
  EXPECT_NE(TempFolder::Read(folder_ / "mes0000.krb").find("1 t 4.0000E-01"), std::string::npos);
}

TEST_F(DistributedTest, AnAbortEndsTheRanksOfALauncherThatHasDied) {
  if (!Exists(kLauncher)) GTEST_SKIP() << "MPICH's launcher is not installed";
  SetLauncher(std::string(kLauncher) +
              " \"$@\" &\nuntil test -e die; do sleep 0.05; done\nkill -9 $$\n");
  context_.settings.mpi_param = "-n 2";
  const auto job = DynaJobWith("$ standin: run 60\n");
  std::size_t ranks = 0;
  std::thread stopper([&] {
    EXPECT_TRUE(WaitUntil([&] { return Exists(folder_ / "mes0001"); }));
    ranks = ProcessesWith("i=" + job->jobFile).size();
    job->abort = true;
    folder_.Write("die", "");
  });
  // The run's next look at the launcher finds it dead and the job aborted.
  Solver(job->GetSolverType()).pollTime = std::chrono::seconds(3);
  EXPECT_EQ(RunJob(*job, setup_), JobStatus::kAborted);
  stopper.join();
  EXPECT_GE(ranks, 2U);
  EXPECT_EQ(ProcessesWith("i=" + job->jobFile).size(), 0U);
}

TEST_F(DistributedTest, RanksThatOutliveTheirLauncherKeepTheFolder) {
  SetLauncher("sleep 30 & echo $! > rank\nkill -9 $$\n");
  const auto job = DynaJobWith("");
  EXPECT_EQ(RunJob(*job, setup_), JobStatus::kAborted);
  const pid_t rank = std::stoi(TempFolder::Read(folder_ / "rank"));
  FolderUse next("next.k");
  const FolderHolder holder = next.Take({folder_.Path()});
  EXPECT_EQ(holder.kind, FolderHolder::Kind::kSolver);
  EXPECT_EQ(holder.processId, rank);
  EXPECT_EQ(holder.job, job->jobFile);
  kill(rank, SIGKILL);
  EXPECT_TRUE(
      WaitUntil([&] { return next.Take({folder_.Path()}).kind == FolderHolder::Kind::kNobody; }));
}

TEST_F(DistributedTest, RunsInAFolderWithABackslashInItsName) {
  context_.settings.use_mpp = false;
  fs::create_directory(folder_ / "my\\job");
  const auto job = DynaJob(folder_.Write("my\\job/a.k", Deck("")));
  EXPECT_EQ(Run(*job), JobStatus::kFinished) << job->RunMessage().English();
  EXPECT_EQ(job->MessageFile(), folder_ / "my\\job/messag.krb");
  EXPECT_TRUE(Exists(folder_ / "my\\job/a.k.console.txt"));
}

TEST_F(DistributedTest, AMissingLauncherIsNamed) {
  const ScopedVariable path("PATH", folder_.Path());
  context_.settings.host_lines = {"A 0"};
  context_.settings.mpi = 3;
  context_.settings.memory2 = 0;
  const auto job = DynaJobWith("");
  ExpectFailure(*job, 6, "CreateProcess  mpirun i=" + job->jobFile + " failed");
}

}  // namespace
