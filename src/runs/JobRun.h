// One run of one job, from its pause to its verdict: the only way in which jobs are run. It ends
// the solver of a run that was aborted. It needs no list of jobs and no window; who runs a job
// hands it what it needs.
#ifndef KR_RUNS_JOBRUN_H
#define KR_RUNS_JOBRUN_H

#include <atomic>
#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "runs/PositioningLibrary.h"
#include "solvers/JobSolver.h"

// What a run needs beyond its job. The functions are called on the run's thread.
struct JobRunSetup {
  std::chrono::seconds pause{0};

  // The folders that the run needs for itself alone, see RunFolders. Null: those of the job.
  std::function<std::vector<std::string>()> folders;
  // The pause is over, but somebody else runs in one of them: the job has the words as its message
  // (RunMessage, with code 0) and goes on waiting. Called when they change; may be null.
  std::function<void(const Message& message)> waits;

  // The pause is over: shows the job as Running and says what it runs with. Nothing when it is not
  // to run after all.
  std::function<std::optional<JobRunContext>()> begin;

  // The driver of a kind; null when there is none.
  std::function<JobSolver*(SolverKind kind)> solverFor;

  // Sets the status of one of the job's stages. Not called for a job without stages.
  std::function<void(JobFile& stage, JobStatus status)> setStageStatus;

  // Positions the stages of forming jobs; null: nothing does.
  PositioningLibrary* positioning = nullptr;
  // True while it works for the job; may be null.
  std::atomic<bool>* autoPosition = nullptr;
};

// Where a job's stages run that are to run, or the job itself. With the lock of its list held.
std::vector<std::string> RunFolders(const JobFile& job);

// The whole run, on the calling thread: Finished or Aborted, as the last stage that ran ended. A
// job without stages is its own only stage. The job's message file, run error code and reason are
// that stage's. Nothing of a solver is left when it returns, whether the job, or the stage that
// runs, ended or was aborted; an abort is seen within a second.
//
// After the pause a job waits while another one, of this program or of another, runs in one of its
// folders, or while a solver runs there that outlived the program that started it (FolderUse).
//
// Beside the drivers' reasons there are "No solver of type %d for job [%s]" and "Run job [%s]
// failed: %s", for what was thrown. A forming job (one with stages, or whose simulation type is
// exactly "HOT FORMING") does not start on a solver that is too old for hot forming, when the
// positioning library cannot write, and when the first stage to run is not there.
JobStatus RunJob(JobFile& job, const JobRunSetup& setup);

#endif
