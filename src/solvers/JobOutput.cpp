#include "solvers/JobOutput.h"

#include "jobs/OutputPrefix.h"

JobOutput OutputOf(const JobFile& job) {
  return {job.GetSolverType(), job.status,      job.jobFile,     job.Folder(),
          job.MessageFile(),   job.LastWords(), job.StoppedAt(), job.HowFailed(),
          OutputPrefix(job)};
}
