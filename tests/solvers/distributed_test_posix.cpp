// Runs through an MPI launcher.
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>

#include "SolverFixture.h"

namespace {

namespace fs = std::filesystem;

class DistributedTest : public SolverTest {};

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

TEST_F(DistributedTest, ADistributedRunOnFourRanks) {
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

TEST_F(DistributedTest, AMissingLauncherIsNamed) {
  const PathBefore path(folder_.Path(), true);
  context_.settings.use_mpp = true;
  context_.settings.host_lines = {"A 0"};
  context_.settings.mpi = 3;
  context_.settings.memory2 = 0;
  const auto job = DynaJobWith("");
  ExpectFailure(*job, 6, "CreateProcess  mpirun i=" + job->jobFile + " failed");
}

}  // namespace
