#include "runs/RunRecording.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <string_view>
#include <thread>

#include "d3plot/ptkPostD3plotManager.h"
#include "jobs/JobArguments.h"
#include "jobs/OutputPrefix.h"
#include "solvers/LastWords.h"
#include "solvers/MessageFiles.h"
#include "solvers/OutputAnalysis.h"
#include "solvers/PostResult.h"
#include "util/files/IOWrapper.h"
#include "util/text/DateTimeWrapper.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kCountPatience{10};
constexpr std::int64_t kClockSlack = 5;  // seconds by which a file server's clock may be behind
constexpr std::string_view kPlotName = "d3plot";

std::string Masked(const std::string& text, const std::string& secret) {
  return Message(MessageId::kForeignWords, text).Without(secret).English();
}

// In all cases of a deck that has some.
void CountMessages(RunRecord& record, const JobFile& stage) {
  if (record.messageFile.empty()) return;
  std::vector<std::string> files = {record.messageFile};
  if (OutputNamesOf(stage).hasCases) {
    for (std::string& kept : KeptCaseFiles(stage)) {
      if (CaseOf(kept) != CaseOf(record.messageFile)) files.push_back(std::move(kept));
    }
  }
  AnalysisHooks hooks;
  hooks.progress = [&stage, end = Clock::now() + kCountPatience](std::uint64_t, std::uint64_t) {
    return !stage.abort && Clock::now() < end;
  };
  std::int64_t errors = 0, warnings = 0;
  for (const std::string& file : files) {
    const AnalysisReport report = AnalyseMessageFile(file, hooks);
    if (report.outcome != AnalysisReport::Outcome::kRead) return;
    errors += report.errors;
    warnings += report.warnings;
  }
  record.errors = errors;
  record.warnings = warnings;
}

// In seconds since 1970; nothing when there is no such file.
std::optional<std::int64_t> WrittenAt(const std::string& path) {
  std::int64_t created = 0, accessed = 0, modified = 0, size = 0;
  if (!IOWrapperTxt::FileStatInfo(path, created, accessed, modified, size)) return std::nullopt;
  return modified;
}

// A restart goes on with the files of the run before.
bool IsOfRun(const std::string& path, const RunRecord& record) {
  const std::optional<std::int64_t> written = WrittenAt(path);
  return written && (!record.restartFile.empty() || *written >= record.started - kClockSlack);
}

// The head of the database tells; states are not read.
void CountModel(RunRecord& record, const JobFile& stage) {
  for (const std::string& path : PostResults(PostSourceOf(stage))) {
    if (!path.ends_with(kPlotName) || !IsOfRun(path, record)) continue;
    ptkPostD3plotManager manager;
    ptkUnstructuredGridManager grids;
    if (!manager.Open(path, grids)) continue;
    record.nodes = grids.Grid().NumberOfPoints();
    record.elements = grids.Grid().NumberOfCells();
    return;
  }
}

}  // namespace

RunRecord RecordWithoutStart(const JobFile& stage, int index, std::int64_t started,
                             JobStatus verdict) {
  PTWrapperProcessStart start;
  start.program = SolverProgram(stage.run->settings, stage.GetSolverType());
  start.folder = stage.Folder();
  start.token = PTWrapperProcess::NewToken();
  RunRecord record = RecordOfStart(stage, index, start);
  record.started = started;
  record.ended = std::max(started, DateTimeWrapper::CurrentTime());
  record.verdict = verdict;
  record.cpus = 0;
  static_cast<RunResult&>(record) = stage.Result();
  return record;
}

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
  record.cpus = CpusAskedFor(stage.GetSolverType(), *stage.run, start.commandLine);
  record.memory = stage.memory;
  record.extraOptions = Masked(stage.extraOptions, stage.run->settings.inc_token);
  record.ncpu = stage.ncpu;
  record.pause = stage.pause;
  if (const auto* const dyna = dynamic_cast<const JobFileDyna*>(&stage)) {
    record.useSFile = dyna->useSFile;
    record.dump = dyna->dump;
    record.outputName = dyna->outputName;
  }
  record.machine = MachineName();
  record.token = start.token;
  record.filesBefore = stage.folderBefore.Text();
  record.dumpsBefore = stage.dumpsBefore;
  return record;
}

ProcessIdentity ProcessOf(const RunRecord& record) {
  if (record.process.id != 0) return record.process;
  // One that was being started a moment ago cannot be told by its token until it is its program.
  constexpr std::int64_t kJustNow = 10;
  const bool isNew = std::abs(DateTimeWrapper::CurrentTime() - record.started) < kJustNow;
  std::int32_t found = PTWrapperProcess::FindStarted(record.token, record.folder);
  for (int looks = 0; isNew && found == 0 && looks < 10; ++looks) {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    found = PTWrapperProcess::FindStarted(record.token, record.folder);
  }
  return IdentityOfProcess(found);
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
  static_cast<RunResult&>(record) = stage.Result();
  record.errors = record.warnings = record.nodes = record.elements = std::nullopt;
  if (dynamic_cast<const JobFileDyna*>(&stage) == nullptr) return;
  CountMessages(record, stage);
  CountModel(record, stage);
}

void RecordUnwatchedEnd(RunRecord& record, const JobFile& stage) {
  const std::string console = ConsoleFileOf(stage);
  std::optional<std::int64_t> written = WrittenAt(record.messageFile);
  if (!written && !stage.folderBefore.HoldsUnchanged(console)) written = WrittenAt(console);
  if (!written || record.ended < record.started) return;
  record.ended = std::clamp(*written, record.started, record.ended);
}
