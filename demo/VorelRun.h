// One run of the Vorel role.
#ifndef STANDIN_VORELRUN_H
#define STANDIN_VORELRUN_H

#include "Options.h"

// Arguments: the job file without ".dat", then its memory in kilobytes and options, if any. Writes
// "JOB.OUT" with dates and times at both ends and, after a normal end, the result "JOB.lin".
int RunVorel(const Options& options, const std::string& programName);

#endif
