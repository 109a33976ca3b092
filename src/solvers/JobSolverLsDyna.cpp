#include "solvers/JobSolverLsDyna.h"

#include "jobs/JobArguments.h"
#include "solvers/DeckPreparation.h"
#include "solvers/MessageFiles.h"
#include "solvers/RestartDump.h"
#include "solvers/RunSteps.h"
#include "solvers/Verdict.h"
#include "util/files/FileDirWrapper.h"
#include "util/text/PlainText.h"

namespace {

void RemoveOldOutput(const JobFileDyna& job) {
  RemoveMessageFiles(job);
  // An earlier request to stop would end the new run.
  if (job.run->settings.use_mpp) {
    RemoveOldFile(job, FileDirWrapper::Join(job.Folder(), "d3kil"),
                  MessageId::kOldMessageFileStays);
  }
}

// Reported, and the run goes on: the solver says what is wrong with the deck.
void Prepare(const JobFileDyna& job) {
  if (!job.restartFile.empty() || job.keepDeck || job.jobFile.empty()) return;
  const auto report = [&job](const Message& message) { Report(job, message); };
  PrepareDeck(job.jobFile, report, job.abort);
}

std::string MemoryMode(const JobFileDyna& job) {
  const std::string& method = job.calculationMethod;
  const bool implicit = Holds(method, "IMPLICIT") || Holds(method, "implicit");
  return !implicit && job.run->settings.memory_auto ? "auto" : "";
}

}  // namespace

JobSolverLsDyna::JobSolverLsDyna(bool doublePrecision)
    : JobSolver(doublePrecision ? SolverKind::kLsDynaDouble : SolverKind::kLsDynaSingle) {}

bool JobSolverLsDyna::Start(JobFile& job) {
  auto* const dyna = dynamic_cast<JobFileDyna*>(&job);
  const bool mpp = job.run->settings.use_mpp;
  if (dyna == nullptr || (mpp && MppSolver(dyna->solverType) == nullptr)) {
    return FailAsOtherKind(job, solverType);
  }
  const std::string& solver = SolverProgram(job.run->settings, dyna->solverType);
  if (!CheckSolver(job, solver) || !CheckRestartAndJobFile(job)) return false;
  if (dyna->useSFile && !CheckCommandLinePath(job, job.run->settings.force)) return false;
  RemoveOldOutput(*dyna);
  Prepare(*dyna);

  std::string arguments;
  if (job.abort || !job.BuildArguments(arguments)) return false;
  PTWrapperProcessStart start;
  start.program = mpp ? std::string() : solver;
  start.commandLine = QuotedPath(mpp ? MpiLauncher(job.run->settings) : solver) + ' ' + arguments;
  start.title = "ORLA-KR/LS-DYNA";
  start.variables = {{"LSTC_MEMORY", MemoryMode(*dyna)}};
  job.dumpsBefore = NewestDumpTime(job.Folder());
  return StartProcess(job, start, MessageAndKeptFiles(job));
}

JobStatus JobSolverLsDyna::Finish(JobFile& job) {
  const std::vector<std::string> files = WrittenMessageFiles(job);
  const JobStatus status = JudgeRun(job, files);
  if (!files.empty() && job.run->settings.no_adapdump) RemoveAdaptDumps(job);
  return status;
}

// A run with cases is at the last of them.
void JobSolverLsDyna::Poll(JobFile& job) {
  const std::vector<std::string> files = CaseMessageFiles(job);
  if (!files.empty()) job.SetMessageFile(files.back());
}
