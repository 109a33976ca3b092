// A job that goes on from where another one was cut off.
#ifndef KR_CORE_RESTARTJOB_H
#define KR_CORE_RESTARTJOB_H

#include <memory>

#include "core/JobList.h"

// The same job once more, Queued, but from the restart dump that its last run left
// (JobFile::RestartDump) and without the deck, which the dump makes needless. Of a job with stages
// it begins with the stage that left the dump. Null when the job has left none, or is not there.
std::shared_ptr<JobFile> MakeRestartOf(const JobList& list, JobId job, const Settings& settings);

// The job of the list that goes on from this dump and has not ended; kNone when there is none.
JobId FindRestartFrom(const JobList& list, const std::string& dump);

#endif
