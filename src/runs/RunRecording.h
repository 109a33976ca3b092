// Fills run records. Used by the run's thread, during the run.
#ifndef KR_RUNS_RUNRECORDING_H
#define KR_RUNS_RUNRECORDING_H

#include "runs/RunRecord.h"

// Of a solver that is about to be started from `start`; `stage` is its job, `index` its place.
RunRecord RecordOfStart(const JobFile& stage, int index, const PTWrapperProcessStart& start);

// Of a stage that ended at `ended` before its solver was asked for; `started`: when its turn came.
// It has a token nevertheless, which tells it from others.
RunRecord RecordWithoutStart(const JobFile& stage, int index, std::int64_t started,
                             JobStatus verdict);

// The process of a run that has not ended by its record. Where the program died before it knew the
// process, what was started with the token and works in the folder.
ProcessIdentity ProcessOf(const RunRecord& record);

// How the stage's process ended, as long as it holds one; none when it runs or nobody knows.
std::optional<int> KnownExitCode(const PTWrapperProcess& process);

// Writes down how the run ended. Of a deck's run, errors and warnings are counted where there is a
// message file, nodes and elements where there is a "d3plot" that the run wrote or went on with.
// Takes some seconds at most; what cannot be counted until then stays unknown.
void RecordEnd(RunRecord& record, const JobFile& stage, JobStatus verdict,
               std::optional<int> exitCode);

// Then, of a run whose end nobody watched: it ended when it wrote its message file last, or its
// console where there is no such file.
void RecordUnwatchedEnd(RunRecord& record, const JobFile& stage);

#endif
