// Whole runs of jobs, without a group.
#ifndef KR_TESTS_RUNS_RUNFIXTURE_H
#define KR_TESTS_RUNS_RUNFIXTURE_H

#include "runs/JobRun.h"
#include "support/SolverFixture.h"

class RunTest : public SolverTest {
 protected:
  RunTest() {
    setup_.begin = [this] { return context_; };
    setup_.solverFor = [this](SolverKind kind) { return &Solver(kind); };
    setup_.setStageStatus = [](JobFile& stage, JobStatus status) { stage.status = status; };
  }

  JobRunSetup setup_;
};

#endif
