#include "core/JobInformation.h"

#include <algorithm>

#include "d3plot/ptkPostD3plotManager.h"
#include "progress/RunFiles.h"
#include "solvers/ReportText.h"
#include "solvers/SolverKinds.h"
#include "util/files/FileDirWrapper.h"
#include "util/files/IOWrapper.h"
#include "util/files/LineBlocks.h"

namespace {

constexpr std::int64_t kClockSlack = 5;  // seconds between this clock and a file server's

std::int64_t WrittenAt(const std::string& file) {
  std::int64_t created = 0, accessed = 0, modified = 0, size = 0;
  IOWrapperTxt::FileStatInfo(file, created, accessed, modified, size);
  return modified;
}

// Of a later run in the folder, which tells nothing of this one.
bool IsOfLaterRun(const std::string& file, const JobOutput& output) {
  return output.ended != 0 && WrittenAt(file) > output.ended + kClockSlack;
}

// Behind the report of the case by which the run was judged stand those of the others.
AnalysisReport ReportOf(const JobOutput& output, const AnalysisHooks& hooks) {
  AnalysisReport report = RowOfKind(output.solverType).report(output, hooks);
  if (!output.names.hasCases || output.messageFile.empty()) return report;
  const auto isOld = [&](const std::string& file) {
    return WrittenAt(file) < output.started - kClockSlack || IsOfLaterRun(file, output);
  };
  for (const RunFiles& one :
       FindCaseFiles(output.messageFile, CasesBy::kName, isOld, output.names)) {
    if (report.outcome == AnalysisReport::Outcome::kEnded) break;
    if (CaseNumberOf(one.output) == CaseNumberOf(output.messageFile)) continue;
    const AnalysisReport next = AnalyseMessageFile(one.output, hooks);
    report.outcome = std::max(report.outcome, next.outcome);
    report.lines.emplace_back();
    report.lines.insert(report.lines.end(), next.lines.begin(), next.lines.end());
  }
  return report;
}

void AddModelSize(const JobOutput& output, const AnalysisHooks& hooks,
                  std::vector<std::string>& lines) {
  const std::string file = FileDirWrapper::Join(output.folder, output.names.prefix + "d3plot");
  if (output.nodes && output.elements) {
    lines.push_back(Said(hooks, Message(MessageId::kReportElements, *output.elements)));
    lines.push_back(Said(hooks, Message(MessageId::kReportNodes, *output.nodes)));
    return;
  }
  if (!FileDirWrapper::FileExists(file) || IsOfLaterRun(file, output)) return;
  ptkPostD3plotManager manager;
  ptkUnstructuredGridManager grids;
  if (!manager.Open(file, grids)) {
    lines.push_back(Said(hooks, Message(MessageId::kReportNoModel, manager.Reader().Error())));
    return;
  }
  const ptkUnstructuredGrid& grid = grids.Grid();
  lines.push_back(Said(hooks, Message(MessageId::kReportElements, grid.NumberOfCells())));
  lines.push_back(Said(hooks, Message(MessageId::kReportNodes, grid.NumberOfPoints())));
}

// A line each.
void AddLastWords(const Message& words, const AnalysisHooks& hooks,
                  std::vector<std::string>& lines) {
  if (words.Empty()) return;
  if (!lines.empty()) lines.emplace_back();
  const std::string text = Said(hooks, words);
  for (std::size_t at = 0; at < text.size();) lines.emplace_back(TakeLine(text, at));
}

}  // namespace

std::vector<std::string> JobInformation(const JobOutput& output, const AnalysisHooks& hooks) {
  const SolverKindRow& row = RowOfKind(output.solverType);
  AnalysisReport report = ReportOf(output, hooks);
  if (report.outcome == AnalysisReport::Outcome::kEnded) return {};
  std::vector<std::string> lines = std::move(report.lines);
  for (std::string& line : lines) std::erase(line, '\n');
  const Message stopped = output.status == JobStatus::kAborted ? FailureMessage(output.failure)
                                                               : StoppedMessage(output.stoppedAt);
  const FailureKind kind = output.failure.kind;
  const bool needsReason = kind == FailureKind::kOldOutput || kind == FailureKind::kNotEnded;
  if (needsReason) lines.insert(lines.begin(), Said(hooks, output.reason));
  if (!stopped.Empty()) lines.insert(lines.begin(), Said(hooks, stopped));
  if (output.status == JobStatus::kFinished && row.runsDecks) AddModelSize(output, hooks, lines);
  AddLastWords(output.lastWords, hooks, lines);
  return lines;
}
