// A job as it is at one moment, to be written down by another thread.
#ifndef KR_RECORD_JOBIMAGE_H
#define KR_RECORD_JOBIMAGE_H

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "jobs/JobFile.h"
#include "runs/RunRecord.h"

// How far a job has come.
struct JobProgress : RunResult {
  JobStatus status = JobStatus::kQueued;
  std::int64_t started = 0;
  std::int64_t ended = 0;
  bool stops = false;  // the user has stopped it, and it has not ended yet

  bool operator==(const JobProgress&) const = default;
};

struct JobImage : RunResult {
  JobId id = JobId::kNone;  // of the session that had it
  SolverKind kind = SolverKind::kLsDynaSingle;
  JobFields fields;  // its status and times are the ones that count
  std::optional<DynaFields> dyna;
  std::optional<RunRecord> run;  // the one that is under way, or was when the program died
  std::vector<JobImage> stages;
  bool stops = false;  // see JobProgress

  void Set(const JobProgress& progress);
  bool operator==(const JobImage&) const = default;
};

// With the lock of the job's list held.
JobProgress ProgressOf(const JobFile& job);
JobImage ImageOf(const JobFile& job);

// Gives a new job everything that the image says, its stages too. `make` makes jobs of a kind.
void Fill(JobFile& job, const JobImage& image,
          const std::function<std::shared_ptr<JobFile>(SolverKind kind)>& make);

#endif
