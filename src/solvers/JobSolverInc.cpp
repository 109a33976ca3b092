#include "solvers/Drivers.h"

#include <string_view>

#include "jobs/JobArguments.h"
#include "solvers/OutputAnalysis.h"
#include "solvers/RunSteps.h"
#include "util/files/LineBlocks.h"

JobSolverInc::JobSolverInc() : JobSolver(SolverKind::kInc) {}

bool JobSolverInc::Check(JobFile& job) {
  if (dynamic_cast<JobFileInc*>(&job) == nullptr) return FailAsOtherKind(job, solverType);
  const std::string& solver = job.run->settings.SolverPath(solverType);
  if (!CheckSolver(job, solver) || !CheckJobFile(job)) return false;
  if (!CheckCommandLinePath(job, PathWithoutExtension(job.jobFile)) ||
      !CheckCommandLinePath(job, FolderOf(solver))) {
    return false;
  }
  if (job.run->settings.inc_token.empty()) {
    return Fail(job, RunError::kNotStarted, Message(MessageId::kNoToken));
  }
  return true;
}

bool JobSolverInc::Describe(const JobFile& job, PTWrapperProcessStart& start) const {
  return DescribeProgram(job, job.run->settings.SolverPath(solverType), "ORLA-KR/INCSolver", start);
}

bool JobSolverInc::Start(JobFile& job) {
  if (!Check(job)) return false;
  RemoveOldFile(job, IncInfoFile(job.jobFile), MessageId::kOldMessageFileStays);
  PTWrapperProcessStart start;
  return Describe(job, start) && StartProcess(job, start, {IncInfoFile(job.jobFile)});
}

JobStatus JobSolverInc::Finish(JobFile& job) {
  Poll(job);
  const std::string path = IncInfoFile(job.jobFile);
  LineBlocks blocks(LineBlocks::LongLines::kInPieces);
  if (!blocks.Open(path)) return NotNormal(job, Message(MessageId::kOutputUnreadable, path));
  if (job.folderBefore.HoldsUnchanged(path)) return OnlyOldOutput(job, path);
  for (std::string_view block; blocks.Next(block);) {
    if (block.find("THE TOTAL TIME FOR") != std::string_view::npos) return JobStatus::kFinished;
  }
  return NotNormal(job, Message(MessageId::kNoTotalTime));
}

void JobSolverInc::Poll(JobFile& job) {
  const std::string file = IncInfoFile(job.jobFile);
  if (!job.folderBefore.HoldsUnchanged(file)) job.SetMessageFile(file);
}
