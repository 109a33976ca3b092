#include "solvers/Drivers.h"

#include "jobs/JobArguments.h"
#include "jobs/OutputPrefix.h"
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
    RemoveOldFile(job, FileDirWrapper::Join(job.Folder(), OutputPrefix(job) + "d3kil"),
                  MessageId::kOldMessageFileStays);
  }
}

// Reported, and the run goes on: the solver says what is wrong with the deck.
void Prepare(const JobFileDyna& job) {
  if (!job.restartFile.empty() || job.keepDeck || job.jobFile.empty()) return;
  const auto report = [&job](const Message& message) { Report(job, message); };
  PrepareDeck(job.jobFile, report, job.abort);
}

// Null when the driver cannot run it.
const JobFileDyna* DynaOf(const JobFile& job) {
  const auto* const dyna = dynamic_cast<const JobFileDyna*>(&job);
  const bool unfit =
      dyna == nullptr || (job.run->settings.use_mpp && MppSolver(dyna->solverType) == nullptr);
  return unfit ? nullptr : dyna;
}

std::string MemoryMode(const JobFileDyna& job) {
  const std::string& method = job.calculationMethod;
  const bool implicit = Holds(method, "IMPLICIT") || Holds(method, "implicit");
  return !implicit && job.run->settings.memory_auto ? "auto" : "";
}

}  // namespace

JobSolverLsDyna::JobSolverLsDyna(bool doublePrecision)
    : JobSolver(doublePrecision ? SolverKind::kLsDynaDouble : SolverKind::kLsDynaSingle) {}

bool JobSolverLsDyna::Check(JobFile& job) {
  const JobFileDyna* const dyna = DynaOf(job);
  if (dyna == nullptr) return FailAsOtherKind(job, solverType);
  if (!CheckSolver(job, SolverProgram(job.run->settings, dyna->solverType))) return false;
  return CheckRestartAndJobFile(job) &&
         (!dyna->useSFile || CheckCommandLinePath(job, job.run->settings.force));
}

bool JobSolverLsDyna::Describe(const JobFile& job, PTWrapperProcessStart& start) const {
  const JobFileDyna* const dyna = DynaOf(job);
  std::string arguments;
  if (dyna == nullptr || !job.BuildArguments(arguments)) return false;
  const Settings& settings = job.run->settings;
  const std::string& solver = SolverProgram(settings, dyna->solverType);
  start.program = settings.use_mpp ? std::string() : solver;
  start.commandLine =
      QuotedPath(settings.use_mpp ? MpiLauncher(settings) : solver) + ' ' + arguments;
  start.title = "ORLA-KR/LS-DYNA";
  start.variables = {{"LSTC_MEMORY", MemoryMode(*dyna)}};
  return true;
}

bool JobSolverLsDyna::Start(JobFile& job) {
  if (!Check(job)) return false;
  RemoveOldOutput(*DynaOf(job));
  Prepare(*DynaOf(job));
  PTWrapperProcessStart start;
  if (job.abort || !Describe(job, start)) return false;
  job.dumpsBefore = NewestDumpTime(job);
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
