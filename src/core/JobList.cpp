#include "core/JobList.h"

#include <algorithm>

#include "solvers/SolverKinds.h"
#include "util/text/DateTimeWrapper.h"

namespace {

constexpr char kMutexName[] = "KESTRUN_MUTEX_SIGNAL_NAME";

// Not one a list: groups of this process must not change their lists at once where the named mutex
// cannot be had.
std::mutex& ProcessMutex() {
  static std::mutex mutex;
  return mutex;
}

void SetAbort(JobFile& job, bool abort) {
  job.abort = abort;
  for (const std::shared_ptr<JobFile>& stage : job.stages) SetAbort(*stage, abort);
}

// A setter that does nothing for jobs of other kinds.
template <typename T>
std::function<bool(JobFile&)> DynaSetter(T DynaFields::*field, T value) {
  return [field, value](JobFile& job) {
    auto* dyna = dynamic_cast<JobFileDyna*>(&job);
    if (dyna == nullptr) return false;
    dyna->*field = value;
    return true;
  };
}

template <typename T>
std::function<bool(JobFile&)> Setter(T JobFields::*field, T value) {
  return [field, value = std::move(value)](JobFile& job) {
    job.*field = value;
    return true;
  };
}

// What is set for a job with stages is set for each of them.
std::function<bool(JobFile&)> WithStages(std::function<bool(JobFile&)> change) {
  return [change = std::move(change)](JobFile& job) {
    if (!change(job)) return false;
    for (const std::shared_ptr<JobFile>& stage : job.stages) change(*stage);
    return true;
  };
}

}  // namespace

JobList::SharedLock::SharedLock() : created_(mutex_.CreateMutexSignal(kMutexName, false) != 0) {}

// An abandoned mutex is owned like any other.
void JobList::SharedLock::Lock() {
  enum Wait : int { kTaken = 0, kTimedOut = 1, kAbandoned = 2 };
  ProcessMutex().lock();
  const int wait = created_ ? mutex_.WaitForMutexSignal(-1) : -1;
  taken_ = wait == kTaken || wait == kAbandoned;
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
  if (isNew) log_.Report(Message(MessageId::kListNotLocked, trouble));
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

void JobList::Tell(ListChange::What what, const JobFile& job, std::size_t place) const {
  observer_.JobsChanged(id_, {what, job, place});
}

void JobList::SetStatus(JobFile& job, JobStatus status, std::int64_t since) {
  job.status = status;
  const bool hasEnded = status == JobStatus::kFinished || status == JobStatus::kAborted;
  if (status == JobStatus::kRunning)
    job.started = since != 0 ? since : DateTimeWrapper::CurrentTime();
  job.ended = hasEnded ? DateTimeWrapper::CurrentTime() : 0;
  observer_.JobStatusChanged(id_, job);
}

bool JobList::AddJob(std::shared_ptr<JobFile> job) {
  if (!job) return false;
  const Access access(*this);
  if (!byId_.emplace(job->id, job.get()).second) return false;
  jobs_.push_back(std::move(job));
  Tell(ListChange::What::kAdded, *jobs_.back(), jobs_.size() - 1);
  if (jobs_.back()->status == JobStatus::kQueued) JobQueued(*jobs_.back());
  return true;
}

bool JobList::RemoveJob(JobId job) {
  std::shared_ptr<JobFile> removed;  // freed without the lock
  const Access access(*this);
  JobFile* const found = Find(job);
  if (found == nullptr) return false;
  if (IsActive(found->status)) SetAbort(*found, true);
  const std::size_t place = PlaceOf(*found);
  removed = std::move(jobs_[place]);
  jobs_.erase(jobs_.begin() + static_cast<std::ptrdiff_t>(place));
  byId_.erase(job);
  Tell(ListChange::What::kRemoved, *removed, place);
  return true;
}

bool JobList::MoveJob(JobId job, bool up) {
  const Access access(*this);
  const JobFile* const found = Find(job);
  if (found == nullptr || found->status != JobStatus::kQueued) return false;
  const std::size_t place = PlaceOf(*found);
  if (up ? place == 0 : place + 1 == jobs_.size()) return false;
  const std::size_t other = up ? place - 1 : place + 1;
  if (up && jobs_[other]->status != JobStatus::kQueued) return false;
  std::swap(jobs_[place], jobs_[other]);
  Tell(ListChange::What::kMoved, *found, other);
  return true;
}

bool JobList::ChangeJob(JobId job, const std::function<bool(JobFile&)>& change) {
  const Access access(*this);
  JobFile* const found = Find(job);
  if (found == nullptr || found->status == JobStatus::kRunning || !change(*found)) return false;
  Tell(ListChange::What::kFields, *found, 0);
  return true;
}

bool JobList::Resubmit(JobId job) {
  const Access access(*this);
  JobFile* const found = Find(job);
  if (found == nullptr) return false;
  if (!HasEnded(found->status)) return false;
  found->ResetForRun();
  SetStatus(*found, JobStatus::kQueued);
  JobQueued(*found);
  return true;
}

bool JobList::SetMemory(JobId job, std::uint64_t megabytes) {
  return ChangeJob(job, WithStages(Setter(&JobFile::memory, megabytes)));
}

bool JobList::SetCpuCount(JobId job, int count) {
  return ChangeJob(job, WithStages(Setter(&JobFile::ncpu, count)));
}

bool JobList::SetPause(JobId job, int seconds) {
  return ChangeJob(job, WithStages(Setter(&JobFile::pause, seconds)));
}

bool JobList::SetPrecision(JobId job, SolverKind kind) {
  if (!RowOfKind(kind).runsDecks) return false;
  return ChangeJob(job, WithStages(DynaSetter(&JobFileDyna::solverType, kind)));
}

bool JobList::SetUseSFile(JobId job, bool on) {
  return ChangeJob(job, WithStages(DynaSetter(&JobFileDyna::useSFile, on)));
}

bool JobList::SetDump(JobId job, bool on) {
  return ChangeJob(job, WithStages(DynaSetter(&JobFileDyna::dump, on)));
}

bool JobList::SetRestartFile(JobId job, const std::string& path) {
  return ChangeJob(job, Setter(&JobFile::restartFile, path));
}

bool JobList::SetExtraOptions(JobId job, const std::string& options) {
  return ChangeJob(job, Setter(&JobFile::extraOptions, options));
}

int JobList::JobCount() const {
  const Access access(*this);
  return static_cast<int>(jobs_.size());
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

void JobList::ShowStage(const JobFile& job, JobFile& stage, JobStatus status) {
  const Access access(*this);
  SetStatus(job, stage, status);
}

void JobList::EndRun(JobFile& job, JobStatus status) {
  const Access access(*this);
  if (Find(job.id) != nullptr) SetStatus(job, status);
}

void JobList::AbortActiveJobs() {
  const Access access(*this);
  for (const std::shared_ptr<JobFile>& job : jobs_) {
    if (IsActive(job->status)) SetAbort(*job, true);
  }
}
