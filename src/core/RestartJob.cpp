#include "core/RestartJob.h"

#include <algorithm>

#include "jobs/OutputPrefix.h"
#include "record/JobImage.h"
#include "solvers/RestartDump.h"
#include "solvers/SolverKinds.h"

namespace {

void GoOnFrom(JobFile& job, const std::string& dump) {
  job.jobFile.clear();
  job.restartFile = dump;
  auto* const dyna = dynamic_cast<JobFileDyna*>(&job);
  if (dyna != nullptr && OutputPrefix(job).empty()) dyna->outputName = NameOfDump(dump);
}

}  // namespace

std::shared_ptr<JobFile> MakeRestartOf(const JobList& list, JobId job, const Settings& settings) {
  JobImage image;
  if (!list.ReadJob(job, [&](const JobFile& ended) { image = ImageOf(ended); })) return nullptr;
  if (image.restartDump.empty() || !HasEnded(image.fields.status)) return nullptr;
  const auto make = [&](SolverKind kind) { return RowOfKind(kind).makeJob(settings); };
  std::shared_ptr<JobFile> restart = make(image.kind);
  image.fields.identifier = restart->identifier;
  Fill(*restart, image, make);
  const auto stage = std::find_if(image.stages.begin(), image.stages.end(), [&](const auto& one) {
    return one.restartDump == image.restartDump;
  });
  if (stage != image.stages.end()) {
    restart->firstStage = static_cast<int>(stage - image.stages.begin());
    GoOnFrom(*restart->stages[static_cast<std::size_t>(restart->firstStage)], image.restartDump);
    restart->restartFile = image.restartDump;
  } else if (image.stages.empty()) {
    GoOnFrom(*restart, image.restartDump);
  } else {
    return nullptr;
  }
  restart->ResetForRun();
  return restart;
}

JobId FindRestartFrom(const JobList& list, const std::string& dump) {
  JobId found = JobId::kNone;
  list.ReadJobs([&](const JobFile& job) {
    if (job.restartFile == dump && !HasEnded(job.status)) found = job.id;
  });
  return found;
}
