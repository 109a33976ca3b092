#include "solvers/JobSolverUBatch.h"

#include "jobs/JobArguments.h"
#include "solvers/MessageFiles.h"
#include "solvers/RunSteps.h"
#include "util/FileDirWrapper.h"

namespace {

std::string MessageFile(const JobFile& job) {
  return FileDirWrapper::Join(job.Folder(), "messag");
}

}  // namespace

JobSolverUBatch::JobSolverUBatch() {
  solverType = Settings::kUtilityBatch;
  displayName = "UTILITYBATCH";
  selectSolverTitle = selectSolverTitle2 = "Select UTILITYBATCH";
  selectJobFileTitle = "Select DYNA File (LS-DYNA)";
  solverFilter = "UTILITYBATCH (*.exe)|*.exe|";
  defaultExecutable = "UtilityBatch.exe";
  jobFileFilter = "Dyna File (*.dyn;*.k)|*.dyn;*.k|All Files (*.*)|*|";
}

bool JobSolverUBatch::Start(JobFile& job) {
  if (dynamic_cast<JobFileDyna*>(&job) == nullptr) return false;
  const std::string& solver = job.run->settings.solver_path[Settings::kUtilityBatch];
  if (!CheckSolver(job, solver) || !CheckJobFile(job)) return false;
  if (!CheckCommandLinePath(job, job.jobFile, true)) return false;
  RemoveOldFile(job, MessageFile(job), "message");

  ProcessStart start;
  start.program = solver;
  start.commandLine = QuotedPath(solver) + " \"" + job.jobFile + '"';
  if (!job.extraOptions.empty()) start.commandLine += ' ' + job.extraOptions;
  start.title = "ORLA-KR/UTILITYBATCH";
  return StartProcess(job, start);
}

int JobSolverUBatch::Finish(JobFile& job) {
  const std::string file = MessageFile(job);
  return JudgeRun(job, FileDirWrapper::FileExists(file) ? file : std::string());
}

void JobSolverUBatch::Poll(JobFile& job) {
  const std::string file = MessageFile(job);
  if (FileDirWrapper::FileExists(file)) job.SetMessageFile(file);
}
