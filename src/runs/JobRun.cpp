#include "runs/JobRun.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <set>
#include <string>
#include <vector>

#include "jobs/JobArguments.h"
#include "runs/FolderUse.h"
#include "runs/RunRecording.h"
#include "runs/SolverVersion.h"
#include "solvers/AbortableWait.h"
#include "solvers/HowItFailed.h"
#include "solvers/LastWords.h"
#include "solvers/MessageFiles.h"
#include "solvers/RestartDump.h"
#include "solvers/RunSteps.h"
#include "util/files/FileDirWrapper.h"
#include "util/files/FreeSpace.h"
#include "util/process/OwnThread.h"
#include "util/text/DateTimeWrapper.h"

namespace {

constexpr char kHotForming[] = "HOT FORMING";
// R7.0.0, the first release for hot forming, and the revision of the sources that it began with.
constexpr int kLeastMajor = 7;
constexpr int kLeastRevision = 79069;

bool IsHotForming(const JobFile& job) {
  const auto* const dyna = dynamic_cast<const JobFileDyna*>(&job);
  return dyna != nullptr && dyna->simulationType == kHotForming;
}

bool IsForming(const JobFile& job) {
  return !job.stages.empty() || IsHotForming(job);
}

// A driver leaves an aborted solver running, and a launcher that died meanwhile what it has
// started: neither may outlive its run. A solver that has ended is let go, since each one held
// costs a descriptor and a queue may be long. One that runs on in spite of all is said, and never
// called stopped: it goes on writing. Gives what is known of it.
ProcessIdentity EndSolver(JobFile& stage, JobStatus status) {
  const bool aborted = stage.abort && status == JobStatus::kAborted;
  if (aborted ? stage.process.TerminateAll() : stage.process.Terminate()) return {};
  const ProcessIdentity left = stage.process.NotEnded();
  Fail(stage, RunError::kNotNormal,
       left.id != 0 ? Message(MessageId::kSolverRunsOn, stage.MainFile(), left.id)
                    : Message(MessageId::kNotEnded, stage.process.LastError()));
  stage.SetHowFailed({FailureKind::kNotEnded, left.id});
  return left;
}

// What is thrown is a reason like others.
JobStatus Guarded(JobFile& job, const std::function<JobStatus()>& steps) {
  JobStatus status = JobStatus::kAborted;
  Guard([&] { status = steps(); },
        [&](const std::exception& error) {
          Fail(job, RunError::kNotStarted,
               Message(MessageId::kRunFailed, job.MainFile(), error.what()));
        });
  return status;
}

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

Message WaitMessage(const JobFile& job, const FolderHolder& holder) {
  switch (holder.kind) {
    case FolderHolder::Kind::kJob:
      return Message(MessageId::kWaitsForJob, job.MainFile(), holder.job);
    case FolderHolder::Kind::kOtherProgram:
      return Message(MessageId::kWaitsForProgram, job.MainFile(), holder.folder);
    case FolderHolder::Kind::kSolver:
      return Message(MessageId::kWaitsForSolver, job.MainFile(), holder.processId, holder.job);
    case FolderHolder::Kind::kNobody:
      break;
  }
  return {};
}

// Empty when there is enough, or nobody can tell.
Message SpaceMessage(const JobFile& job, const JobRunSetup& setup,
                     const std::vector<std::string>& folders) {
  constexpr std::uint64_t kMegabyte = 1024 * 1024;
  const int least = setup.minFreeMb ? setup.minFreeMb() : 0;
  if (least <= 0) return {};
  for (const std::string& folder : folders) {
    const std::optional<std::uint64_t> free = FreeSpace(folder);
    if (!free || *free / kMegabyte >= static_cast<std::uint64_t>(least)) continue;
    return Message(MessageId::kWaitsForSpace, job.MainFile(), least, folder);
  }
  return {};
}

// Also for space in them. `mine`: they are held. False when the job was aborted meanwhile.
bool WaitForFolders(JobFile& job, const JobRunSetup& setup, FolderUse& use, bool mine = false) {
  constexpr std::chrono::milliseconds kLookAgain{250};
  Message told;
  while (!job.abort) {
    const std::vector<std::string> folders = setup.folders ? setup.folders() : RunFolders(job);
    Message message;
    if (!mine) message = WaitMessage(job, use.Take(folders));
    mine = message.Empty();
    if (mine) message = SpaceMessage(job, setup, folders);
    if (!(message == told)) {
      job.SetRunError(0, message);
      if (setup.waits) setup.waits(message);
      told = message;
    }
    if (message.Empty()) return true;
    WaitUnlessAborted(kLookAgain, job.abort);
  }
  job.SetRunError(0, {});
  return false;
}

// The run that another copy of the program began, as it is found.
struct Earlier {
  RunRecord record;
  bool runs = false;  // held by the stage's process object
};

class JobRun {
 public:
  JobRun(JobFile& job, const JobRunSetup& setup, JobRunContext& context, FolderUse& use)
      : job_(job), setup_(setup), context_(context), use_(use), scope_(job, context) {
    for (const std::shared_ptr<JobFile>& stage : job.stages) stages_.push_back(stage.get());
    if (stages_.empty()) {
      stages_.push_back(&job);
    } else {
      first_ = static_cast<std::size_t>(std::max(job.firstStage, 0));
    }
    context_.starting = [this](const JobFile& stage, const PTWrapperProcessStart& start) {
      record_ = RecordOfStart(stage, IndexOf(stage), start);
      began_ = std::chrono::steady_clock::now();
      Record(stage);
    };
    context_.started = [this](const JobFile& stage, const PTWrapperProcessStart&) {
      record_->process = IdentityOfProcess(stage.process.ChildId());
      if (!use_.NoteSolver(stage.Folder(), stage.process))
        Report(stage, Message(MessageId::kSolverNotNoted, stage.Folder()));
      Note(Message(MessageId::kJobStarted, stage.MainFile(), stage.process.ChildId()));
      Record(stage);
    };
  }

