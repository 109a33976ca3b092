// What is needed of a job to read the files of its run without holding its group's mutex.
#ifndef KR_SOLVERS_JOBOUTPUT_H
#define KR_SOLVERS_JOBOUTPUT_H

#include <string>

#include "jobs/JobFile.h"

struct JobOutput {
  SolverKind solverType = SolverKind::kLsDynaSingle;
  JobStatus status = JobStatus::kQueued;
  std::string jobFile;
  std::string folder;
  std::string messageFile;
};

// With the group's mutex held.
JobOutput OutputOf(const JobFile& job);

#endif
