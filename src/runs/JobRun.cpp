#include "runs/JobRun.h"

#include <algorithm>
#include <exception>
#include <set>
#include <string>
#include <vector>

#include "jobs/JobArguments.h"
#include "solvers/AbortableWait.h"
#include "solvers/RunSteps.h"
#include "solvers/SolverVersion.h"

namespace {

constexpr char kHotForming[] = "HOT FORMING";
// R7.0.0, the first release for hot forming, and the revision of the sources that it began with.
constexpr int kLeastMajor = 7;
constexpr int kLeastRevision = 79069;

bool IsHotForming(const JobFile& job) {
  const auto* const dyna = dynamic_cast<const JobFileDyna*>(&job);
  return dyna != nullptr && dyna->simulationType == kHotForming;
}

std::string SolverPath(const Settings& settings, SolverKind kind) {
  const bool distributed =
      settings.use_mpp && (kind == SolverKind::kLsDynaSingle || kind == SolverKind::kLsDynaDouble);
  if (distributed) return MppSolverPath(settings, kind);
  return settings.SolverPath(kind);
}

// Ends what a driver has left running, on every way out; after an abort also what a solver that
// has ended by itself has left.
class SolverEnd {
 public:
  SolverEnd(JobFile& job, const JobStatus& status) : job_(job), status_(status) {}
  ~SolverEnd() {
    const bool aborted = job_.abort && status_ == JobStatus::kAborted;
    const bool ended = aborted ? job_.process.TerminateAll() : job_.process.Terminate();
    if (!ended && job_.abort) Report(job_, job_.process.LastError());
  }
  SolverEnd(const SolverEnd&) = delete;
  SolverEnd& operator=(const SolverEnd&) = delete;

 private:
  JobFile& job_;
  const JobStatus& status_;
};

// True while a session is wanted.
class AutoPositionFlag {
 public:
  AutoPositionFlag(std::atomic<bool>* flag, bool wanted) : flag_(wanted ? flag : nullptr) {
    if (flag_ != nullptr) *flag_ = true;
  }
  ~AutoPositionFlag() {
    if (flag_ != nullptr) *flag_ = false;
  }
  AutoPositionFlag(const AutoPositionFlag&) = delete;
  AutoPositionFlag& operator=(const AutoPositionFlag&) = delete;

 private:
  std::atomic<bool>* const flag_;
};

class StageRun {
 public:
  StageRun(JobFile& job, const JobRunContext& context, const StageRunHooks& hooks)
      : job_(job), context_(context), hooks_(hooks), scope_(job, context) {
    for (const std::shared_ptr<JobFile>& stage : job.stages) stages_.push_back(stage.get());
    if (stages_.empty()) {
      stages_.push_back(&job);
    } else {
      first_ = static_cast<std::size_t>(std::max(job.firstStage, 0));
    }
  }

  JobStatus Run(PositioningLibrary& positioning) {
    job_.SetRunError(0, {});
    job_.SetMessageFile({});
    if (!FirstStageExists() || !SolversAreNewEnough()) return JobStatus::kAborted;
    PositioningSession session(positioning, job_);
    if (!session.Begin()) {
      Fail(job_, RunError::kNotStarted,
           "Auto Position [" + ShownPath(job_.jobFile) + "] open write dyna file failed");
      return JobStatus::kAborted;
    }
    const AutoPositionFlag flag(hooks_.autoPosition, session.Wanted());
    JobStatus status = JobStatus::kAborted;
    for (std::size_t i = first_; i < stages_.size(); ++i) {
      status = RunStage(i, session);
      if (status == JobStatus::kAborted) break;
    }
    return status;
  }

 private:
  bool FirstStageExists() {
    if (first_ < stages_.size()) return true;
    return Fail(job_, RunError::kNotStarted,
                "Job [" + ShownPath(job_.jobFile) + "] is to begin at stage " +
                    std::to_string(first_ + 1) + " but has " + std::to_string(stages_.size()));
  }

  // A solver that does not tell its version passes. Each is asked once.
  bool SolversAreNewEnough() {
    std::set<std::string> asked;
    for (std::size_t i = first_; i < stages_.size() && !job_.abort; ++i) {
      const JobFile& stage = *stages_[i];
      if (!IsHotForming(stage)) continue;
      const std::string solver = SolverPath(context_.settings, stage.GetSolverType());
      if (asked.insert(solver).second && IsTooOld(solver)) {
        return Fail(
            job_, RunError::kNotStarted,
            "LS-DYNA version is below R7.0.0 for the job [" + ShownPath(stage.jobFile) + "]  ");
      }
    }
    return true;
  }

  bool IsTooOld(const std::string& solver) {
    VersionQuery query;
    query.report = [this](const std::string& line) { Report(job_, line); };
    query.abort = &job_.abort;
    int major = 0;
    int revision = 0;
    return ReadSolverVersion(solver, major, revision, query) && major < kLeastMajor &&
           revision < kLeastRevision;
  }

  // An aborted job leaves its mark on the stage that it has come to.
  JobStatus RunStage(std::size_t index, PositioningSession& session) {
    JobFile& stage = *stages_[index];
    SetStatus(index, JobStatus::kWaiting);
    if (index > 0) WaitUnlessAborted(std::chrono::seconds(stage.pause), job_.abort);
    JobStatus status = JobStatus::kAborted;
    if (!job_.abort && !stage.abort) {
      session.Position(stage);
      SetStatus(index, JobStatus::kRunning);
      status = RunThroughDriver(stage);
      if (&stage != &job_) TakeResultOf(stage);
    }
    SetStatus(index, status);
    return status;
  }

  JobStatus RunThroughDriver(JobFile& stage) {
    const RunScope scope(stage, context_);
    JobStatus status = JobStatus::kAborted;
    const SolverEnd end(stage, status);
    try {
      JobSolver* const driver = hooks_.solverFor(stage.GetSolverType());
      if (driver != nullptr) return status = driver->Run(stage, context_);
      Fail(stage, RunError::kSolverMissing,
           "No solver of type " + std::to_string(static_cast<int>(stage.GetSolverType())) +
               " for job [" + ShownPath(stage.jobFile) + "]");
    } catch (const std::exception& error) {
      Fail(stage, RunError::kNotStarted,
           "Run job [" + ShownPath(stage.jobFile) + "] failed: " + error.what());
    }
    return status;
  }

  void TakeResultOf(const JobFile& stage) {
    job_.SetMessageFile(stage.MessageFile());
    job_.SetRunError(stage.RunErrorCode(), stage.RunMessage());
  }

  void SetStatus(std::size_t index, JobStatus status) {
    if (stages_[index] != &job_) hooks_.setStageStatus(index, status);
  }

  JobFile& job_;
  const JobRunContext& context_;
  const StageRunHooks& hooks_;
  const RunScope scope_;
  std::vector<JobFile*> stages_;
  std::size_t first_ = 0;
};

}  // namespace

bool RunsInStages(const JobFile& job) {
  return !job.stages.empty() || IsHotForming(job);
}

JobStatus RunStages(JobFile& job, const JobRunContext& context, PositioningLibrary& positioning,
                    const StageRunHooks& hooks) {
  return StageRun(job, context, hooks).Run(positioning);
}
