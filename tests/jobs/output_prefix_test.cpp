#include "jobs/OutputPrefix.h"

#include <gtest/gtest.h>

namespace {

TEST(OutputPrefix, IsWhatTheUserTypedElseTheJobsOwn) {
  const auto prefix = [](const char* options, const char* name = "part",
                         SolverKind kind = SolverKind::kLsDynaDouble) {
    return OutputPrefix(kind, name, options);
  };
  EXPECT_EQ(prefix(""), "part.");
  EXPECT_EQ(prefix("", ""), "");
  EXPECT_EQ(prefix("x=1 JOBID=a jobid=\"b c\" myjobid=d"), "b c.");
  EXPECT_EQ(prefix("jobid=a", "part", SolverKind::kUtilityBatch), "");

  JobRunContext context;
  JobFileDyna job(context.settings);
  job.run = &context;
  job.jobFile = "/d/a.k";
  job.outputName = "part";
  std::string line;
  EXPECT_TRUE(job.BuildArguments(line));
  EXPECT_EQ(line, "i=/d/a.k jobid=part");
  job.extraOptions = "jobid=mine";
  EXPECT_TRUE(job.BuildArguments(line));
  EXPECT_EQ(line, "i=/d/a.k jobid=mine");
}

TEST(OutputPrefix, ANameIsOneThatSolversTake) {
  std::set<std::string> taken = {"part", "part_2", "a_b"};
  const auto name = [&](const std::string& deck) { return OutputNameFor(deck, taken); };
  EXPECT_EQ(name("/d/run-7.k"), "run-7");
  EXPECT_EQ(name("/d/Part.dyn"), "Part_3");
  EXPECT_EQ(name("/d/a.b.k"), "a_b_2") << "a dot would end the name";
  EXPECT_EQ(name("/d/my part (new).k"), "my_part_new");
  EXPECT_EQ(name("/d/_x-.k"), "_x-");
  EXPECT_EQ(name("/d/零件_1-左.k"), "1");
  EXPECT_EQ(name("/d/侧围-A (2)左b.k"), "A_2_b");
  taken.insert("job2");
  EXPECT_EQ(name("/d/零件.k"), "job1");
  taken.insert("job1");
  EXPECT_EQ(name("/d/-零-件-.k") + name("/d/--.k"), "job3job3");
  EXPECT_EQ(name("/d/Case12.k"), "job_Case12") << "as the results of a case are called";
  const std::string longName(100, 'x');
  EXPECT_EQ(name("/d/" + longName + ".k"), longName.substr(0, 72));
  taken.insert(longName.substr(0, 72));
  EXPECT_EQ(name("/d/" + longName + ".k"), longName.substr(0, 70) + "_2");
}

}  // namespace
