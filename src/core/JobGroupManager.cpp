#include "core/JobGroupManager.h"

#include <algorithm>
#include <chrono>

#include "core/SharedFolders.h"
#include "util/files/FileDirWrapper.h"
#include "util/text/DateTimeWrapper.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr unsigned kLookAgainMs = 100;
constexpr std::chrono::seconds kStopLimit{30};
constexpr std::size_t kMostUnheard = 10;

std::string ProgramFolder() {
  std::string folder;
  FileDirWrapper::DirOf(FileDirWrapper::ProgramPath(), folder);
  return folder;
}

// True when it holds for none of them before the limit.
bool AwaitNone(const std::vector<std::shared_ptr<JobGroup>>& groups,
               bool (JobGroup::*holds)() const) {
  const Clock::time_point limit = Clock::now() + kStopLimit;
  while (std::any_of(groups.begin(), groups.end(),
                     [holds](const auto& group) { return (*group.*holds)(); })) {
    if (Clock::now() >= limit) return false;
    DateTimeWrapper::SleepMSec(kLookAgainMs);
  }
  return true;
}

}  // namespace

// Passes calls of any thread on to the observers of the moment. The lock keeps an observer from
// being taken away while it is called.
class JobGroupManager::ObserverRelay : public QueueObserver {
 public:
  explicit ObserverRelay(QueueObserver* recorder) : recorder_(recorder) {}

  void StopRecording() { recorder_ = nullptr; }

  void Set(QueueObserver* observer) {
    const WriteLock lock(mutex_);
    observer_ = observer;
    if (observer == nullptr) return;
    for (const Message& message : unheard_) observer->Logged(message);
    unheard_.clear();
  }

  void JobStatusChanged(int groupId, const JobFile& job) override {
    Tell([&](QueueObserver& o) { o.JobStatusChanged(groupId, job); });
  }
  void StageStatusChanged(int groupId, const JobFile& job, const JobFile& stage) override {
    Tell([&](QueueObserver& o) { o.StageStatusChanged(groupId, job, stage); });
  }
  void JobsChanged(int groupId, const ListChange& change) override {
    Tell([&](QueueObserver& o) { o.JobsChanged(groupId, change); });
  }
  void GroupChanged(int groupId, const std::string& name, const std::string& text) override {
    Tell([&](QueueObserver& o) { o.GroupChanged(groupId, name, text); });
  }
  void GroupRemoved(int groupId) override {
    Tell([&](QueueObserver& o) { o.GroupRemoved(groupId); });
  }
  void GroupPlaced(int groupId, int place) override {
    Tell([&](QueueObserver& o) { o.GroupPlaced(groupId, place); });
  }
  void CurrentGroupChanged(int groupId) override {
    Tell([&](QueueObserver& o) { o.CurrentGroupChanged(groupId); });
  }
  void JobRequested(const JobRequest& request) override {
    Tell([&](QueueObserver& o) { o.JobRequested(request); });
  }
  void RequestGivenUp(JobId request) override {
    Tell([&](QueueObserver& o) { o.RequestGivenUp(request); });
  }
  void RunRecorded(JobId job, const RunRecord& run) override {
    Tell([&](QueueObserver& o) { o.RunRecorded(job, run); });
  }
  void GroupRunChanged(int groupId) override {
    Tell([&](QueueObserver& o) { o.GroupRunChanged(groupId); });
  }
  void SettingsChanged() override {
    Tell([](QueueObserver& o) { o.SettingsChanged(); });
  }
  void IntakeProgress(int done, int total, const std::string& file, int percent) override {
    Tell([&](QueueObserver& o) { o.IntakeProgress(done, total, file, percent); });
  }
  void RunLookedAt(JobId job) override {
    Tell([&](QueueObserver& o) { o.RunLookedAt(job); });
  }
  // What is said before there is a window waits for it.
  void Logged(const Message& message) override {
    const WriteLock lock(mutex_);
    if (observer_ != nullptr) {
      observer_->Logged(message);
    } else if (unheard_.size() < kMostUnheard) {
      unheard_.push_back(message);
    }
  }

