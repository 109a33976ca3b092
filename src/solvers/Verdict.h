// Whether a run ended normally, by its message files. Drivers whose solver writes none judge by its
// results, in their Finish (JobSolverInc.cpp, JobSolverVorel.cpp).
#ifndef KR_SOLVERS_VERDICT_H
#define KR_SOLVERS_VERDICT_H

#include <string>
#include <vector>

#include "jobs/JobFile.h"

// How the run ended by its message files, Finished or Aborted: Finished when those of all cases
// that this run wrote say so. For a case the file of its first rank speaks, since the other ranks
// need not tell of the end; but none of them may tell of an error termination. The files of the
// first ranks and those that tell of an error are renamed to their names and ".krb"; the first that
// stands against a normal end, else the first, becomes the job's message file. Of a case whose
// first rank does not know why it ended it is the rank that does. Leaves code 2 and the reason with
// the job; without a file, or with old ones only, code 3. `messageFiles`: see WrittenMessageFiles.
JobStatus JudgeRun(JobFile& job, const std::vector<std::string>& messageFiles);

// What a message file says about the end of its run.
struct MessageVerdict {
  bool normal = false;
  bool errorEnd = false;  // it tells of an error termination
  enum class Tells { kNothing, kError, kWhy } tells = Tells::kNothing;
  Message reason = {};  // of a run that did not end normally
  Failure failure = {};
};
MessageVerdict ReadVerdict(const std::string& messageFile);

#endif
