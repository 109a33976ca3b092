#include "jobs/JobStatus.h"

bool JobStatusWord(JobStatus status, std::string& word) {
  word.clear();
  switch (status) {
    case JobStatus::kQueued:
      word = "Queued";
      return true;
    case JobStatus::kWaiting:
      word = "Waiting";
      return true;
    case JobStatus::kRunning:
      word = "Running";
      return true;
    case JobStatus::kFinished:
      word = "Finished";
      return true;
    case JobStatus::kAborted:
      word = "Aborted";
      return true;
  }
  return false;
}
