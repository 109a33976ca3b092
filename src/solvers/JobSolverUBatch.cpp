#include "solvers/Drivers.h"

#include "jobs/JobArguments.h"
#include "solvers/MessageFiles.h"
#include "solvers/RunSteps.h"
#include "solvers/Verdict.h"
#include "util/files/FileDirWrapper.h"

namespace {

constexpr char kMessageFile[] = "messag";

std::string MessageFile(const JobFile& job) {
  return FindMessageFile(job, kMessageFile);
}

}  // namespace

JobSolverUBatch::JobSolverUBatch() : JobSolver(SolverKind::kUtilityBatch) {}

bool JobSolverUBatch::Check(JobFile& job) {
  if (dynamic_cast<JobFileDyna*>(&job) == nullptr) return FailAsOtherKind(job, solverType);
  return CheckSolver(job, job.run->settings.SolverPath(solverType)) && CheckJobFile(job) &&
         CheckCommandLinePath(job, job.jobFile, true);
}

bool JobSolverUBatch::Describe(const JobFile& job, PTWrapperProcessStart& start) const {
  const std::string& solver = job.run->settings.SolverPath(solverType);
  start.program = solver;
  start.commandLine = QuotedPath(solver) + " \"" + job.jobFile + '"';
  if (!job.extraOptions.empty()) start.commandLine += ' ' + job.extraOptions;
  start.title = "ORLA-KR/UTILITYBATCH";
  return true;
}

bool JobSolverUBatch::Start(JobFile& job) {
  if (!Check(job)) return false;
  const std::string old = MessageFile(job);
  if (!old.empty()) RemoveOldFile(job, old, MessageId::kOldMessageFileStays);
  // By the name that is asked for later: where case does not matter it may be called "MESSAG".
  std::vector<std::string> before = MessageAndKeptFiles(job);
  before.push_back(FileDirWrapper::Join(job.Folder(), kMessageFile));
  PTWrapperProcessStart start;
  return Describe(job, start) && StartProcess(job, start, before);
}

JobStatus JobSolverUBatch::Finish(JobFile& job) {
  const std::string file = MessageFile(job);
  return JudgeRun(job, file.empty() ? std::vector<std::string>{} : std::vector{file});
}

void JobSolverUBatch::Poll(JobFile& job) {
  const std::string file = MessageFile(job);
  if (!file.empty() && !job.folderBefore.HoldsUnchanged(file)) job.SetMessageFile(file);
}
