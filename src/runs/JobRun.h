// Runs that go through stages: forming jobs with a list of decks, and hot-forming jobs.
#ifndef KR_RUNS_JOBRUN_H
#define KR_RUNS_JOBRUN_H

#include <atomic>
#include <cstddef>
#include <functional>

#include "solvers/JobSolver.h"
#include "solvers/PositioningLibrary.h"

struct StageRunHooks {
  // The driver of a kind; null when there is none.
  std::function<JobSolver*(SolverKind kind)> solverFor;
  // Sets the status of one of the job's stages. Not called for a job without stages, which is its
  // own only stage.
  std::function<void(std::size_t stage, JobStatus status)> setStageStatus;
  // True while the positioning library works for a job; may be null.
  std::atomic<bool>* autoPosition = nullptr;
};

// A job with stages, or one whose simulation type is exactly "HOT FORMING".
bool RunsInStages(const JobFile& job);

// The whole run, on the calling thread: Finished or Aborted, as the last stage that ran ended. The
// job's message file and run error are that stage's. Nothing of a solver is left when it returns,
// whether the job, or the stage that runs, ended or was aborted.
//
// Refuses to start on a solver that is too old for hot forming, when the positioning library cannot
// write, and when the first stage to run is not there; the job then has the reason.
JobStatus RunStages(JobFile& job, const JobRunContext& context, PositioningLibrary& positioning,
                    const StageRunHooks& hooks);

#endif
