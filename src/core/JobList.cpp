#include "core/JobList.h"

#include <algorithm>

namespace {

constexpr char kMutexName[] = "KESTRUN_MUTEX_SIGNAL_NAME";

// Not one a list: groups of this process must not change their lists at once where the named mutex
// cannot be had.
std::mutex& ProcessMutex() {
  static std::mutex mutex;
  return mutex;
}

}  // namespace

JobList::SharedLock::SharedLock() : created_(mutex_.CreateMutexSignal(kMutexName, false) != 0) {}

// An abandoned mutex is owned like any other. Another program that keeps it for ever must not stop
// the window: after one wait it is looked at only, and the process's own mutex has to do.
void JobList::SharedLock::Lock() {
  enum Wait : int { kTaken = 0, kTimedOut = 1, kAbandoned = 2 };
  constexpr long kPatienceMs = 3000;
  static bool isKept = false;  // of all lists, as the mutex is
  ProcessMutex().lock();
  const int wait = created_ ? mutex_.WaitForMutexSignal(isKept ? 0 : kPatienceMs) : -1;
  taken_ = wait == kTaken || wait == kAbandoned;
  isKept = created_ && !taken_;
  if (!created_) {
    trouble_ = "MUTEX not created yet";
  } else if (wait == kTaken) {
    trouble_.clear();
  } else if (wait == kAbandoned) {
    trouble_ = "the owner thread does not release the mutex";
  } else {
    trouble_ = wait == kTimedOut ? "Time out return" : "Unknown error";
  }
}

void JobList::SharedLock::Unlock() {
  if (taken_) mutex_.ReleaseMutexSignal();
  ProcessMutex().unlock();
}

JobList::Access::Access(const JobList& list) : list_(list) {
  list_.lock_.Lock();
}

// Trouble is told once the lock is let go, and to the log only when it is another one than before:
// a mutex that cannot be taken fails each time.
JobList::Access::~Access() {
  const std::string trouble = list_.lock_.Trouble();
  const bool isNew = !trouble.empty() && trouble != list_.reported_;
  if (isNew) list_.reported_ = trouble;
  list_.lock_.Unlock();
  if (!trouble.empty()) list_.TakeTrouble(trouble, isNew);
}

// Reading takes the lock too, so a reader may leave an error.
void JobList::TakeTrouble(const std::string& trouble, bool isNew) const {
  const_cast<JobList*>(this)->SetLastError("%s", trouble.c_str());
  const Message message(MessageId::kListNotLocked, trouble);
  // Without a named mutex the process's own does, and there is nothing that a user could do.
  if (isNew) lock_.IsMade() ? log_.Report(message) : log_.Note(message);
}

JobList::JobList(int id, QueueObserver& observer, AppLog& log)
    : id_(id), observer_(observer), log_(log) {}

JobList::~JobList() = default;

JobFile* JobList::Find(JobId job) const {
  const auto found = byId_.find(job);
  return found == byId_.end() ? nullptr : found->second;
}

std::size_t JobList::PlaceOf(const JobFile& job) const {
  const auto found = std::find_if(jobs_.begin(), jobs_.end(),
                                  [&job](const auto& entry) { return entry.get() == &job; });
  return static_cast<std::size_t>(found - jobs_.begin());
}

JobFile* JobList::FirstActive() const {
  const auto found = std::find_if(jobs_.begin(), jobs_.end(),
                                  [](const auto& entry) { return IsActive(entry->status); });
  return found == jobs_.end() ? nullptr : found->get();
}

void JobList::Tell(ListChange::What what, const Told& jobs, std::size_t place) const {
  if (!jobs.empty()) observer_.JobsChanged(id_, {what, jobs, place});
}

void JobList::SetStatus(JobFile& job, JobStatus status, std::int64_t since) {
  job.Enter(status, since);
  endings_ += HasEnded(status);
  if (Find(job.id) != nullptr) observer_.JobStatusChanged(id_, job);
}

bool JobList::AddJob(std::shared_ptr<JobFile> job) {
  if (!job) return false;
  const Access access(*this);
  if (!byId_.emplace(job->id, job.get()).second) return false;
  jobs_.push_back(std::move(job));
  Tell(ListChange::What::kAdded, {jobs_.back().get()}, jobs_.size() - 1);
  if (jobs_.back()->status == JobStatus::kQueued) JobQueued(*jobs_.back());
  return true;
}

