// Command lines as the child sees them, with small scripts in the place of solvers.
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>

#include "SolverFixture.h"

namespace {

namespace fs = std::filesystem;

class DriverTest : public SolverTest {
 protected:
  // A solver that writes its arguments and its folder to "seen", then does what `lines` say.
  std::string Script(const std::string& name, const std::string& lines) {
    const std::string path = folder_.Write(
        name, "#!/bin/sh\nfor a in \"$@\"; do echo \"$a\"; done > seen\npwd >> seen\n" + lines);
    chmod(path.c_str(), 0755);
    return path;
  }

  template <typename Job>
  std::unique_ptr<Job> MakeJob(const std::string& name) {
    auto job = std::make_unique<Job>(context_.settings);
    job->jobFile = folder_.Write(name, "input");
    return job;
  }

  Lines Seen() const { return ReadLines(folder_ / "seen"); }
};

TEST_F(DriverTest, Inc) {
  context_.settings.solver_path[4] =
      Script("KVIN SC.EXE", "echo ' THE TOTAL TIME FOR ALL IS ABOUT 3 s' > \"$3_INFO.OUT\"\n");
  const auto job = MakeJob<JobFileInc>("part v2.x.fin");
  ExpectFailure(*job, 6,
                "No access token for the INC solver: set inc_token in the section SOLVER of the "
                "settings file");
  context_.settings.inc_token = "Secret.0123456789abcdef";
  EXPECT_EQ(Run(*job), JobStatus::kFinished) << job->RunMessage();
  EXPECT_EQ(Seen(), (Lines{"Secret.0123456789abcdef", folder_.Path(), folder_ / "part v2.x",
                           folder_.Path()}));
  EXPECT_EQ(job->MessageFile(), folder_ / "part v2.x_INFO.OUT");

  Script("KVIN SC.EXE", "echo unfinished > \"$3_INFO.OUT\"\n");
  EXPECT_EQ(Run(*job), JobStatus::kAborted);
  EXPECT_EQ(runErrorCode_, 2);
  Script("KVIN SC.EXE", "");
  EXPECT_EQ(Run(*job), JobStatus::kAborted) << "the old output was removed";

  // The token is not told, not even when the command line is.
  chmod((folder_ / "KVIN SC.EXE").c_str(), 0644);
  EXPECT_EQ(Run(*job), JobStatus::kAborted);
  EXPECT_EQ(runErrorCode_, 6);
  log_.push_back(job->RunMessage());
  for (const std::string& line : log_) EXPECT_EQ(line.find("Secret"), std::string::npos) << line;
}

TEST_F(DriverTest, Vorel) {
  context_.settings.solver_path[3] = Script("Vorel.exe", "echo mesh > \"$1.lin\"\n");
  const auto job = MakeJob<JobFileVorel>("part.dat");
  job->memory = 512;
  job->extraOptions = "-a \"b c\"";
  EXPECT_EQ(Run(*job), JobStatus::kFinished) << job->RunMessage();
  EXPECT_EQ(Seen(), (Lines{folder_ / "part", "512000", "-a", "b c", folder_.Path()}));
  Script("Vorel.exe", ": > \"$1.lin\"\n");
  EXPECT_EQ(Run(*job), JobStatus::kAborted) << "an empty result";
  Script("Vorel.exe", "");
  folder_.Write("part.lin", "old");
  folder_.Write("part.OUT", "old");
  EXPECT_EQ(Run(*job), JobStatus::kAborted);
  EXPECT_EQ(runErrorCode_, 2);
  EXPECT_FALSE(Exists(folder_ / "part.OUT"));
  const auto plain = MakeJob<JobFileVorel>("noext");
  EXPECT_EQ(Run(*plain), JobStatus::kAborted);
  EXPECT_EQ(Seen(), (Lines{folder_ / "noext", folder_.Path()}));
}

TEST_F(DriverTest, UtilityBatch) {
  context_.settings.solver_path[2] =
      Script("Utility Batch.exe", "echo ' N o r m a l    t e r m i n a t i o n' > messag\n");
  const auto job = MakeJob<JobFileDyna>("a.k");
  job->solverType = Settings::kUtilityBatch;
  job->memory = 100;
  folder_.Write("mes0000", "not its own");
  EXPECT_EQ(Run(*job), JobStatus::kFinished) << job->RunMessage();
  EXPECT_EQ(Seen(), (Lines{folder_ / "a.k", folder_.Path()}));
  EXPECT_EQ(job->MessageFile(), folder_ / "messag.krb");
  EXPECT_TRUE(Exists(folder_ / "mes0000"));
  job->extraOptions = "-v 2";
  Script("Utility Batch.exe", "");
  EXPECT_EQ(Run(*job), JobStatus::kAborted);
  EXPECT_EQ(runErrorCode_, 3);
  EXPECT_EQ(Seen(), (Lines{folder_ / "a.k", "-v", "2", folder_.Path()}));
}

TEST_F(DriverTest, RefusesNamesThatBreakACommandLine) {
  const auto job = MakeJob<JobFileDyna>("a \" b.k");
  ExpectFailure(*job, 6, "File name [" + job->jobFile + "] cannot be written on a command line");
}

TEST_F(DriverTest, ASolverWithBlanksInItsPath) {
  fs::create_directory(folder_ / "my solvers");
  const std::string solver = folder_ / "my solvers/ls dyna";
  fs::create_symlink(StandinSolver(), solver);
  context_.settings.solver_path[0] = solver;
  const auto job = DynaJobWith("$ standin: echo\n");
  job->ncpu = 2;
  EXPECT_EQ(Run(*job), JobStatus::kFinished) << job->RunMessage();
  const Lines echo = ReadLines(folder_ / "standin_echo.txt");
  EXPECT_TRUE(Has(echo, "ncpu=2"));
  EXPECT_TRUE(Has(echo, "i=" + job->jobFile));
}

// PATH with a folder in front, until the end of the test.
class PathBefore {
 public:
  explicit PathBefore(const std::string& folder, bool alone = false) : old_(std::getenv("PATH")) {
    SetSolverVariable("PATH", alone ? folder : folder + ":" + old_);
  }
  ~PathBefore() { SetSolverVariable("PATH", old_); }
  PathBefore(const PathBefore&) = delete;
  PathBefore& operator=(const PathBefore&) = delete;