  JobStatus Run() {
    const std::int64_t began = DateTimeWrapper::CurrentTime();
    const JobStatus status = Guarded(job_, [this] { return RunStages(); });
    if (!isRecorded_) RecordWithoutSolver(job_, began, status);
    return status;
  }

  // `mine`: the folders are held.
  JobStatus GoOn(const RunRecord& record, bool mine) {
    earlier_ = Earlier{record};
    mine_ = mine;
    if (!job_.stages.empty()) first_ = static_cast<std::size_t>(std::max(record.stage, 0));
    return Run();
  }

 private:
  JobStatus RunStages() {
    if (!FirstStageExists()) return JobStatus::kAborted;
    if (!earlier_ && !SolversAreNewEnough()) return JobStatus::kAborted;
    std::optional<PositioningSession> session;
    if (setup_.positioning != nullptr && IsForming(job_)) {
      session.emplace(*setup_.positioning, job_);
    }
    if (session && !session->Begin()) {
      Fail(job_, RunError::kNotStarted, Message(MessageId::kPositioningFailed, job_.MainFile()));
      return JobStatus::kAborted;
    }
    const AutoPositionFlag flag(setup_.autoPosition, session && session->Wanted());
    JobStatus status = JobStatus::kAborted;
    for (std::size_t i = first_; i < stages_.size(); ++i) {
      status = RunStage(i, session);
      if (status == JobStatus::kAborted) break;
    }
    return status;
  }

  bool FirstStageExists() {
    if (first_ < stages_.size()) return true;
    return Fail(
        job_, RunError::kNotStarted,
        Message(MessageId::kFirstStageMissing, job_.MainFile(), first_ + 1, stages_.size()));
  }

