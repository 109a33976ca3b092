// What a job is called by whoever does not hold it.
#ifndef KR_JOBS_JOBID_H
#define KR_JOBS_JOBID_H

#include <cstdint>

// A number of each job and of each stage that no other one of this process has or had.
enum class JobId : std::uint64_t { kNone = 0 };

// Any thread.
JobId NewJobId();

#endif
