#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "jobs/JobFile.h"
#include "util/files/FileDirWrapper.h"

namespace {

TEST(JobFile, KnowsItsFolder) {
  JobFileVorel job{Settings()};
  EXPECT_EQ(job.Folder(), "");
  const std::string separator(1, FileDirWrapper::kSeparator);
  std::string here;
  FileDirWrapper::CurrentDir(here);
  job.restartFile = here + separator + "d3dump01";
  EXPECT_EQ(job.Folder(), here);
  job.jobFile = here + separator + "sub" + separator + "part.dat";
  EXPECT_EQ(job.Folder(), here + separator + "sub");
  job.jobFile = "part.dat";
  EXPECT_EQ(job.Folder(), here);
  const std::string root = here.substr(0, here.find(FileDirWrapper::kSeparator) + 1);
  job.jobFile = root + "part.dat";
  EXPECT_EQ(job.Folder(), root);
}

class Arguments : public testing::Test {
 protected:
  Arguments() : job_(context_.settings), settings_(context_.settings) {
    job_.run = &context_;
    job_.jobFile = "/d/a.k";
  }

  std::string Built() {
    std::string text;
    EXPECT_TRUE(job_.BuildArguments(text));
    return text;
  }

  void UseMpp(int mpi) {
    settings_.use_mpp = true;
    settings_.mpi = mpi;
    settings_.mpp_solver_s = "/s/mpp";
    settings_.mpp_solver_d = "/s/mpp d";
    settings_.memory2 = 0;
    settings_.host_lines = {"A                   4", "B                   8"};
  }

  JobRunContext context_;
  JobFileDyna job_;
  Settings& settings_;
};

TEST_F(Arguments, NameFilesAndMemory) {
  EXPECT_EQ(Built(), "i=/d/a.k");
  job_.memory = 1000;
  EXPECT_EQ(Built(), "i=/d/a.k memory=250m");
  job_.memory = 3;
  EXPECT_EQ(Built(), "i=/d/a.k memory=0m");
  job_.restartFile = "/d/d3dump01";
  EXPECT_EQ(Built(), "r=/d/d3dump01 i=/d/a.k memory=0m");
  job_.jobFile.clear();
  EXPECT_EQ(Built(), "r=/d/d3dump01 memory=0m");
}

TEST_F(Arguments, FollowTheSwitches) {
  settings_.cpu_count = 4;
  EXPECT_EQ(Built(), "i=/d/a.k ncpu=4");
  job_.ncpu = 1;
  EXPECT_EQ(Built(), "i=/d/a.k");
  job_.ncpu = 2;
  job_.useSFile = true;
  settings_.force = "inter face";
  settings_.output_dump = false;
  job_.caseRun = true;
  job_.extraOptions = "jobid=7 x";
  EXPECT_EQ(Built(), "i=/d/a.k ncpu=2 s=\"inter face\" d=nodump CASE jobid=7 x");
  settings_.output_dump = true;
  EXPECT_EQ(Built(), "i=/d/a.k ncpu=2 s=\"inter face\" CASE jobid=7 x");
  job_.dump = false;
  EXPECT_EQ(Built(), "i=/d/a.k ncpu=2 s=\"inter face\" d=nodump CASE jobid=7 x");
  job_.memory = 8;
  job_.solverType = SolverKind::kUtilityBatch;
  EXPECT_EQ(Built(), "i=/d/a.k s=\"inter face\" d=nodump CASE jobid=7 x");
}

TEST_F(Arguments, OfADistributedRun) {
  UseMpp(0);
  settings_.cpu_count = 8;
  EXPECT_EQ(Built(), "-hosts 2 A 4 B 8 /s/mpp i=/d/a.k");
  settings_.memory2 = 203;
  settings_.mpi_param = "-np 12";
  settings_.mpp_param = "32ieee=yes";
  job_.solverType = SolverKind::kLsDynaDouble;
  EXPECT_EQ(Built(), "-np 12 -hosts 2 A 4 B 8 \"/s/mpp d\" i=/d/a.k memory2=50m 32ieee=yes");
  settings_.mpi = 3;
  EXPECT_EQ(Built(), "-np 12 -hostlist A:4,B:8 \"/s/mpp d\" i=/d/a.k memory2=50m 32ieee=yes");
  settings_.mpi = 9;
  EXPECT_EQ(Built(), "-np 12 \"/s/mpp d\" i=/d/a.k memory2=50m 32ieee=yes");

  std::string text;
  job_.solverType = SolverKind::kInc;
  EXPECT_FALSE(job_.BuildArguments(text));
  job_.solverType = SolverKind::kUtilityBatch;
  EXPECT_EQ(Built(), "i=/d/a.k");
  job_.solverType = SolverKind::kLsDynaSingle;
  settings_.host_lines = {"A 0", "B -1"};
  EXPECT_EQ(Built(), "i=/d/a.k memory2=50m");
}

TEST_F(Arguments, FollowTheGroupsHosts) {
  UseMpp(2);
  context_.groupText = "200,3,0";
  EXPECT_EQ(Built(), "-hosts 1 A 3 /s/mpp i=/d/a.k");
  context_.groupText = "200,x,5";
  EXPECT_EQ(Built(), "-hosts 1 B 5 /s/mpp i=/d/a.k");
  context_.groupText = "200,0,0";
  EXPECT_EQ(Built(), "i=/d/a.k");
  for (const char* text : {"", "200", "200,3", "200,1,2,3", "200,,3"}) {
    context_.groupText = text;
    EXPECT_EQ(Built(), "-hosts 2 A 4 B 8 /s/mpp i=/d/a.k") << text;
  }
  settings_.host_lines = {"A\t2\r", "   ", "noCount"};
  EXPECT_EQ(Built(), "-hosts 1 A 2 /s/mpp i=/d/a.k");
}

}  // namespace
