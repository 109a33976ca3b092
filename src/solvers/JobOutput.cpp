#include "solvers/JobOutput.h"

JobOutput OutputOf(const JobFile& job) {
  const RunResult result = job.Result();
  return {.solverType = job.GetSolverType(),
          .status = job.status,
          .jobFile = job.jobFile,
          .folder = job.Folder(),
          .messageFile = result.messageFile,
          .reason = result.reason,
          .lastWords = result.lastWords,
          .stoppedAt = result.stoppedAt,
          .failure = result.failure,
          .names = OutputNamesOf(job),
          .nodes = result.nodes,
          .elements = result.elements,
          .started = job.started,
          .ended = job.ended};
}
