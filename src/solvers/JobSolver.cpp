#include "solvers/JobSolver.h"

#include "solvers/JobSolverInc.h"
#include "solvers/JobSolverLsDyna.h"
#include "solvers/JobSolverUBatch.h"
#include "solvers/JobSolverVorel.h"
#include "solvers/RunSteps.h"
#include "util/text/DateTimeWrapper.h"

namespace {

constexpr unsigned kPollMilliseconds = 1000;

}  // namespace

void JobSolver::Poll(JobFile&) {}

JobStatus JobSolver::Run(JobFile& job, const JobRunContext& context) {
  const RunScope scope(job, context);
  job.SetRunError(0, {});
  job.SetMessageFile({});
  if (job.abort || !Start(job)) return JobStatus::kAborted;
  while (job.process.IsActive()) {
    DateTimeWrapper::SleepMSec(kPollMilliseconds);
    if (job.abort) return JobStatus::kAborted;
    Poll(job);
  }
  return Finish(job);
}

std::vector<std::unique_ptr<JobSolver>> MakeSolvers() {
  std::vector<std::unique_ptr<JobSolver>> solvers;
  solvers.push_back(std::make_unique<JobSolverLsDyna>(false));
  solvers.push_back(std::make_unique<JobSolverLsDyna>(true));
  solvers.push_back(std::make_unique<JobSolverUBatch>());
  solvers.push_back(std::make_unique<JobSolverVorel>());
  solvers.push_back(std::make_unique<JobSolverInc>());
  return solvers;
}