 private:
  template <typename Call>
  void Tell(Call call) {
    if (QueueObserver* const recorder = recorder_) call(*recorder);
    const ReadLock lock(mutex_);
    if (observer_ != nullptr) call(*observer_);
  }

  std::atomic<QueueObserver*> recorder_;

  SharedMutex mutex_;
  QueueObserver* observer_ KR_GUARDED_BY(mutex_) = nullptr;
  std::vector<Message> unheard_ KR_GUARDED_BY(mutex_);
};

JobGroupManager::JobGroupManager(SettingsAndPaths& settings,
                                 const std::vector<std::unique_ptr<JobSolver>>& solvers,
                                 QueueObserver* recorder)
    : settings_(settings),
      solvers_(solvers),
      relay_(std::make_unique<ObserverRelay>(recorder)),
      threads_(std::make_shared<RunningThreads>()),
      positioning_(ProgramFolder()),
      watch_([&settings] { return settings.Snapshot(); },
             [this](JobId job) { relay_->RunLookedAt(job); }, settings.Log().Sink()) {}

// What was not stopped before is left to the next session.
JobGroupManager::~JobGroupManager() {
  relay_->StopRecording();
  RequestStop(-1);
  threads_->WaitForNone(kStopLimit);
}

void JobGroupManager::SetObserver(QueueObserver* observer) {
  relay_->Set(observer);
}

QueueObserver& JobGroupManager::Observer() {
  return *relay_;
}

Message JobGroupManager::RefusalOfName(const std::string& name) {
  if (name.find_first_not_of(' ') == std::string::npos) return Message(MessageId::kGroupNameBlank);
  if (name.front() == '#') return Message(MessageId::kGroupNameComment);
  if (name.find('=') != std::string::npos) return Message(MessageId::kGroupNameEquals);
  const bool control =
      std::any_of(name.begin(), name.end(), [](unsigned char c) { return c < ' ' || c == 0x7F; });
  return control ? Message(MessageId::kGroupNameControl) : Message();
}

JobGroupSetup JobGroupManager::GroupSetup() {
  JobGroupSetup setup{
      *relay_, settings_.Log(), [this] { return settings_.Snapshot(); }, {}, {}, {}, {}, {}, {}};
  setup.run.solverFor = [this](SolverKind kind) { return SolverFor(kind); };
  setup.run.positioning = &positioning_;
  setup.run.autoPosition = &autoPosition;
  setup.otherPrefixes = [this](const JobFile& job) { return PrefixesBeside(*this, job); };
  setup.takeFreeName = [this](JobId job) { TakeFreeNames(*this, {job}); };
  setup.runErrorCode = &runErrorCode;
  setup.watch = &watch_;
  setup.threads = threads_;
  return setup;
}

int JobGroupManager::AddGroup(const std::string& name) {
  auto group = std::make_shared<JobGroup>(GroupSetup());
  group->SetName(name);  // tells of the new group
  const MutexLock lock(mutex_);
  groups_.push_back(std::move(group));
  return static_cast<int>(groups_.size()) - 1;
}

bool JobGroupManager::RemoveGroup(int index) {
  const std::shared_ptr<JobGroup> group = GroupAt(index);
  if (!group) return false;
  group->RequestStop();
  {
    const MutexLock lock(mutex_);
    const auto found = std::find(groups_.begin(), groups_.end(), group);
    if (found == groups_.end()) return false;
    groups_.erase(found);
    std::erase_if(removed_, [](const auto& former) { return former.expired(); });
    removed_.push_back(group);
    if (index < current_ || current_ == static_cast<int>(groups_.size())) --current_;
  }
  relay_->GroupRemoved(group->Id());
  TellCurrentGroup();
  return true;
}

bool JobGroupManager::ReturnGroup(const std::shared_ptr<JobGroup>& group, int index) {
  if (IndexOf(group.get()) >= 0) return false;
  const std::string before = group->Name();
  std::string name = before;
  for (int number = 2; IndexOfName(name) >= 0; ++number) {
    name = before + ' ' + std::to_string(number);
  }
  index = std::clamp(index, 0, GroupCount());
  {
    const MutexLock lock(mutex_);
    groups_.insert(groups_.begin() + index, group);
    std::erase_if(removed_, [&](const auto& former) { return former.lock() == group; });
    if (index <= current_) ++current_;
  }
  group->SetName(name);  // tells of the group
  relay_->GroupPlaced(group->Id(), index);
  group->TellAll();
  return true;
}

