#include "solvers/PostResult.h"

#include <algorithm>

#include "jobs/JobArguments.h"
#include "jobs/OutputPrefix.h"
#include "solvers/MessageFiles.h"
#include "solvers/SolverKinds.h"
#include "util/files/FileDirWrapper.h"
#include "util/text/PlainText.h"

namespace {

void Take(const JobFile& job, PostSource& source) {
  source.solverType = job.GetSolverType();
  source.jobFile = job.jobFile;
  source.folder = job.Folder();
  const auto* dyna = dynamic_cast<const JobFileDyna*>(&job);
  source.prefix = OutputPrefix(job);
  source.caseName = OutputNamesOf(job).hasCases ? CaseOf(job.MessageFile()) : std::string();
  source.simulationType = dyna ? Upper(dyna->simulationType) : std::string();
  source.deckIdentifier = dyna && dyna->deckIdentifierFlag == 1 ? dyna->deckIdentifier : "";
}

// What a stage is run for: trimming leaves a new deck, gravity loading the plot of its dynamic
// relaxation, all others plots of their states.
std::vector<std::string> DynaKinds(const std::string& simulationType) {
  if (Holds(simulationType, "TRIM")) return {"dynain", "d3plot"};
  if (Holds(simulationType, "GRAVITY")) return {"d3drlf", "d3plot"};
  return {"d3plot", "dynain"};
}

}  // namespace

PostSource PostSourceOf(const JobFile& job) {
  PostSource source;
  Take(job, source);
  source.status = job.status;
  const auto last = std::find_if(job.stages.rbegin(), job.stages.rend(),
                                 [](const auto& stage) { return HasEnded(stage->status); });
  if (last != job.stages.rend()) Take(**last, source);
  return source;
}

bool IsCompensation(const PostSource& source) {
  return Holds(source.simulationType, "COMPENSATION") || source.simulationType == "SCP";
}

std::vector<std::string> PostResults(const PostSource& source) {
  const SolverKindRow& row = RowOfKind(source.solverType);
  return row.results != nullptr ? row.results(source) : std::vector<std::string>();
}

std::vector<std::string> DeckResults(const PostSource& source) {
  const std::string base = PathWithoutExtension(source.jobFile);
  std::vector<std::string> paths;
  for (const std::string& kind : DynaKinds(source.simulationType)) {
    if (!source.caseName.empty())
      paths.push_back(FileDirWrapper::Join(source.folder, source.caseName + kind));
    if (!source.prefix.empty()) {
      paths.push_back(FileDirWrapper::Join(source.folder, source.prefix + kind));
      continue;
    }
    if (!source.deckIdentifier.empty())
      paths.push_back(FileDirWrapper::Join(source.folder, source.deckIdentifier + "." + kind));
    paths.push_back(FileDirWrapper::Join(source.folder, kind));
    if (!base.empty() && kind != "d3plot") paths.push_back(base + "." + kind);
  }
  return paths;
}