  // A solver that does not tell its version passes. Each is asked once.
  bool SolversAreNewEnough() {
    std::set<std::string> asked;
    for (std::size_t i = first_; i < stages_.size() && !job_.abort; ++i) {
      const JobFile& stage = *stages_[i];
      if (!IsHotForming(stage)) continue;
      const std::string solver = SolverProgram(context_.settings, stage.GetSolverType());
      if (asked.insert(solver).second && IsTooOld(solver)) {
        return Fail(job_, RunError::kNotStarted,
                    Message(MessageId::kSolverTooOld, stage.MainFile()));
      }
    }
    return true;
  }

  bool IsTooOld(const std::string& solver) {
    VersionQuery query;
    query.report = [this](const Message& message) { Report(job_, message); };
    query.abort = &job_.abort;
    int major = 0;
    int revision = 0;
    return ReadSolverVersion(solver, major, revision, query) && major < kLeastMajor &&
           revision < kLeastRevision;
  }

  // An aborted job leaves its mark on the stage that it has come to.
  JobStatus RunStage(std::size_t index, std::optional<PositioningSession>& session) {
    JobFile& stage = *stages_[index];
    const bool goesOn = earlier_ && index == first_;
    JobStatus status = JobStatus::kAborted;
    if (goesOn || MayStart(stage, index)) {
      if (!goesOn) KeepEarlierStages(stage);
      if (session && !goesOn) session->Position(stage);
      if (goesOn) TakeOver(stage);
      SetStatus(stage, JobStatus::kRunning);
      status = RunThroughDriver(stage, goesOn);
      if (&stage != &job_) TakeResultOf(stage);
    }
    SetStatus(stage, status);
    return status;
  }

  bool MayStart(JobFile& stage, std::size_t index) {
    SetStatus(stage, JobStatus::kWaiting);
    if (index > 0) WaitUnlessAborted(std::chrono::seconds(stage.pause), job_.abort);
    // The first one's has been asked for with the job's.
    if (!mine_ || index > first_) mine_ = WaitForFolders(job_, setup_, use_, mine_);
    return !job_.abort && !stage.abort;
  }

  void TakeOver(JobFile& stage) {
    record_ = earlier_->record;
    if (!stage.folderBefore.Read(record_->filesBefore)) {
      // Better nothing than what an earlier run may have written.
      std::vector<std::string> files;
      std::vector<std::string> folders;
      FileDirWrapper::ListDir(stage.Folder(), files, folders, false);
      stage.folderBefore.Take(files);
    }
    stage.dumpsBefore = record_->dumpsBefore ? *record_->dumpsBefore : NewestDumpTime(stage);
    record_->process = ProcessOf(*record_);
    earlier_->runs = stage.process.Open(record_->process, record_->token);
    if (!earlier_->runs) return;
    Note(Message(MessageId::kJobTakenOver, stage.MainFile(), stage.process.ChildId()));
    Record(stage);
  }

