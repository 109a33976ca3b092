// How far a job, or a stage of one, has come.
#ifndef KR_JOBS_JOBSTATUS_H
#define KR_JOBS_JOBSTATUS_H

#include "messages/Message.h"

// The numbers are those that other programs know.
enum class JobStatus : int { kQueued = 0, kWaiting = 1, kRunning = 2, kFinished = 3, kAborted = 4 };

// Empty for a value that has none.
Message JobStatusWord(JobStatus status);

// A group's thread has taken the job and is not done with it.
constexpr bool IsActive(JobStatus status) {
  return status == JobStatus::kWaiting || status == JobStatus::kRunning;
}

constexpr bool HasEnded(JobStatus status) {
  return status == JobStatus::kFinished || status == JobStatus::kAborted;
}

#endif
