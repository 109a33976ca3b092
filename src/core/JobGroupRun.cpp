// The group's thread: takes the queued jobs one after another and runs them.
#include <chrono>
#include <exception>

#include "core/JobGroup.h"
#include "core/JobGroupManager.h"
#include "runs/JobRun.h"
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
};

std::uint32_t JobGroup::ThreadMain(void* start) {
  const std::unique_ptr<ThreadStart> mine(static_cast<ThreadStart*>(start));
  mine->group->RunLoop();
  mine->group.reset();
  mine->threads->Leave();
  return 0;
}

// The flag is set before the thread starts, so that two quick submits cannot start two threads.
bool JobGroup::Submit() {
  const std::lock_guard<std::mutex> lock(submitMutex_);
  if (running_.exchange(true)) {
    return Refuse("Running work thread is found, submit job failed");
  }
  stop_ = false;
  if (StartThread()) return true;
  running_ = false;
  return Refuse(thread_.LastError());
}

bool JobGroup::Refuse(const std::string& message) {
  RecordError(message);
  manager_.Settings().Log().ReportLine(message);
  return false;
}

bool JobGroup::StartThread() {
  auto start = std::make_unique<ThreadStart>();
  start->group = shared_from_this();
  start->threads = manager_.threads_;
  manager_.threads_->Enter();
  if (thread_.CreateThread(&JobGroup::ThreadMain, start.get(), 0)) {
    start.release();
    return true;
  }
  manager_.threads_->Leave();
  return false;
}

bool JobGroup::Stop() {
  RequestStop();
  const Clock::time_point limit = Clock::now() + kStopLimit;
  while (running_ && Clock::now() < limit) DateTimeWrapper::SleepMSec(kLookAgainMs);
  return !running_;
}

void JobGroup::RunLoop() {
  manager_.Observer().GroupRunChanged(id_);
  int pause = 0;
  while (const std::shared_ptr<JobFile> job = TakeNextJob(pause)) {
    WaitOutPause(*job, pause);
    if (BeginRun(job)) EndRun(job, RunJob(*job));
  }
  manager_.Observer().GroupRunChanged(id_);
}

// Null at the end of the thread's work. The running flag is cleared with the list locked: a job
// that is added and submitted afterwards gets a new thread, one added before is taken by this one.
std::shared_ptr<JobFile> JobGroup::TakeNextJob(int& pause) {
  const ListLock lock(*this);
  for (std::size_t i = 0; i < jobs_.size() && !stop_; ++i) {
    JobFile& job = *jobs_[i];
    if (job.status != JobStatus::kQueued) continue;
    pause = job.pause;
    SetStatus(job, JobStatus::kWaiting);
    if (!stop_) return jobs_[i];
    SetStatus(job, JobStatus::kAborted);
  }
  running_ = false;
  return nullptr;
}

// Ends early when the group is stopped or the job is removed.
void JobGroup::WaitOutPause(const JobFile& job, int seconds) const {
  const Clock::time_point end = Clock::now() + std::chrono::seconds(seconds);
  for (;;) {
    const Clock::time_point now = Clock::now();
    if (now >= end || stop_ || job.abort) return;
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - now).count() + 1;
    DateTimeWrapper::SleepMSec(left < kLookAgainMs ? static_cast<unsigned>(left) : kLookAgainMs);
  }
}

// False when the job is not to run: it was removed during the pause, or the group stopped.
bool JobGroup::BeginRun(const std::shared_ptr<JobFile>& job) {
  const ListLock lock(*this);
  if (Find(job->id) == nullptr) return false;
  SetStatus(*job, JobStatus::kRunning);
  if (!stop_ && !job->abort) return true;
  SetStatus(*job, JobStatus::kAborted);
  return false;
}

JobStatus JobGroup::RunJob(JobFile& job) {
  JobRunContext context;
  context.settings = manager_.Settings().Snapshot();
  context.groupText = Text();
  context.report = [this](const std::string& line) { manager_.Settings().Log().ReportLine(line); };
  context.note = [this](const std::string& line) { manager_.Settings().Log().NoteLine(line); };
  context.runErrorCode = &manager_.runErrorCode;
  context.console.terminal = context.settings.xterm_path;

  JobStatus status = JobStatus::kAborted;
  try {
    status = RunThroughDriver(job, context);
  } catch (const std::exception& error) {
    manager_.Settings().Log().Report(Message(MessageId::kRunFailed, job.jobFile, error.what()));
  }
  // The driver leaves an aborted solver running; it must not outlive its job, nor must what a
  // launcher that died meanwhile has started. One that has ended is let go, since each one held
  // costs a descriptor and a queue may be long.
  const bool aborted = job.abort && status == JobStatus::kAborted;
  if (!(aborted ? job.process.TerminateAll() : job.process.Terminate()) && job.abort) {
    manager_.Settings().Log().ReportLine(job.process.LastError());
  }
  return status;
}

JobStatus JobGroup::RunThroughDriver(JobFile& job, const JobRunContext& context) {
  if (RunsInStages(job)) return RunThroughStages(job, context);
  JobSolver* driver = manager_.SolverFor(job.GetSolverType());
  if (driver != nullptr) return driver->Run(job, context);
  manager_.Settings().Log().Report(
      Message(MessageId::kNoSolverOfType, static_cast<int>(job.GetSolverType()), job.jobFile));
  return JobStatus::kAborted;
}

// Nothing is written for a job that was removed meanwhile.
void JobGroup::EndRun(const std::shared_ptr<JobFile>& job, JobStatus status) {
  const ListLock lock(*this);
  if (Find(job->id) != nullptr) SetStatus(*job, status);
}
