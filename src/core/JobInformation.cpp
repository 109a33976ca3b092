#include "core/JobInformation.h"

#include <algorithm>

#include "d3plot/ptkPostD3plotManager.h"
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
    const std::string error = "  d3plot: " + manager.Reader().Error();
    lines.push_back(hooks.decode ? hooks.decode(error) : error);
    return;
  }
  lines.push_back("  Element Number is " + std::to_string(grids.Grid().NumberOfCells()));
  lines.push_back("  Node Number is " + std::to_string(grids.Grid().NumberOfPoints()));
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
