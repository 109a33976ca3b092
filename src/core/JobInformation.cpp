#include "core/JobInformation.h"

#include <algorithm>

#include "d3plot/ptkPostD3plotManager.h"
#include "solvers/ReportText.h"
#include "util/files/FileDirWrapper.h"

namespace {

AnalysisReport Analyse(const JobOutput& output, const AnalysisHooks& hooks) {
  if (RunsDecks(output.solverType)) return AnalyseMessageFile(output.messageFile, hooks);
  if (output.solverType == SolverKind::kVorel) return AnalyseVorelOut(output.jobFile, hooks);
  if (output.solverType == SolverKind::kInc)
    return AnalyseIncInfo(output.jobFile, output.status, hooks);
  return {};
}

void AddModelSize(const std::string& folder, const AnalysisHooks& hooks,
                  std::vector<std::string>& lines) {
  const std::string file = FileDirWrapper::Join(folder, "d3plot");
  if (!FileDirWrapper::FileExists(file)) return;
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

}  // namespace

JobOutput OutputOf(const JobFile& job) {
  return {job.GetSolverType(), job.status, job.jobFile, job.Folder(), job.MessageFile()};
}

std::vector<std::string> JobInformation(const JobOutput& output, const AnalysisHooks& hooks) {
  AnalysisReport report = Analyse(output, hooks);
  if (report.outcome == AnalysisReport::Outcome::kEnded) return {};
  std::vector<std::string> lines = std::move(report.lines);
  for (std::string& line : lines) std::erase(line, '\n');
  if (output.status == JobStatus::kFinished && RunsDecks(output.solverType))
    AddModelSize(output.folder, hooks, lines);
  return lines;
}
