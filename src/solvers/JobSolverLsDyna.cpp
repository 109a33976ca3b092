#include "solvers/JobSolverLsDyna.h"

#include "jobs/JobArguments.h"
#include "solvers/DeckPreparation.h"
#include "solvers/MessageFiles.h"
#include "solvers/RunSteps.h"
#include "util/files/FileDirWrapper.h"
#include "util/text/PlainText.h"

namespace {

// False, without a message, for a kind that has no executable for distributed runs.
bool SolverPath(const JobFileDyna& job, std::string& path) {
  const Settings& settings = job.run->settings;
  const SolverKind kind = job.solverType;
  if (settings.use_mpp) {
    path = MppSolverPath(settings, kind);
    return kind == SolverKind::kLsDynaSingle || kind == SolverKind::kLsDynaDouble;
  }
  path = settings.SolverPath(kind);
  return true;
}

void RemoveOldOutput(const JobFileDyna& job) {
  RemoveMessageFiles(job);
  // An earlier request to stop would end the new run.
  if (job.run->settings.use_mpp) {
    RemoveOldFile(job, FileDirWrapper::Join(job.Folder(), "d3kil"), "message");
  }
}

// Reported, and the run goes on: the solver says what is wrong with the deck.
void Prepare(const JobFileDyna& job) {
  if (!job.restartFile.empty() || job.keepDeck || job.jobFile.empty()) return;
  const auto report = [&job](const std::string& line) { Report(job, line); };
  PrepareDeck(job.jobFile, report, job.abort);
}

std::string MemoryMode(const JobFileDyna& job) {
  const std::string& method = job.calculationMethod;
  const bool implicit = Holds(method, "IMPLICIT") || Holds(method, "implicit");
  return !implicit && job.run->settings.memory_auto ? "auto" : "";
}

}  // namespace

JobSolverLsDyna::JobSolverLsDyna(bool doublePrecision) {
  solverType = doublePrecision ? SolverKind::kLsDynaDouble : SolverKind::kLsDynaSingle;
  displayName = doublePrecision ? "LS-DYNA (D)" : "LS-DYNA (S)";
  selectSolverTitle =
      doublePrecision ? "Select Double LS-DYNA Solver" : "Select Single LS-DYNA Solver";
  selectSolverTitle2 = selectSolverTitle;
  selectJobFileTitle = "Select DYNA File (LS-DYNA)";
  solverFilter = "LS-DYNA Solver (*.exe)|*.exe|";
  defaultExecutable = doublePrecision ? "lsdyna_d.exe" : "lsdyna.exe";
  jobFileFilter = kDeckFilter;
}

bool JobSolverLsDyna::Start(JobFile& job) {
  auto* const dyna = dynamic_cast<JobFileDyna*>(&job);
  std::string solver;
  if (dyna == nullptr || !SolverPath(*dyna, solver)) return false;
  if (!CheckSolver(job, solver) || !CheckRestartAndJobFile(job)) return false;
  if (dyna->useSFile && !CheckCommandLinePath(job, job.run->settings.force)) return false;
  RemoveOldOutput(*dyna);
  Prepare(*dyna);

  std::string arguments;
  if (job.abort || !job.BuildArguments(arguments)) return false;
  const bool mpp = job.run->settings.use_mpp;
  PTWrapperProcessStart start;
  start.program = mpp ? std::string() : solver;
  start.commandLine = QuotedPath(mpp ? MpiLauncher(job.run->settings) : solver) + ' ' + arguments;
  start.title = "ORLA-KR/LS-DYNA";
  start.variables = {{"LSTC_MEMORY", MemoryMode(*dyna)}};
  return StartProcess(job, start);
}

JobStatus JobSolverLsDyna::Finish(JobFile& job) {
  const std::string messageFile = FindMessageFile(job);
  const JobStatus status = JudgeRun(job, messageFile);
  if (!messageFile.empty() && job.run->settings.no_adapdump) RemoveAdaptDumps(job);
  return status;
}

void JobSolverLsDyna::Poll(JobFile& job) {
  const std::string file = FindMessageFile(job);
  if (!file.empty()) job.SetMessageFile(file);
}
