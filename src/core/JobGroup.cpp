#include "core/JobGroup.h"

#include <algorithm>

#include "core/JobGroupManager.h"

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

bool IsActive(const JobFile& job) {
  return job.status == JobStatus::kWaiting || job.status == JobStatus::kRunning;
}

void SetAbort(JobFile& job, bool abort) {
  job.abort = abort;
  for (const std::shared_ptr<JobFile>& stage : job.stages) SetAbort(*stage, abort);
}

bool IsStatus(int status) {
  return status >= JobStatus::kQueued && status <= JobStatus::kAborted;
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
  manager_.Settings().Log().ReportLine(message);
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

int JobGroup::IndexOf(const JobFile* job) const {
  const auto found = std::find_if(jobs_.begin(), jobs_.end(),
                                  [job](const auto& entry) { return entry.get() == job; });
  return found == jobs_.end() ? -1 : static_cast<int>(found - jobs_.begin());
}

int JobGroup::FirstActive() const {
  const auto found =
      std::find_if(jobs_.begin(), jobs_.end(), [](const auto& entry) { return IsActive(*entry); });
  return found == jobs_.end() ? -1 : static_cast<int>(found - jobs_.begin());
}

bool JobGroup::InRange(int index) const {
  return index >= 0 && static_cast<std::size_t>(index) < jobs_.size();
}

JobFile& JobGroup::At(int index) const {
  return *jobs_[static_cast<std::size_t>(index)];
}

void JobGroup::SetStatus(int index, int status) {
  At(index).status = status;
  manager_.Observer().JobStatusChanged(id_, index, status);
}

void JobGroup::RequestStop() {
  {
    const std::lock_guard<std::mutex> lock(submitMutex_);  // a submit under way would undo it
    stop_ = true;
  }
  const ListLock lock(*this);
  const int active = FirstActive();
  if (active >= 0) SetAbort(At(active), true);
}

int JobGroup::AddJob(std::shared_ptr<JobFile> job) {
  if (!job) return -1;
  const ListLock lock(*this);
  jobs_.push_back(std::move(job));
  manager_.Observer().JobsChanged(id_);
  return static_cast<int>(jobs_.size()) - 1;
}

bool JobGroup::RemoveJob(int index) {
  std::shared_ptr<JobFile> removed;  // freed without the lock
  const ListLock lock(*this);
  if (!InRange(index)) return false;
  removed = jobs_[static_cast<std::size_t>(index)];
  if (IsActive(*removed)) SetAbort(*removed, true);
  jobs_.erase(jobs_.begin() + index);
  manager_.Observer().JobsChanged(id_);
  return true;
}

bool JobGroup::MoveJob(int index, bool up) {
  const ListLock lock(*this);
  const int other = up ? index - 1 : index + 1;
  if (!InRange(index) || !InRange(other)) return false;
  if (At(index).status != JobStatus::kQueued) return false;
  if (up && At(other).status != JobStatus::kQueued) return false;
  std::swap(jobs_[static_cast<std::size_t>(index)], jobs_[static_cast<std::size_t>(other)]);
  manager_.Observer().JobsChanged(id_);
  return true;
}

bool JobGroup::ChangeJob(int index, const std::function<bool(JobFile&)>& change) {
  const ListLock lock(*this);
  if (!InRange(index) || At(index).status == JobStatus::kRunning) return false;
  if (!change(At(index))) return false;
  manager_.Observer().JobsChanged(id_);
  return true;
}

bool JobGroup::SetJobStatus(int index, int status) {
  const ListLock lock(*this);
  if (!InRange(index) || !IsStatus(status)) return false;
  if (At(index).status == JobStatus::kRunning) return false;
  if (status == JobStatus::kQueued) SetAbort(At(index), false);
  SetStatus(index, status);
  return true;
}

bool JobGroup::Resubmit(int index) {
  const ListLock lock(*this);
  if (!InRange(index)) return false;
  JobFile& job = At(index);
  if (job.status != JobStatus::kFinished && job.status != JobStatus::kAborted) return false;
  job.ResetForRun();
  SetStatus(index, JobStatus::kQueued);
  return true;
}

bool JobGroup::SetMemory(int index, std::uint64_t megabytes) {
  return ChangeJob(index, WithStages(Setter(&JobFile::memory, megabytes)));
}

bool JobGroup::SetCpuCount(int index, int count) {
  return ChangeJob(index, WithStages(Setter(&JobFile::ncpu, count)));
}

bool JobGroup::SetPause(int index, int seconds) {
  return ChangeJob(index, WithStages(Setter(&JobFile::pause, seconds)));
}

bool JobGroup::SetPrecision(int index, int solverType) {
  if (solverType < Settings::kLsDynaSingle || solverType > Settings::kUtilityBatch) return false;
  return ChangeJob(index, WithStages(DynaSetter(&JobFileDyna::solverType, solverType)));
}

bool JobGroup::SetUseSFile(int index, bool on) {
  return ChangeJob(index, WithStages(DynaSetter(&JobFileDyna::useSFile, on)));
}

bool JobGroup::SetDump(int index, bool on) {
  return ChangeJob(index, WithStages(DynaSetter(&JobFileDyna::dump, on)));
}

bool JobGroup::SetRestartFile(int index, const std::string& path) {
  return ChangeJob(index, Setter(&JobFile::restartFile, path));
}

bool JobGroup::SetExtraOptions(int index, const std::string& options) {
  return ChangeJob(index, Setter(&JobFile::extraOptions, options));
}

int JobGroup::JobCount() const {
  const ListLock lock(*this);
  return static_cast<int>(jobs_.size());
}

std::shared_ptr<JobFile> JobGroup::GetJob(int index) const {
  const ListLock lock(*this);
  return InRange(index) ? jobs_[static_cast<std::size_t>(index)] : nullptr;
}

int JobGroup::ActiveJob() const {
  const ListLock lock(*this);
  return FirstActive();
}

bool JobGroup::ReadJob(int index, const std::function<void(const JobFile&)>& read) const {
  const ListLock lock(*this);
  if (!InRange(index)) return false;
  read(At(index));
  return true;
}

void JobGroup::ReadJobs(const std::function<void(int index, const JobFile&)>& read) const {
  const ListLock lock(*this);
  int index = 0;
  for (const std::shared_ptr<JobFile>& job : jobs_) read(index++, *job);
}
