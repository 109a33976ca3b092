// One run of the INC role.
#ifndef STANDIN_INCRUN_H
#define STANDIN_INCRUN_H

#include "Options.h"

// Arguments: the access token, the program's folder, the job file without ".fin". Writes
// "JOB_INFO.OUT" beside the job, with the total time in its last line after a normal end.
int RunInc(const Options& options, const std::string& programName);

#endif
