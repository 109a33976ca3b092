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
#include "runs/RunRecord.h"
#include "solvers/JobSolver.h"

// What a run needs beyond its job. The functions are called on the run's thread.
struct JobRunSetup {
  std::chrono::seconds pause{0};

  // The folders that the run needs for itself alone, see RunFolders. Null: those of the job.
  std::function<std::vector<std::string>()> folders;
  // The pause is over, but somebody else runs in one of them: the job has the words as its message
  // (RunMessage, with code 0) and goes on waiting. Called when they change; may be null.
  std::function<void(const Message& message)> waits;

  // No solver starts while less megabytes are free in its folder; asked again and again. Null, or
  // 0: always. The job waits as above.
  std::function<int()> minFreeMb;

  // The pause is over: shows the job as Running and says what it runs with. Nothing when it is not
  // to run after all.
  std::function<std::optional<JobRunContext>()> begin;

  // The driver of a kind; null when there is none.
  std::function<JobSolver*(SolverKind kind)> solverFor;

  // Sets the status of one of the job's stages. Not called for a job without stages.
  std::function<void(JobFile& stage, JobStatus status)> setStageStatus;

  // The solver of `stage` ended normally: where it stopped before its end time, see RunStop. May
  // take its time; null: nobody knows.
  std::function<int(const JobFile& stage, const RunRecord& record)> stoppedAt;
  // The solver of `stage` failed: whether its time step had collapsed before. As above.
  std::function<bool(const JobFile& stage, const RunRecord& record)> stepFell;
  // Writes down each run of a solver process: called when it is about to be started, with no
  // process yet, when it has been started or taken over, and when it is judged. One that ends
  // before its solver is asked for is written down once, with its end. `stage` is the job, or the
  // stage of it that runs. May be null.
  std::function<void(const JobFile& stage, const RunRecord& record)> recorded;

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
// folders, while a solver runs there that outlived the program that started it (FolderUse), or
// while there is too little space (minFreeMb), which is asked before each stage.
//
// Beside the drivers' reasons there are "No solver of type %d for job [%s]" and "Run job [%s]
// failed: %s", for what was thrown. A forming job (one with stages, or whose simulation type is
// exactly "HOT FORMING") does not start on a solver that is too old for hot forming, when the
// positioning library cannot write, and when the first stage to run is not there.
JobStatus RunJob(JobFile& job, const JobRunSetup& setup);

// Goes on with a run that another copy of the program started and `record` tells of, at the stage
// that it names, without a pause; `begin` shows the job as Running since record.started. While the
// process runs it is watched and ended as in RunJob. When it has ended it is judged at once, by the
// files of that run only, and the job's message, of a Finished one too, says that it ended while
// Kestrun was not running. Later stages are run as ever.
//
// Where its exit code is not known the record has none, and the note says so. When `begin` gives
// nothing, the process is ended.
JobStatus ResumeRun(JobFile& job, const JobRunSetup& setup, const RunRecord& record);

// A run that another copy of the program began and whose job was removed.
struct UnwantedRun {
  RunRecord record;    // with its end
  bool ran = false;    // until now
  std::string runsOn;  // why it could not be ended; empty: nothing of it is left
};
// Ends what is left of it, in some seconds. `heard`, seconds since 1970: when it ended, should it
// be gone already.
UnwantedRun EndUnwantedRun(const RunRecord& record, std::int64_t heard);

#endif
