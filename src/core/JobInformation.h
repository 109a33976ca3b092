// What a run left behind, as the lines that the information window shows.
#ifndef KR_CORE_JOBINFORMATION_H
#define KR_CORE_JOBINFORMATION_H

#include <string>
#include <vector>

#include "solvers/JobOutput.h"
#include "solvers/OutputAnalysis.h"

// The report of the solver's output, of each case of a deck that has some, then, for a finished job
// on a deck with a "d3plot" in its folder, the size of its model or why that cannot be read, then
// what the solver of a run that failed said last. A line holds no line feed. Empty when the
// progress hook ended it. Reads files that may be big; any thread.
std::vector<std::string> JobInformation(const JobOutput& output, const AnalysisHooks& hooks = {});

#endif
