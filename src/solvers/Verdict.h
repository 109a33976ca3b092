// Whether a run ended normally, by its message files. Drivers whose solver writes none judge by its
// results, in their Finish (JobSolverInc.cpp, JobSolverVorel.cpp).
#ifndef KR_SOLVERS_VERDICT_H
#define KR_SOLVERS_VERDICT_H

#include <string>
#include <vector>

#include "jobs/JobFile.h"

// How the run ended by its message files, Finished or Aborted: Finished when all that this run
// wrote say so. Each is renamed to its name and ".krb"; the first that does not tell of a normal
// end, else the first, becomes the job's message file. Leaves code 2 and the reason with the job;
// without a file, or with old ones only, code 3.
JobStatus JudgeRun(JobFile& job, const std::vector<std::string>& messageFiles);

// What a message file says about the end of its run.
struct MessageVerdict {
  bool normal = false;
  Message reason;  // of a run that did not end normally
};
MessageVerdict ReadVerdict(const std::string& messageFile);

#endif
