#include "solvers/JobSolverInc.h"

#include <string_view>

#include "jobs/JobArguments.h"
#include "solvers/OutputAnalysis.h"
#include "solvers/RunSteps.h"
#include "util/files/LineBlocks.h"

JobSolverInc::JobSolverInc() : JobSolver(SolverKind::kInc) {}

bool JobSolverInc::Start(JobFile& job) {
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
  RemoveOldFile(job, IncInfoFile(job.jobFile), MessageId::kOldMessageFileStays);

  std::string arguments;
  if (!job.BuildArguments(arguments)) return false;
  PTWrapperProcessStart start;
  start.program = solver;
  start.commandLine = QuotedPath(solver) + ' ' + arguments;
  start.title = "ORLA-KR/INCSolver";
  return StartProcess(job, start, {IncInfoFile(job.jobFile)});
}

JobStatus JobSolverInc::Finish(JobFile& job) {
  LineBlocks blocks(LineBlocks::LongLines::kInPieces);
  if (!blocks.Open(job.MessageFile())) {
    return NotNormal(job, Message(MessageId::kOutputUnreadable, job.MessageFile()));
  }
  if (job.folderBefore.HoldsUnchanged(job.MessageFile())) {
    return NotNormal(job, Message(MessageId::kOldOutput, job.MessageFile()));
  }
  for (std::string_view block; blocks.Next(block);) {
    if (block.find("THE TOTAL TIME FOR") != std::string_view::npos) return JobStatus::kFinished;
  }
  return NotNormal(job, Message(MessageId::kNoTotalTime));
}

void JobSolverInc::Poll(JobFile& job) {
  job.SetMessageFile(IncInfoFile(job.jobFile));
}