void JobGroupManager::TellCurrentGroup() {
  if (const auto group = CurrentGroup()) relay_->CurrentGroupChanged(group->Id());
}

std::shared_ptr<JobGroup> JobGroupManager::GroupAt(int index) const {
  const MutexLock lock(mutex_);
  if (index < 0 || static_cast<std::size_t>(index) >= groups_.size()) return nullptr;
  return groups_[static_cast<std::size_t>(index)];
}

std::shared_ptr<JobGroup> JobGroupManager::GroupById(int id) const {
  for (const std::shared_ptr<JobGroup>& group : Groups()) {
    if (group->Id() == id) return group;
  }
  return nullptr;
}

std::vector<std::shared_ptr<JobGroup>> JobGroupManager::Groups() const {
  const MutexLock lock(mutex_);
  return groups_;
}

int JobGroupManager::GroupCount() const {
  return static_cast<int>(Groups().size());
}

int JobGroupManager::IndexOf(const JobGroup* group) const {
  int index = 0;
  for (const std::shared_ptr<JobGroup>& entry : Groups()) {
    if (entry.get() == group) return index;
    ++index;
  }
  return -1;
}

int JobGroupManager::IndexOfName(const std::string& name) const {
  int index = 0;
  for (const std::shared_ptr<JobGroup>& group : Groups()) {
    if (group->Name() == name) return index;
    ++index;
  }
  return -1;
}

int JobGroupManager::CurrentGroupIndex() const {
  const MutexLock lock(mutex_);
  return current_;
}

bool JobGroupManager::SetCurrentGroup(int index) {
  {
    const MutexLock lock(mutex_);
    if (index < 0 || static_cast<std::size_t>(index) >= groups_.size()) return false;
    current_ = index;
  }
  TellCurrentGroup();
  return true;
}

std::shared_ptr<JobGroup> JobGroupManager::CurrentGroup() const {
  return GroupAt(CurrentGroupIndex());
}

bool JobGroupManager::IsAnyJobActive() const {
  const auto groups = Groups();
  return std::any_of(groups.begin(), groups.end(),
                     [](const auto& group) { return group->ActiveJob() != JobId::kNone; });
}

bool JobGroupManager::IsAnyGroupRunning() const {
  const auto groups = GroupsToStop(-1);
  return std::any_of(groups.begin(), groups.end(),
                     [](const auto& group) { return group->Running(); });
}

// All of them includes the removed ones whose thread has not ended yet.
std::vector<std::shared_ptr<JobGroup>> JobGroupManager::GroupsToStop(int index) const {
  if (index >= 0) {
    const std::shared_ptr<JobGroup> group = GroupAt(index);
    return group ? std::vector{group} : std::vector<std::shared_ptr<JobGroup>>{};
  }
  const MutexLock lock(mutex_);
  std::vector<std::shared_ptr<JobGroup>> groups = groups_;
  for (const std::weak_ptr<JobGroup>& former : removed_) {
    if (std::shared_ptr<JobGroup> group = former.lock()) groups.push_back(std::move(group));
  }
  return groups;
}

void JobGroupManager::RequestStop(int index) {
  for (const std::shared_ptr<JobGroup>& group : GroupsToStop(index)) group->RequestStop();
}

bool JobGroupManager::Stop(int index) {
  const auto groups = GroupsToStop(index);
  for (const std::shared_ptr<JobGroup>& group : groups) group->RequestStop();
  return AwaitNone(groups, &JobGroup::Running);
}

void JobGroupManager::AwaitStopped() const {
  AwaitNone(GroupsToStop(-1), &JobGroup::Stopping);
}

JobSolver* JobGroupManager::SolverFor(SolverKind kind) const {
  for (const std::unique_ptr<JobSolver>& solver : solvers_) {
    if (solver->solverType == kind) return solver.get();
  }
  return nullptr;
}