bool JobList::ChangeJob(JobId job, const std::function<bool(JobFile&)>& change) {
  const Access access(*this);
  JobFile* const found = Find(job);
  if (found == nullptr || found->status == JobStatus::kRunning || !change(*found)) return false;
  Tell(ListChange::What::kFields, {found});
  return true;
}

bool JobList::SetRestartFile(JobId job, const std::string& path) {
  return ChangeJob(job, [&path](JobFile& found) {
    found.restartFile = path;
    return true;
  });
}

int JobList::JobCount() const {
  const Access access(*this);
  return static_cast<int>(jobs_.size());
}

int JobList::Endings() const {
  const Access access(*this);
  return endings_;
}

std::vector<JobId> JobList::JobIds() const {
  const Access access(*this);
  std::vector<JobId> ids;
  ids.reserve(jobs_.size());
  for (const std::shared_ptr<JobFile>& job : jobs_) ids.push_back(job->id);
  return ids;
}

JobId JobList::ActiveJob() const {
  const Access access(*this);
  const JobFile* const active = FirstActive();
  return active == nullptr ? JobId::kNone : active->id;
}

bool JobList::ReadJob(JobId job, const std::function<void(const JobFile&)>& read) const {
  const Access access(*this);
  const JobFile* const found = Find(job);
  if (found != nullptr) read(*found);
  return found != nullptr;
}

bool JobList::ReadActiveJob(const std::function<void(const JobFile&)>& read) const {
  const Access access(*this);
  const JobFile* const active = FirstActive();
  if (active != nullptr) read(*active);
  return active != nullptr;
}

void JobList::ReadJobs(const Jobs& jobs, const std::function<void(const JobFile&)>& read) const {
  const Access access(*this);
  for (const JobId job : jobs) {
    if (const JobFile* const found = Find(job)) read(*found);
  }
}

void JobList::ReadJobs(const std::function<void(const JobFile&)>& read) const {
  const Access access(*this);
  for (const std::shared_ptr<JobFile>& job : jobs_) read(*job);
}

std::shared_ptr<JobFile> JobList::TakeQueuedJob(const std::atomic<bool>& stop,
                                                std::chrono::seconds& pause,
                                                const std::function<void()>& none) {
  const Access access(*this);
  for (const std::shared_ptr<JobFile>& job : jobs_) {
    if (stop) break;
    if (job->status != JobStatus::kQueued) continue;
    pause = std::chrono::seconds(job->pause);
    SetStatus(*job, JobStatus::kWaiting);
    if (!stop) return job;
    job->SetHowFailed({FailureKind::kStopped});
    SetStatus(*job, JobStatus::kAborted);
  }
  none();
  return nullptr;
}

std::shared_ptr<JobFile> JobList::Share(JobId job) const {
  const Access access(*this);
  const JobFile* const found = Find(job);
  return found == nullptr ? nullptr : jobs_[PlaceOf(*found)];
}

bool JobList::BeginRun(JobFile& job, std::int64_t since) {
  const Access access(*this);
  if (Find(job.id) == nullptr) return false;
  SetStatus(job, JobStatus::kRunning, since);
  return true;
}

void JobList::ShowWaiting(const JobFile& job) {
  const Access access(*this);
  if (Find(job.id) != nullptr) observer_.JobStatusChanged(id_, job);
}

// Nobody is told of a job that was removed meanwhile.
void JobList::ShowStage(const JobFile& job, JobFile& stage, JobStatus status, std::int64_t since) {
  const Access access(*this);
  stage.Enter(status, since);
  if (Find(job.id) != nullptr) observer_.StageStatusChanged(id_, job, stage);
}

// A job that has been removed may come back.
void JobList::EndRun(JobFile& job, JobStatus status, std::int64_t ended) {
  const Access access(*this);
  SetStatus(job, status, ended);
}

void JobList::AbortActiveJobs() {
  const Access access(*this);
  for (const std::shared_ptr<JobFile>& job : jobs_) {
    if (!IsActive(job->status) || job->abort) continue;
    job->Abort();
    observer_.JobStatusChanged(id_, *job);
  }
}
