// The group's thread: takes the queued jobs one after another, runs them and writes their ends
// down.
#include <algorithm>
#include <chrono>
#include <utility>

#include "core/JobGroup.h"
#include "core/SenseSwitch.h"
#include "jobs/OutputPrefix.h"
#include "solvers/RunSteps.h"
#include "util/process/OwnThread.h"
#include "util/text/DateTimeWrapper.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr unsigned kLookAgainMs = 100;
constexpr std::chrono::seconds kStopLimit{30};

}  // namespace

// What a new thread is given; it frees it.
struct JobGroup::ThreadStart {
  std::shared_ptr<JobGroup> group;
  std::shared_ptr<RunningThreads> threads;
  std::function<void()> work;
};

std::uint32_t JobGroup::ThreadMain(void* start) {
  const std::unique_ptr<ThreadStart> mine(static_cast<ThreadStart*>(start));
  mine->work();
  mine->work = nullptr;
  mine->group.reset();
  mine->threads->Leave();
  return 0;
}

// The flag is set before the thread starts, so that two quick submits cannot start two threads.
bool JobGroup::Submit() {
  const MutexLock lock(submitMutex_);
  if (running_.exchange(true)) {
    return Refuse(Message(MessageId::kGroupRunsAlready));
  }
  stop_ = false;
  FailureStreak streak;
  {
    const MutexLock pauseLock(textMutex_);
    if (pause_) streak = *std::exchange(pause_, std::nullopt);
  }
  NoteQueued();
  const auto failed = [this](const std::exception& error) {
    running_ = false;
    setup_.log.Report(Message(MessageId::kGroupNotStarted, error.what()));
  };
  const auto work = [this, failed, streak] {
    Guard([&] { RunLoop(streak); }, failed);
    TellRunChanged();
  };
  if (StartThread(thread_, work)) return true;
  running_ = false;
  return Refuse(Message(MessageId::kGroupNotStarted, thread_.LastError()));
}

// For the morning after a crash.
void JobGroup::NoteQueued() {
  const std::string name = Name();
  std::vector<std::string> queued;
  ReadJobs([&](const JobFile& job) {
    if (job.status == JobStatus::kQueued) queued.push_back(job.MainFile());
  });
  for (const std::string& path : queued) {
    setup_.log.Note(Message(MessageId::kJobSubmitted, path, name));
  }
}

// A group that runs takes it without another submit.
void JobGroup::JobQueued(const JobFile& job) {
  if (running_) setup_.log.Note(Message(MessageId::kJobSubmitted, job.MainFile(), Name()));
}

bool JobGroup::Refuse(const Message& message) {
  SetLastError("%s", message.English().c_str());
  setup_.log.Report(message);
  return false;
}

bool JobGroup::StartThread(PTWrapperThread& thread, std::function<void()> work) {
  auto start = std::make_unique<ThreadStart>();
  start->group = shared_from_this();
  start->threads = setup_.threads;
  start->work = std::move(work);
  setup_.threads->Enter();
  if (thread.CreateThread(&JobGroup::ThreadMain, start.get(), 0)) {
    start.release();
    return true;
  }
  setup_.threads->Leave();
  return false;
}

bool JobGroup::Resume(JobId job, const RunRecord& run) {
  const std::shared_ptr<JobFile> found = Share(job);
  if (!found) return false;
  ++resumed_;
  PTWrapperThread thread;
  const auto failed = [this](const std::exception& error) {
    setup_.log.Report(Message(MessageId::kGroupNotStarted, error.what()));
  };
  const auto work = [this, found, run, failed] {
    Guard([&] { GoOnWith(found, run); }, failed);
    --resumed_;
    TellRunChanged();
  };
  if (StartThread(thread, work)) return true;
  --resumed_;
  return Refuse(Message(MessageId::kGroupNotStarted, thread.LastError()));
}

void JobGroup::GoOnWith(const std::shared_ptr<JobFile>& resumed, const RunRecord& run) {
  JobFile& job = *resumed;
  setup_.observer.GroupRunChanged(Id());
  RunTimes times;
  JobRunSetup setup = SetupFor(job, times);
  // The group's stop may be one from before the job came; one from now on aborts the job itself.
  setup.begin = [&] {
    times.started = run.started;
    return BeginRunOf(job, job.started != 0 ? job.started : run.started);
  };
  RunToEnd(
      resumed, [&] { return ResumeRun(job, setup, run); }, times);
}

bool JobGroup::Stop() {
  RequestStop();
  const Clock::time_point limit = Clock::now() + kStopLimit;
  while (Running() && Clock::now() < limit) DateTimeWrapper::SleepMSec(kLookAgainMs);
  return !Running();
}

bool JobGroup::Stopping() const {
  const MutexLock lock(runsMutex_);
  return std::any_of(runs_.begin(), runs_.end(), [](const auto& job) { return job->abort.load(); });
}

void JobGroup::TellRunChanged() {
  Guard([this] { setup_.observer.GroupRunChanged(Id()); }, [](const std::exception&) {});
}

