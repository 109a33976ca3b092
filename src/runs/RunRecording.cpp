#include "runs/RunRecording.h"

#include "jobs/JobArguments.h"
#include "solvers/OutputAnalysis.h"
#include "util/text/DateTimeWrapper.h"

namespace {

std::string Masked(const std::string& text, const std::string& secret) {
  return Message(MessageId::kForeignWords, text).Without(secret).English();
}

int CpusOf(const JobFile& stage, const JobRunContext& context) {
  const Settings& settings = context.settings;
  if (settings.use_mpp && MppSolver(stage.GetSolverType()) != nullptr) {
    return static_cast<int>(BuildHostList(settings, context.groupText).cpus);
  }
  return stage.ncpu < 1 ? settings.cpu_count : stage.ncpu;
}

}  // namespace

RunRecord RecordOfStart(const JobFile& stage, int index, const PTWrapperProcessStart& start) {
  RunRecord record;
  record.started = DateTimeWrapper::CurrentTime();
  record.stage = index;
  record.solver = stage.GetSolverType();
  record.jobFile = stage.jobFile;
  record.restartFile = stage.restartFile;
  record.program = start.program;
  record.commandLine = Masked(start.commandLine, stage.run->settings.inc_token);
  record.folder = start.folder;
  record.variables = start.variables;
  record.cpus = CpusOf(stage, *stage.run);
  record.memory = stage.memory;
  record.machine = MachineName();
  record.process = IdentityOfProcess(stage.process.ChildId());
  record.token = stage.process.Token();
  record.filesBefore = stage.folderBefore.Text();
  record.dumpsBefore = stage.dumpsBefore;
  return record;
}

std::optional<int> KnownExitCode(const PTWrapperProcess& process) {
  if (process.ChildId() == 0 || process.IsActive()) return std::nullopt;
  const int code = process.ExitCode();
  return code == PTWrapperProcess::kUnknownExitCode ? std::nullopt : std::optional(code);
}

void RecordEnd(RunRecord& record, const JobFile& stage, JobStatus verdict,
               std::optional<int> exitCode) {
  record.ended = DateTimeWrapper::CurrentTime();
  record.exitCode = exitCode;
  record.verdict = verdict;
  record.errorCode = stage.RunErrorCode();
  record.reason = stage.RunMessage();
  record.messageFile = stage.MessageFile();
  record.restartDump = stage.RestartDump();
  if (record.messageFile.empty() || dynamic_cast<const JobFileDyna*>(&stage) == nullptr) return;
  AnalysisHooks hooks;
  hooks.progress = [&stage](std::uint64_t, std::uint64_t) { return !stage.abort; };
  const AnalysisReport report = AnalyseMessageFile(record.messageFile, hooks);
  if (report.outcome != AnalysisReport::Outcome::kRead) return;
  record.errors = report.errors;
  record.warnings = report.warnings;
}