 private:
  std::string old_;
};

TEST_F(DriverTest, ADistributedRunOnFourRanks) {
  const std::string launcher = "/usr/bin/mpiexec.hydra";
  if (!Exists(launcher)) GTEST_SKIP() << "MPICH's launcher is not installed";
  fs::create_directory(folder_ / "bin");
  // Not a link: the launcher looks for its helper beside the name that it was called by.
  const std::string wrapper =
      folder_.Write("bin/mpiexec", "#!/bin/sh\nexec " + launcher + " \"$@\"\n");
  chmod(wrapper.c_str(), 0755);
  const PathBefore path(folder_ / "bin");
  context_.settings.use_mpp = true;
  context_.settings.mpi = 9;
  context_.settings.mpi_param = "-n 4";
  fs::create_directory(folder_ / "my job");
  const std::string jobFolder = folder_ / "my job";
  const auto job = DynaJob(folder_.Write("my job/a.k", Deck("$ standin: echo\n")));
  folder_.Write("my job/d3kil", "sw1");
  folder_.Write("my job/mes0007", "old");
  EXPECT_EQ(Run(*job), JobStatus::kFinished) << job->RunMessage();
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

TEST_F(DriverTest, AMissingLauncherIsNamed) {
  const PathBefore path(folder_.Path(), true);
  context_.settings.use_mpp = true;
  context_.settings.host_lines = {"A 0"};
  context_.settings.mpi = 3;
  context_.settings.memory2 = 0;
  const auto job = DynaJobWith("");
  ExpectFailure(*job, 6, "CreateProcess  mpirun i=" + job->jobFile + " failed");
}

}  // namespace
