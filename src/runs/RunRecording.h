// Fills run records. Used by the run's thread, during the run.
#ifndef KR_RUNS_RUNRECORDING_H
#define KR_RUNS_RUNRECORDING_H

#include "runs/RunRecord.h"

// Of a solver that has just been started from `start`; `stage` is its job, `index` its place.
RunRecord RecordOfStart(const JobFile& stage, int index, const PTWrapperProcessStart& start);

// How the stage's process ended, as long as it holds one; none when it runs or nobody knows.
std::optional<int> KnownExitCode(const PTWrapperProcess& process);

// Writes down how the run ended. Errors and warnings are counted where there is a message file.
void RecordEnd(RunRecord& record, const JobFile& stage, JobStatus verdict,
               std::optional<int> exitCode);

#endif
