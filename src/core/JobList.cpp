#include "core/JobGroup.h"

#include <algorithm>

#include "core/JobGroupManager.h"
#include "solvers/SolverKinds.h"
#include "util/text/DateTimeWrapper.h"

namespace {

constexpr char kMutexName[] = "KESTRUN_MUTEX_SIGNAL_NAME";

int NextId() {
  static std::atomic<int> last{0};
  return ++last;
}

std::recursive_mutex& ProcessMutex() {
  static std::recursive_mutex mutex;
  return mutex;
}

void SetAbort(JobFile& job, bool abort) {
  job.abort = abort;
  for (const std::shared_ptr<JobFile>& stage : job.stages) SetAbort(*stage, abort);
}

// A setter that does nothing for jobs of other kinds.
template <typename T>
std::function<bool(JobFile&)> DynaSetter(T JobFileDyna::*field, T value) {
  return [field, value](JobFile& job) {
    auto* dyna = dynamic_cast<JobFileDyna*>(&job);
    if (dyna == nullptr) return false;
    dyna->*field = value;
    return true;
  };
}

template <typename T>
std::function<bool(JobFile&)> Setter(T JobFile::*field, T value) {
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

JobGroup::ListLock::ListLock(const JobGroup& group)
    : process_(ProcessMutex()), group_(group), taken_(group.TakeMutex()) {}

JobGroup::ListLock::~ListLock() {
  if (taken_) group_.mutex_.ReleaseMutexSignal();
}

JobGroup::JobGroup(JobGroupManager& manager)
    : id_(NextId()),
      manager_(manager),
      mutexCreated_(mutex_.CreateMutexSignal(kMutexName, false) != 0) {}

JobGroup::~JobGroup() = default;

// An abandoned mutex is owned like any other.
bool JobGroup::TakeMutex() const {
  if (!mutexCreated_) {
    RecordMutexError("MUTEX not created yet");
    return false;
  }
  switch (mutex_.WaitForMutexSignal(-1)) {
    case 0:
      return true;
    case 1:
      RecordMutexError("Time out return");
      return false;
    case 2:
      RecordMutexError("the owner thread does not release the mutex");
      return true;
    default:
      RecordMutexError("Unknown error");
      return false;
  }
}

// Reported when it is another error than before: a mutex that cannot be taken fails each time.
// Reading a group takes the mutex too, so a reader may leave an error.
void JobGroup::RecordMutexError(const std::string& message) const {
  const_cast<JobGroup*>(this)->RecordError(message);
  {
    const std::lock_guard<std::mutex> lock(errorMutex_);
    if (reportedMutexError_ == message) return;
    reportedMutexError_ = message;
  }
  manager_.Settings().Log().Report(Message(MessageId::kListNotLocked, message));
}

void JobGroup::RecordError(const std::string& message) {
  const std::lock_guard<std::mutex> lock(errorMutex_);
  SetLastError("%s", message.c_str());
}

std::string JobGroup::LastError() const {
  const std::lock_guard<std::mutex> lock(errorMutex_);
  return PTWrapper::LastError();
}

std::string JobGroup::Name() const {
  const ListLock lock(*this);
  return name_;
}

void JobGroup::SetName(const std::string& name) {
  const ListLock lock(*this);
  name_ = name;
}

std::string JobGroup::Text() const {
  const ListLock lock(*this);
  return text_;
}

void JobGroup::SetText(const std::string& text) {
  const ListLock lock(*this);
  text_ = text;
}

JobFile* JobGroup::Find(JobId job) const {
  const auto found = byId_.find(job);
  return found == byId_.end() ? nullptr : found->second;
}

std::size_t JobGroup::PlaceOf(const JobFile& job) const {
  const auto found = std::find_if(jobs_.begin(), jobs_.end(),
                                  [&job](const auto& entry) { return entry.get() == &job; });
  return static_cast<std::size_t>(found - jobs_.begin());
}

JobFile* JobGroup::FirstActive() const {
  const auto found = std::find_if(jobs_.begin(), jobs_.end(),
                                  [](const auto& entry) { return IsActive(entry->status); });
  return found == jobs_.end() ? nullptr : found->get();
}

void JobGroup::SetStatus(JobFile& job, JobStatus status) {
  job.status = status;
  const bool hasEnded = status == JobStatus::kFinished || status == JobStatus::kAborted;
  if (status == JobStatus::kRunning) job.started = DateTimeWrapper::CurrentTime();
  job.ended = hasEnded ? DateTimeWrapper::CurrentTime() : 0;
  manager_.Observer().JobStatusChanged(id_, job.id, status);
}

void JobGroup::RequestStop() {
  {
    const std::lock_guard<std::mutex> lock(submitMutex_);  // a submit under way would undo it
    stop_ = true;
  }
  const ListLock lock(*this);
  if (JobFile* const active = FirstActive()) SetAbort(*active, true);
}

bool JobGroup::AddJob(std::shared_ptr<JobFile> job) {
  if (!job) return false;
  const ListLock lock(*this);
  if (!byId_.emplace(job->id, job.get()).second) return false;
  jobs_.push_back(std::move(job));
  manager_.Observer().JobsChanged(id_);
  return true;
}

bool JobGroup::RemoveJob(JobId job) {
  std::shared_ptr<JobFile> removed;  // freed without the lock
  const ListLock lock(*this);
  JobFile* const found = Find(job);
  if (found == nullptr) return false;
  if (IsActive(found->status)) SetAbort(*found, true);
  const auto place = jobs_.begin() + static_cast<std::ptrdiff_t>(PlaceOf(*found));
  removed = std::move(*place);
  jobs_.erase(place);
  byId_.erase(job);
  manager_.Observer().JobsChanged(id_);
  return true;
}

bool JobGroup::MoveJob(JobId job, bool up) {
  const ListLock lock(*this);
  const JobFile* const found = Find(job);
  if (found == nullptr || found->status != JobStatus::kQueued) return false;
  const std::size_t place = PlaceOf(*found);
  if (up ? place == 0 : place + 1 == jobs_.size()) return false;
  const std::size_t other = up ? place - 1 : place + 1;
  if (up && jobs_[other]->status != JobStatus::kQueued) return false;
  std::swap(jobs_[place], jobs_[other]);
  manager_.Observer().JobsChanged(id_);
  return true;
}

bool JobGroup::ChangeJob(JobId job, const std::function<bool(JobFile&)>& change) {
  const ListLock lock(*this);
  JobFile* const found = Find(job);
  if (found == nullptr || found->status == JobStatus::kRunning || !change(*found)) return false;
  manager_.Observer().JobsChanged(id_);
  return true;
}

bool JobGroup::SetJobStatus(JobId job, JobStatus status) {
  const ListLock lock(*this);
  JobFile* const found = Find(job);
  if (found == nullptr) return false;
  if (found->status == JobStatus::kRunning) return false;
  if (status == JobStatus::kQueued) SetAbort(*found, false);
  SetStatus(*found, status);
  return true;
}

bool JobGroup::Resubmit(JobId job) {
  const ListLock lock(*this);
  JobFile* const found = Find(job);
  if (found == nullptr) return false;
  if (!HasEnded(found->status)) return false;
  found->ResetForRun();
  SetStatus(*found, JobStatus::kQueued);
  return true;
}

bool JobGroup::SetMemory(JobId job, std::uint64_t megabytes) {
  return ChangeJob(job, WithStages(Setter(&JobFile::memory, megabytes)));
}

bool JobGroup::SetCpuCount(JobId job, int count) {
  return ChangeJob(job, WithStages(Setter(&JobFile::ncpu, count)));
}

bool JobGroup::SetPause(JobId job, int seconds) {
  return ChangeJob(job, WithStages(Setter(&JobFile::pause, seconds)));
}

bool JobGroup::SetPrecision(JobId job, SolverKind kind) {
  if (!RowOfKind(kind).runsDecks) return false;
  return ChangeJob(job, WithStages(DynaSetter(&JobFileDyna::solverType, kind)));
}

bool JobGroup::SetUseSFile(JobId job, bool on) {
  return ChangeJob(job, WithStages(DynaSetter(&JobFileDyna::useSFile, on)));
}

bool JobGroup::SetDump(JobId job, bool on) {
  return ChangeJob(job, WithStages(DynaSetter(&JobFileDyna::dump, on)));
}

bool JobGroup::SetRestartFile(JobId job, const std::string& path) {
  return ChangeJob(job, Setter(&JobFile::restartFile, path));
}

bool JobGroup::SetExtraOptions(JobId job, const std::string& options) {
  return ChangeJob(job, Setter(&JobFile::extraOptions, options));
}

int JobGroup::JobCount() const {
  const ListLock lock(*this);
  return static_cast<int>(jobs_.size());
}

std::vector<JobId> JobGroup::JobIds() const {
  const ListLock lock(*this);
  std::vector<JobId> ids;
  ids.reserve(jobs_.size());
  for (const std::shared_ptr<JobFile>& job : jobs_) ids.push_back(job->id);
  return ids;
}

std::shared_ptr<JobFile> JobGroup::GetJob(JobId job) const {
  const ListLock lock(*this);
  const JobFile* const found = Find(job);
  return found == nullptr ? nullptr : jobs_[PlaceOf(*found)];
}

JobId JobGroup::ActiveJob() const {
  const ListLock lock(*this);
  const JobFile* const active = FirstActive();
  return active == nullptr ? JobId::kNone : active->id;
}

bool JobGroup::ReadJob(JobId job, const std::function<void(const JobFile&)>& read) const {
  const ListLock lock(*this);
  const JobFile* const found = Find(job);
  if (found != nullptr) read(*found);
  return found != nullptr;
}

bool JobGroup::ReadActiveJob(const std::function<void(const JobFile&)>& read) const {
  const ListLock lock(*this);
  const JobFile* const active = FirstActive();
  if (active != nullptr) read(*active);
  return active != nullptr;
}

void JobGroup::ReadJobs(const std::function<void(const JobFile&)>& read) const {
  const ListLock lock(*this);
  for (const std::shared_ptr<JobFile>& job : jobs_) read(*job);
}
