#include "solvers/JobSolver.h"

#include <algorithm>

#include "solvers/MessageFiles.h"
#include "solvers/RunSteps.h"
#include "solvers/SolverKinds.h"
#include "util/text/DateTimeWrapper.h"

JobSolver::JobSolver(SolverKind kind) : solverType(kind) {
  const SolverKindRow& row = RowOfKind(kind);
  displayName = row.name;
  selectSolverTitle = selectSolverTitle2 = row.programTitle.english;
  selectJobFileTitle = row.jobTitle.english;
  solverFilter = row.programFilter;
  defaultExecutable = row.program;
  jobFileFilter = row.jobFilter;
}

void JobSolver::Poll(JobFile&) {}

bool JobSolver::Check(JobFile&) {
  return true;
}

bool JobSolver::Describe(const JobFile&, PTWrapperProcessStart&) const {
  return false;
}

bool JobSolver::Command(JobFile& job, const JobRunContext& context, PTWrapperProcessStart& start) {
  const RunScope scope(job, context);
  job.SetRunError(0, {});
  Check(job);
  start.folder = job.Folder();
  return Describe(job, start);
}

JobStatus JobSolver::Run(JobFile& job, const JobRunContext& context) {
  const RunScope scope(job, context);
  job.SetRunError(0, {});
  job.SetMessageFile({});
  if (job.abort || !Start(job)) return JobStatus::kAborted;
  return WatchAndJudge(job);
}

JobStatus JobSolver::GoOn(JobFile& job, const JobRunContext& context) {
  const RunScope scope(job, context);
  job.SetRunError(0, {});
  job.SetMessageFile({});
  if (job.abort) return JobStatus::kAborted;
  if (!job.process.IsActive()) TakeBackMessageFiles(job);
  return WatchAndJudge(job);
}

JobStatus JobSolver::WatchAndJudge(JobFile& job) {
  Poll(job);
  while (job.process.IsActive()) {
    DateTimeWrapper::SleepMSec(static_cast<unsigned>(pollTime.count()));
    if (job.abort) return JobStatus::kAborted;
    Poll(job);
  }
  return Finish(job);
}

std::vector<std::unique_ptr<JobSolver>> MakeSolvers() {
  std::vector<std::unique_ptr<JobSolver>> solvers;
  for (const SolverKindRow& row : SolverKinds()) solvers.push_back(row.makeDriver());
  std::sort(solvers.begin(), solvers.end(),
            [](const auto& a, const auto& b) { return a->solverType < b->solverType; });
  return solvers;
}
