// The group's thread: takes the queued jobs one after another, runs them and writes their ends
// down.
#include <chrono>

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
    return Refuse(Message(MessageId::kGroupRunsAlready));
  }
  stop_ = false;
  if (StartThread()) return true;
  running_ = false;
  return Refuse(Message(MessageId::kGroupNotStarted, thread_.LastError()));
}

bool JobGroup::Refuse(const Message& message) {
  RecordError(message.English());
  manager_.Settings().Log().Report(message);
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
  JobRunSetup setup;
  setup.solverFor = [this](SolverKind kind) { return manager_.SolverFor(kind); };
  setup.positioning = &manager_.positioning_;
  setup.autoPosition = &manager_.autoPosition;
  while (const std::shared_ptr<JobFile> job = TakeNextJob(setup.pause)) {
    setup.begin = [&] { return BeginRun(*job); };
    setup.setStageStatus = [&](JobFile& stage, JobStatus status) {
      ShowStageStatus(*job, stage, status);
    };
    EndRun(*job, RunJob(*job, setup));
  }
  manager_.Observer().GroupRunChanged(id_);
}

// Null at the end of the thread's work. The running flag is cleared with the list locked: a job
// that is added and submitted afterwards gets a new thread, one added before is taken by this one.
std::shared_ptr<JobFile> JobGroup::TakeNextJob(std::chrono::seconds& pause) {
  const ListLock lock(*this);
  for (std::size_t i = 0; i < jobs_.size() && !stop_; ++i) {
    JobFile& job = *jobs_[i];
    if (job.status != JobStatus::kQueued) continue;
    pause = std::chrono::seconds(job.pause);
    SetStatus(job, JobStatus::kWaiting);
    if (!stop_) return jobs_[i];
    SetStatus(job, JobStatus::kAborted);
  }
  running_ = false;
  return nullptr;
}

// Nothing when the job is not to run: it was removed during the pause, or the group stopped.
std::optional<JobRunContext> JobGroup::BeginRun(JobFile& job) {
  {
    const ListLock lock(*this);
    if (Find(job.id) == nullptr) return std::nullopt;
    SetStatus(job, JobStatus::kRunning);
    if (stop_) return std::nullopt;
  }
  JobRunContext context;
  context.settings = manager_.Settings().Snapshot();
  context.groupText = Text();
  context.console.terminal = context.settings.xterm_path;
  context.report = manager_.Settings().Log().Sink();
  context.note = [this](const Message& message) { manager_.Settings().Log().Note(message); };
  context.runErrorCode = &manager_.runErrorCode;
  return context;
}

// Nothing is written for a job that was removed meanwhile.
void JobGroup::EndRun(JobFile& job, JobStatus status) {
  const ListLock lock(*this);
  if (Find(job.id) != nullptr) SetStatus(job, status);
}