  JobStatus RunThroughDriver(JobFile& stage, bool goesOn) {
    const RunScope scope(stage, context_);
    const std::int64_t began = DateTimeWrapper::CurrentTime();
    const JobStatus status = Guarded(stage, [&] {
      JobSolver* const driver = setup_.solverFor(stage.GetSolverType());
      if (driver != nullptr) {
        return goesOn ? driver->GoOn(stage, context_) : driver->Run(stage, context_);
      }
      Fail(stage, RunError::kSolverMissing,
           Message(MessageId::kNoSolverOfType, static_cast<int>(stage.GetSolverType()),
                   stage.MainFile()));
      return JobStatus::kAborted;
    });
    if (goesOn && !earlier_->runs && !stage.abort) SayItEndedUnwatched(stage);
    const std::optional<int> exitCode = KnownExitCode(stage.process);
    if (status == JobStatus::kAborted && !stage.abort) {
      stage.SetLastWords(LastWordsOf(stage, exitCode));
    }
    if (status == JobStatus::kAborted)
      stage.SetHowFailed(HowItFailed(stage, exitCode, StepFell(stage)));
    if (!stage.process.IsActive()) NoteEnd(stage, exitCode);
    const ProcessIdentity left = EndSolver(stage, status);
    if (record_) stage.SetRestartDump(DumpToGoOnFrom(stage, status));
    if (status == JobStatus::kAborted) use_.LeaveToRest(stage.Folder(), left);
    if (record_) {
      if (status == JobStatus::kFinished && setup_.stoppedAt) {
        stage.SetStoppedAt(setup_.stoppedAt(stage, *record_));
      }
      if (status == JobStatus::kFinished) KeepFromLaterStages(stage);
      const auto took = std::chrono::steady_clock::now() - began_;
      RecordEnd(*record_, stage, status, exitCode);
      if (!goesOn)
        record_->seconds = std::chrono::duration_cast<std::chrono::seconds>(took).count();
      stage.SetResult(*record_);
      if (goesOn && !earlier_->runs) RecordUnwatchedEnd(*record_, stage);
      Record(stage);
      record_.reset();
    } else {
      RecordWithoutSolver(stage, began, status);
    }
    return status;
  }

  bool StepFell(const JobFile& stage) const {
    const bool wrote = record_ && !stage.abort && !stage.MessageFile().empty();
    return wrote && setup_.stepFell && setup_.stepFell(stage, *record_);
  }

  void RecordWithoutSolver(const JobFile& stage, std::int64_t began, JobStatus status) {
    record_ = RecordWithoutStart(stage, IndexOf(stage), began, status);
    Record(stage);
    record_.reset();
  }

  static void SayItEndedUnwatched(JobFile& stage) {
    const Message reason = stage.RunMessage();
    const Failure failure = stage.HowFailed();
    stage.SetRunError(stage.RunErrorCode(),
                      reason.Empty() ? Message(MessageId::kEndedUnwatched, stage.MainFile())
                                     : Message(MessageId::kEndedUnwatchedWith, reason));
    stage.SetHowFailed(failure);
  }

  void NoteEnd(const JobFile& stage, std::optional<int> exitCode) {
    const std::int32_t id = stage.process.ChildId();
    if (id == 0) return;
    Note(exitCode ? Message(MessageId::kProcessEnded, id, stage.MainFile(), *exitCode)
                  : Message(MessageId::kProcessEndedUnknown, id, stage.MainFile()));
  }

  void TakeResultOf(const JobFile& stage) {
    RunResult result = stage.Result();
    if (job_.StoppedAt() != kNotStopped) result.stoppedAt = job_.StoppedAt();
    result.seconds.reset();  // of one stage alone
    job_.SetResult(result);
  }

  // A later stage that runs in its folder would replace the message files that it kept.
  void KeepFromLaterStages(JobFile& stage) {
    const auto own = std::find(stages_.begin(), stages_.end(), &stage);
    const std::string folder = stage.Folder();
    const bool others = std::any_of(
        own + 1, stages_.end(), [&](const JobFile* later) { return later->Folder() == folder; });
    if (others) NameMessageFilesAfterDeck(stage);
  }

  // The same for stages that were the last ones when they ran.
  void KeepEarlierStages(const JobFile& next) {
    for (JobFile* const stage : stages_) {
      if (stage != &next && stage->Folder() == next.Folder()) NameMessageFileAfterDeck(*stage);
    }
  }

  void SetStatus(JobFile& stage, JobStatus status) {
    if (&stage != &job_) setup_.setStageStatus(stage, status);
  }

  int IndexOf(const JobFile& stage) const {
    if (&stage == &job_) return -1;
    return static_cast<int>(std::find(stages_.begin(), stages_.end(), &stage) - stages_.begin());
  }

  void Note(const Message& message) {
    if (context_.note) context_.note(message);
  }

  void Record(const JobFile& stage) {
    isRecorded_ = true;
    if (setup_.recorded) setup_.recorded(stage, *record_);
  }

