// What is needed of a job to read the files of its run without its list locked.
#ifndef KR_SOLVERS_JOBOUTPUT_H
#define KR_SOLVERS_JOBOUTPUT_H

#include <cstdint>
#include <optional>
#include <string>

#include "jobs/JobFile.h"
#include "jobs/OutputPrefix.h"

struct JobOutput {
  SolverKind solverType = SolverKind::kLsDynaSingle;
  JobStatus status = JobStatus::kQueued;
  std::string jobFile;
  std::string folder;
  std::string messageFile;
  Message reason;
  Message lastWords;
  int stoppedAt = kNotStopped;
  Failure failure = {};
  OutputNames names = {};
  // Of its model at the end of the run; nothing: not counted.
  std::optional<std::int64_t> nodes = {};
  std::optional<std::int64_t> elements = {};
  std::int64_t started = 0;  // seconds since 1970; 0: not known
  std::int64_t ended = 0;
};

// With the job's list locked.
JobOutput OutputOf(const JobFile& job);

#endif
