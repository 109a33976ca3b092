// What a run left behind, as the lines that the information window shows.
#ifndef KR_CORE_JOBINFORMATION_H
#define KR_CORE_JOBINFORMATION_H

#include <string>
#include <vector>

#include "jobs/JobFile.h"
#include "solvers/OutputAnalysis.h"

// What is needed of a job to read its files without holding its group's mutex.
struct JobOutput {
  SolverKind solverType = SolverKind::kLsDynaSingle;
  JobStatus status = JobStatus::kQueued;
  std::string jobFile;
  std::string folder;
  std::string messageFile;
};

// With the group's mutex held.
JobOutput OutputOf(const JobFile& job);

// The report of the solver's output, then, for a finished job of the LS-DYNA family with a "d3plot"
// in its folder, the size of its model or why that cannot be read. A line holds no line feed. Empty
// when the progress hook ended it. Reads files that may be big; any thread.
std::vector<std::string> JobInformation(const JobOutput& output, const AnalysisHooks& hooks = {});

#endif