// Whatever is thrown, the job ends, and its solver does not run on where nobody watches it.
void JobGroup::RunToEnd(const std::shared_ptr<JobFile>& job, const std::function<JobStatus()>& run,
                        const RunTimes& times) {
  JobStatus status = JobStatus::kAborted;
  {
    const MutexLock lock(runsMutex_);
    runs_.push_back(job);
  }
  Guard([&] { status = run(); },
        [&](const std::exception& error) {
          job->process.TerminateAll();
          for (const std::shared_ptr<JobFile>& stage : job->stages) stage->process.TerminateAll();
          const Message reason(MessageId::kRunFailed, job->MainFile(), error.what());
          setup_.log.Report(reason);
          job->SetRunError(RunError::kNotStarted, reason);
        });
  EndRunOf(*job, status, times);
  const MutexLock lock(runsMutex_);
  std::erase(runs_, job);
}

void JobGroup::RequestStop() {
  {
    const MutexLock lock(submitMutex_);  // a submit under way would undo it
    stop_ = true;
  }
  AbortActiveJobs();
}

// The running flag is cleared while the list is locked: a job that is added and submitted
// afterwards gets a new thread, one added before is taken by this one.
void JobGroup::RunLoop(FailureStreak streak) {
  setup_.observer.GroupRunChanged(Id());
  const auto waitForResumed = [this] {
    while (resumed_ > 0 && !stop_) DateTimeWrapper::SleepMSec(kLookAgainMs);
  };
  waitForResumed();
  std::chrono::seconds pause{0};
  while (const auto job = TakeQueuedJob(stop_, pause, [this] { running_ = false; })) {
    RunTimes times;
    JobRunSetup run = SetupFor(*job, times);
    run.pause = pause;
    RunToEnd(
        job, [&] { return RunJob(*job, run); }, times);
    waitForResumed();
    ReadJob(job->id, [&](const JobFile& ended) { streak.Take(ended); });
    if (PausesAfter(streak)) break;
  }
}

// Ends the thread as a queue without jobs does. What is not there for one job is not for the next
// ones either, and a licence that is away must not cost a whole study.
bool JobGroup::PausesAfter(const FailureStreak& streak) {
  const int limit = setup_.settings().stop_after_failures;
  if (limit <= 0 || streak.Count() < limit || stop_) return false;
  int queued = 0;
  ReadJobs([&](const JobFile& job) { queued += job.status == JobStatus::kQueued; });
  if (queued == 0) return false;
  {
    const MutexLock lock(submitMutex_);
    const MutexLock pauseLock(textMutex_);
    pause_ = streak;
    running_ = false;
  }
  setup_.log.Report(
      Message(MessageId::kGroupPaused, Name(), streak.Count(), streak.Reason(), queued));
  return true;
}

JobRunSetup JobGroup::SetupFor(JobFile& job, RunTimes& times) {
  JobRunSetup run = setup_.run;
  run.folders = [&] { return FoldersOf(job); };
  run.minFreeMb = [this] { return setup_.settings().min_free_mb; };
  run.waits = [&](const Message& message) { ShowWait(job, message); };
  run.begin = [&] {
    std::optional<JobRunContext> context = BeginRunOf(job, 0);
    return stop_ ? std::nullopt : std::move(context);
  };
  run.setStageStatus = [&](JobFile& stage, JobStatus status) {
    if (HasEnded(status)) return ShowStage(job, stage, status, times.ended);
    const std::int64_t began = std::exchange(times, {}).started;
    ShowStage(job, stage, status, began != 0 && stage.started != 0 ? stage.started : began);
  };
  run.recorded = [&](const JobFile& stage, const RunRecord& record) {
    times.ended = record.ended;
    // The first record comes before the process.
    if (HasEnded(record.verdict)) {
      EndSwitches(stage.Folder());
    } else {
      BeginSwitches(stage.Folder(), job.id, record.process.id == 0, OutputNamesOf(stage));
    }
    setup_.observer.RunRecorded(job.id, record);
    if (setup_.watch != nullptr) setup_.watch->Recorded(job.id, record);
  };
  run.stoppedAt = [&](const JobFile&, const RunRecord& record) {
    return setup_.watch == nullptr ? kNotStopped : setup_.watch->StoppedAt(job.id, record);
  };
  run.stepFell = [&](const JobFile&, const RunRecord& record) {
    return setup_.watch != nullptr && setup_.watch->StepFell(job.id, record);
  };
  return run;
}

void JobGroup::EndRunOf(JobFile& job, JobStatus status, const RunTimes& times) {
  setup_.log.Note(Message(MessageId::kJobEnded, job.MainFile(), JobStatusWord(status)));
  EndRun(job, status, times.ended);
}

// None for a job that was removed: it does not run.
std::vector<std::string> JobGroup::FoldersOf(const JobFile& job) {
  std::vector<std::string> folders;
  ReadJob(job.id, [&](const JobFile& waiting) { folders = RunFolders(waiting); });
  return folders;
}

void JobGroup::ShowWait(const JobFile& job, const Message& message) {
  if (!message.Empty()) setup_.log.Report(message);
  ShowWaiting(job);
}

// Nothing when the job is not to run: it was removed during the pause.
std::optional<JobRunContext> JobGroup::BeginRunOf(JobFile& job, std::int64_t since) {
  if (setup_.takeFreeName) setup_.takeFreeName(job.id);
  if (!BeginRun(job, since)) return std::nullopt;
  JobRunContext context;
  context.settings = setup_.settings();
  context.groupText = Text();
  if (setup_.otherPrefixes) context.otherPrefixes = setup_.otherPrefixes(job);
  context.console.terminal = context.settings.xterm_path;
  context.report = setup_.log.Sink();
  context.note = [this](const Message& message) { setup_.log.Note(message); };
  context.runErrorCode = setup_.runErrorCode;
  return context;
}
