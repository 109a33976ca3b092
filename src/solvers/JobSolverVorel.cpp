#include "solvers/Drivers.h"

#include "jobs/JobArguments.h"
#include "solvers/OutputAnalysis.h"
#include "solvers/RunSteps.h"
#include "util/files/FileDirWrapper.h"
#include "util/files/InputFile.h"

namespace {

std::string ResultFile(const JobFile& job) {
  return PathWithoutExtension(job.jobFile) + ".lin";
}

}  // namespace

JobSolverVorel::JobSolverVorel() : JobSolver(SolverKind::kVorel) {}

bool JobSolverVorel::Check(JobFile& job) {
  if (dynamic_cast<JobFileVorel*>(&job) == nullptr) return FailAsOtherKind(job, solverType);
  return CheckSolver(job, job.run->settings.SolverPath(solverType)) && CheckJobFile(job) &&
         CheckCommandLinePath(job, PathWithoutExtension(job.jobFile));
}

bool JobSolverVorel::Describe(const JobFile& job, PTWrapperProcessStart& start) const {
  return DescribeProgram(job, job.run->settings.SolverPath(solverType), "ORLA-KR/VOREL", start);
}

bool JobSolverVorel::Start(JobFile& job) {
  if (!Check(job)) return false;
  RemoveOldFile(job, VorelOutFile(job.jobFile), MessageId::kOldOutFileStays);
  RemoveOldFile(job, ResultFile(job), MessageId::kOldLinFileStays);
  PTWrapperProcessStart start;
  return Describe(job, start) &&
         StartProcess(job, start, {ResultFile(job), VorelOutFile(job.jobFile)});
}

JobStatus JobSolverVorel::Finish(JobFile& job) {
  Poll(job);
  const std::string path = ResultFile(job);
  InputFile result;
  const bool isThere = result.Open(path) && result.Size() > 0;
  const bool isOld = job.folderBefore.HoldsUnchanged(path);
  if (isThere && !isOld) return JobStatus::kFinished;
  const bool isLeft = isThere && !FileDirWrapper::IsSameFile(path, job.jobFile);
  return isLeft ? OnlyOldOutput(job, path) : NotNormal(job, Message(MessageId::kNoResult, path));
}

void JobSolverVorel::Poll(JobFile& job) {
  const std::string file = VorelOutFile(job.jobFile);
  if (!job.folderBefore.HoldsUnchanged(file)) job.SetMessageFile(file);
}