  JobFile& job_;
  const JobRunSetup& setup_;
  JobRunContext& context_;
  FolderUse& use_;
  const RunScope scope_;
  std::vector<JobFile*> stages_;
  std::size_t first_ = 0;
  std::optional<Earlier> earlier_;
  bool mine_ = true;
  std::optional<RunRecord> record_;  // of the process that runs
  std::chrono::steady_clock::time_point began_;
  bool isRecorded_ = false;          // the history will know of the job
};

// A job that was stopped before a solver of it ran has not failed either.
JobStatus Ended(JobFile& job, JobStatus status) {
  const bool runsOn = job.HowFailed().kind == FailureKind::kNotEnded;
  if (status == JobStatus::kAborted && job.abort && !runsOn)
    job.SetHowFailed({FailureKind::kStopped});
  return status;
}

}  // namespace

std::vector<std::string> RunFolders(const JobFile& job) {
  if (job.stages.empty()) return {job.Folder()};
  std::vector<std::string> folders;
  for (std::size_t i = static_cast<std::size_t>(std::max(job.firstStage, 0)); i < job.stages.size();
       ++i) {
    folders.push_back(job.stages[i]->Folder());
  }
  return folders;
}

JobStatus RunJob(JobFile& job, const JobRunSetup& setup) {
  job.SetRunError(0, {});
  job.SetMessageFile({});
  job.SetRestartDump({});
  job.SetStoppedAt(kNotStopped);
  WaitUnlessAborted(setup.pause, job.abort);
  FolderUse use(job.MainFile());
  if (!WaitForFolders(job, setup, use)) return Ended(job, JobStatus::kAborted);
  std::optional<JobRunContext> context = setup.begin();
  if (!context || job.abort) return Ended(job, JobStatus::kAborted);
  return Ended(job, JobRun(job, setup, *context, use).Run());
}

// Who else is in the folder does not keep us from watching what runs there anyway.
JobStatus ResumeRun(JobFile& job, const JobRunSetup& setup, const RunRecord& record) {
  job.SetRunError(0, {});
  job.SetMessageFile({});
  FolderUse use(job.MainFile(), record.token);
  const FolderHolder holder = use.Take(setup.folders ? setup.folders() : RunFolders(job));
  std::optional<JobRunContext> context = setup.begin();
  if (!context) {
    const UnwantedRun unwanted = EndUnwantedRun(record, DateTimeWrapper::CurrentTime());
    if (!unwanted.runsOn.empty())
      job.SetRunError(0, Message(MessageId::kNotEnded, unwanted.runsOn));
    if (unwanted.runsOn.empty() && setup.recorded) setup.recorded(job, unwanted.record);
    return JobStatus::kAborted;
  }
  const bool mine = holder.kind == FolderHolder::Kind::kNobody;
  return Ended(job, JobRun(job, setup, *context, use).GoOn(record, mine));
}

UnwantedRun EndUnwantedRun(const RunRecord& record, std::int64_t heard) {
  constexpr int kMostLooks = 5;  // at what it had started
  UnwantedRun run{record, false, {}};
  run.record.process = ProcessOf(record);
  run.record.ended = std::max(record.started, heard);
  run.record.verdict = JobStatus::kAborted;
  run.record.failure = {FailureKind::kStopped};
  ProcessIdentity left = run.record.process;
  for (int look = 0; look < kMostLooks && Runs(left); ++look) {
    PTWrapperProcess solver;
    const bool isHeld = solver.Open(left, record.token);
    if (isHeld ? !solver.TerminateAll() : Runs(left)) {
      run.runsOn = solver.LastError();
      break;
    }
    run.ran = true;
    run.record.ended = DateTimeWrapper::CurrentTime();
    left = IdentityOfProcess(PTWrapperProcess::FindStarted(record.token, record.folder));
  }
  return run;
}
