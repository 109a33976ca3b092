// The table of the solver kinds: what a row that was copied and half changed would break.
#include "solvers/SolverKinds.h"

#include <gtest/gtest.h>

#include <set>

#include "solvers/JobSolver.h"

namespace {

TEST(SolverKinds, ARowBelongsToItsKindAlone) {
  std::set<std::string> taken;
  for (const SolverKindRow& row : SolverKinds()) {
    EXPECT_EQ(&RowOfKind(row.kind), &row) << row.name;
    const auto job = row.makeJob(Settings());
    EXPECT_EQ(job->GetSolverType(), row.kind) << row.name;
    EXPECT_EQ(dynamic_cast<JobFileDyna*>(job.get()) != nullptr, row.runsDecks) << row.name;
    EXPECT_EQ(row.makeDriver()->solverType, row.kind) << row.name;

    EXPECT_TRUE(taken.insert("name " + std::string(row.name)).second) << row.name;
    EXPECT_TRUE(taken.insert("key " + std::string(row.settingsKey)).second) << row.settingsKey;
    for (const char* ending : row.jobEndings) {
      if (ending == nullptr) continue;
      EXPECT_TRUE(taken.insert("ending " + std::string(ending)).second) << ending;
      EXPECT_EQ(SolverKindOfFile(std::string("/a.b/c.") + ending), row.kind);
      // The chooser shows what the queue takes for the kind's files.
      EXPECT_NE(std::string(row.jobFilter).find(std::string("*.") + ending), std::string::npos);
    }
    if (row.handOverKey == nullptr) continue;
    EXPECT_TRUE(taken.insert(row.handOverKey + std::to_string(row.handOverValue)).second);
  }
  EXPECT_EQ(SolverKindOfFile("/a/B.FIN"), SolverKind::kInc);
  EXPECT_EQ(SolverKindOfFile("/a.dat/b"), SolverKind::kLsDynaSingle);
}

}  // namespace
