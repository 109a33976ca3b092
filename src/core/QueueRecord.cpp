#include "core/QueueRecord.h"

#include <algorithm>
#include <utility>

#include "core/SharedFolders.h"
#include "runs/RunRecording.h"
#include "solvers/SolverKinds.h"
#include "util/process/OwnThread.h"
#include "util/process/ProcessIdentity.h"

namespace {

constexpr std::chrono::seconds kFlushPatience{5};
constexpr std::chrono::seconds kStartPatience{2};

// Its solver was started and has not been judged.
bool GoesOn(const JobImage& job) {
  return job.fields.status == JobStatus::kRunning && job.run &&
         job.run->verdict == JobStatus::kRunning;
}

// A stage's end may be known from its run alone.
void TakeEndOfStage(JobImage& job) {
  if (!job.run || !HasEnded(job.run->verdict) || job.run->stage < 0) return;
  const auto stage = static_cast<std::size_t>(job.run->stage);
  if (stage >= job.stages.size()) return;
  job.stages[stage].fields.status = job.run->verdict;
  job.stages[stage].fields.ended = job.run->ended;
}

// Its stages, if it has any.
bool AllFinished(const JobImage& job) {
  return std::all_of(job.stages.begin(), job.stages.end(), [](const JobImage& stage) {
    return stage.fields.status == JobStatus::kFinished;
  });
}

// The first stage that had not ended. A run goes on from there.
int StageOf(const JobImage& job) {
  const auto first = std::find_if(job.stages.begin(), job.stages.end(), [](const JobImage& stage) {
    return stage.fields.status != JobStatus::kFinished;
  });
  if (first == job.stages.end()) return job.fields.firstStage;
  return std::max(static_cast<int>(first - job.stages.begin()), job.fields.firstStage);
}

}  // namespace

struct QueueRecord::Resumed {
  std::shared_ptr<JobGroup> group;
  JobId job;
  RunRecord run;
};

QueueRecord::QueueRecord(SettingsAndPaths& settings)
    : settings_(settings),
      writer_(RecordFilesIn(settings.workFolder), settings.Log().Sink(),
              [&settings](const Message& message) { settings.Log().Note(message); }) {}

QueueRecord::~QueueRecord() {
  if (looker_.joinable()) looker_.join();
}

void QueueRecord::Begin() {
  writer_.Hold();  // a crash before the groups are made leaves the record as it was
  QueueImage before = writer_.Begin(settings_.Get().keep_jobs != kNever);
  if (!before.now.over) {
    for (const GroupImage& group : before.now.groups) {
      if (group.id == before.now.current) lostCurrent_ = static_cast<int>(lostGroups_.size());
      lostGroups_.emplace_back(group.name, group.text);
    }
  }
  resume_ = before.now.resume;
  handedOver_ = std::move(before.handedOver);
  const std::int64_t last = before.now.last;
  before.Apply(change::SessionBegins());
  left_ = std::move(before.left);
  leaving_ = std::move(before.leaving);
  for (const SessionImage& session : left_) {
    for (const auto& [id, job] : session.jobs) {
      if (!GoesOn(job)) continue;
      if (job.stops) {
        stopped_.push_back(*job.run);
      } else if (job.run->process.id == 0) {
        starting_.push_back(*job.run);
      }
    }
  }
  isSearched_ = !starting_.empty() || !stopped_.empty();
  if (isSearched_ || !leaving_.empty()) {
    try {
      looker_ = std::thread([this, last] { LookForProcesses(last); });
    } catch (const std::system_error&) {
      LookForProcesses(last);
    }
  }
}

// One that cannot be looked at does not keep the others.
void QueueRecord::LookForProcesses(std::int64_t last) {
  const auto notEnded = [this](const std::exception& error) {
    settings_.Log().Report(Message(MessageId::kNotEnded, error.what()));
  };
  for (const RunRecord& run : starting_) {
    const auto find = [&] {
      const ProcessIdentity process = ProcessOf(run);
      const MutexLock lock(foundMutex_);
      found_[run.token] = process;
    };
    Guard(find, [](const std::exception&) {});  // the row tells what became of it
  }
  for (const RunRecord& run : stopped_) Guard([&] { EndStopped(run); }, notEnded);
  isSearched_ = false;
  for (const LeavingRun& one : leaving_) Guard([&] { EndLeaving(one.run, last); }, notEnded);
}

void QueueRecord::EndLeaving(const RunRecord& run, std::int64_t last) {
  const UnwantedRun end = EndUnwantedRun(run, last);
  const std::string& file = run.jobFile.empty() ? run.restartFile : run.jobFile;
  const std::int32_t id = end.record.process.id;
  if (!end.runsOn.empty()) {  // the next start tries again
    settings_.Log().Report(Message(MessageId::kRemovedRunsOn, file, id, end.runsOn));
    return;
  }
  if (end.ran) settings_.Log().Report(Message(MessageId::kRemovedEnded, file, id));
  writer_.Put(change::Run{kFormerJob, end.record});
  if (id != 0) writer_.PutRun(end.record);
}

// Its row comes back with the others and is judged then.
void QueueRecord::EndStopped(const RunRecord& run) {
  const UnwantedRun end = EndUnwantedRun(run, 0);
  if (!end.runsOn.empty()) {
    settings_.Log().Report(Message(MessageId::kNotEnded, end.runsOn));
  } else if (end.ran) {
    settings_.Log().Note(
        Message(MessageId::kProcessEndedUnknown, end.record.process.id, run.jobFile));
  }
}

ProcessIdentity QueueRecord::KnownProcessOf(const RunRecord& run) const {
  if (run.process.id != 0) return run.process;
  const MutexLock lock(foundMutex_);
  const auto found = found_.find(run.token);
  return found == found_.end() ? ProcessIdentity() : found->second;
}

void QueueRecord::GroupsMade() {
  writer_.Release();
}

LeftBehind QueueRecord::Left() const {
  LeftBehind left;
  left.isSearched = isSearched_;
  for (const SessionImage& session : left_) {
    left.last = std::max(left.last, session.last);
    left.queued += static_cast<int>(session.requests.size());
    for (const auto& [id, job] : session.jobs) {
      const JobStatus status = job.fields.status;
      const bool isRunning = status == JobStatus::kRunning;
      const bool runsStill = isRunning && job.run && Runs(KnownProcessOf(*job.run));
      ++(HasEnded(status) ? left.ended
         : !isRunning     ? left.queued
         : runsStill      ? left.stillRun
                          : left.wereRunning);
    }
  }
  return left;
}

void QueueRecord::Restore(JobGroupManager& manager, JobIntake& intake) {
  Restore(manager, intake, false);
}

void QueueRecord::RestoreWanted(JobGroupManager& manager, JobIntake& intake) {
  Restore(manager, intake, true);
}

void QueueRecord::Restore(JobGroupManager& manager, JobIntake& intake, bool wantedOnly) {
  if (left_.empty()) return;
  bool isUntouched = !intake.Busy();
  for (int i = 0; i < manager.GroupCount(); ++i) {
    const auto group = manager.GroupAt(i);
    isUntouched = isUntouched && group->JobCount() == 0 && !group->Running();
  }
  std::vector<Resumed> resumed;
  writer_.Hold();  // a crash finds all of it restored, or nothing
  for (const SessionImage& session : left_) {
    if (!session.resume && wantedOnly) continue;
    RestoreSession(session, manager, intake, isUntouched, resumed);
    isUntouched = isUntouched && session.groups.empty();
  }
  writer_.Put(change::LeftTaken{wantedOnly});
  writer_.Release();
  std::erase_if(left_, [&](const auto& session) { return session.resume || !wantedOnly; });
  for (const Resumed& one : resumed) one.group->Resume(one.job, one.run);
}

void QueueRecord::RestoreSession(const SessionImage& session, JobGroupManager& manager,
                                 JobIntake& intake, bool isUntouched,
                                 std::vector<Resumed>& resumed) {
  const int before = isUntouched && !session.groups.empty() ? manager.GroupCount() : 0;
  std::vector<std::shared_ptr<JobGroup>> groups;
  std::map<int, int> newGroups;  // what the ids of the session are now
  std::map<JobId, JobId> newJobs;
  for (const GroupImage& image : session.groups) {
    int index = before > 0 ? -1 : manager.IndexOfName(image.name);
    if (index < 0) {
      index = manager.AddGroup(image.name);
      manager.GroupAt(index)->SetText(image.text);
    }
    groups.push_back(manager.GroupAt(index));
    newGroups[image.id] = groups.back()->Id();
    if (image.id == session.current) manager.SetCurrentGroup(index);
  }
  for (int i = 0; i < before; ++i) manager.RemoveGroup(0);
  if (manager.CurrentGroupIndex() < 0) manager.SetCurrentGroup(0);

  for (std::size_t i = 0; i < groups.size(); ++i) {
    for (const JobId id : session.groups[i].jobs) {
      const JobImage* const image = session.Find(id);
      if (image == nullptr) continue;
      const std::shared_ptr<JobFile> job = Revived(*image, session.last);
      groups[i]->AddJob(job);
      newJobs[id] = job->id;
      if (!GoesOn(*image)) continue;
      writer_.Put(change::Run{job->id, *image->run});
      if (image->run->process.id != 0) writer_.PutRun(*image->run);
      resumed.push_back({groups[i], job->id, *image->run});
    }
  }
  std::vector<JobId> revived;
  for (const auto& [old, now] : newJobs) revived.push_back(now);
  TakeFreeNames(manager, revived);
  for (auto [id, request] : session.requests) {
    request.groupId = newGroups[request.groupId];
    if (request.stageOf != JobId::kNone) request.stageOf = newJobs[request.stageOf];
    request.fromWindow = false;  // no window asks about it any more
    newJobs[id] = intake.Add(std::move(request));
  }
}

// The job as it is to be in the list. One whose run goes on stays Running. `last`: when its session
// was heard of last.
std::shared_ptr<JobFile> QueueRecord::Revived(JobImage image, std::int64_t last) const {
  TakeEndOfStage(image);
  const auto make = [this](SolverKind kind) { return RowOfKind(kind).makeJob(settings_.Get()); };
  const std::shared_ptr<JobFile> job = make(image.kind);
  Fill(*job, image, make);
  if (HasEnded(job->status) || GoesOn(image)) return job;
  job->firstStage = StageOf(image);
  for (const std::shared_ptr<JobFile>& stage : job->stages) {
    if (!HasEnded(stage->status)) stage->status = JobStatus::kQueued;
  }
  const bool wasRunning = job->status == JobStatus::kRunning;
  job->status = JobStatus::kQueued;
  job->SetRunError(0, {});
  if (image.stops) {
    job->status = JobStatus::kAborted;
    job->ended = std::max(last, job->started);
    job->SetHowFailed({FailureKind::kStopped});
  }
  if (wasRunning && !image.run && !image.stops) {
    job->status = JobStatus::kAborted;
    job->ended = std::max(last, job->started);
    job->SetRunError(0, Message(MessageId::kEndedBeforeItsSolver, job->MainFile()));
  } else if (wasRunning && (AllFinished(image) || image.run->verdict == JobStatus::kAborted)) {
    // It had ended, which nobody wrote down.
    job->status = image.run->verdict;
    job->ended = image.run->ended;
    RunResult result = *image.run;
    if (!job->stages.empty()) result.seconds.reset();  // of one stage alone
    job->SetResult(result);
  }
  return job;
}

void QueueRecord::Forget() {
  left_.clear();
  writer_.Put(change::LeftTaken());
}

void QueueRecord::TakeOver(const std::vector<std::string>& files,
                           const std::function<void()>& request) {
  // A copy does not see the places of all others, where the files of a former session may lie on.
  constexpr std::size_t kMostFormer = 5;
  std::vector<std::string> known = files;
  for (const std::string& file : handedOver_) {
    const bool isMissing = std::find(files.begin(), files.end(), file) == files.end();
    if (isMissing && known.size() < files.size() + kMostFormer) known.push_back(file);
  }
  writer_.Hold();
  request();
  writer_.Put(change::HandedOver{std::move(known)});
  writer_.Release();
  takenOver_ = writer_.Mark();
}

bool QueueRecord::HasTaken(const std::string& file) const {
  return std::find(handedOver_.begin(), handedOver_.end(), file) != handedOver_.end();
}

void QueueRecord::End(bool resume) {
  if (resume) writer_.KeepQueue();
  writer_.Put(change::SessionOver{resume, endStopsJobs_});
  Flush();
}

void QueueRecord::Flush() {
  writer_.Flush(kFlushPatience);
}

// A job that is queued again has stages that are.
void QueueRecord::JobStatusChanged(int, const JobFile& job) {
  if (job.status == JobStatus::kQueued && !job.stages.empty()) {
    writer_.Put(change::JobSet{ImageOf(job)});
  } else {
    writer_.Put(change::Progress{job.id, JobId::kNone, ProgressOf(job)});
  }
}

void QueueRecord::StageStatusChanged(int, const JobFile& job, const JobFile& stage) {
  writer_.Put(change::Progress{job.id, stage.id, ProgressOf(stage)});
}

void QueueRecord::JobsChanged(int groupId, const ListChange& change) {
  std::vector<QueueChange> changes;
  std::vector<JobId> ids;
  for (const JobFile* const job : change.jobs) {
    if (change.what == ListChange::What::kAdded) {
      changes.emplace_back(change::JobAdded{groupId, ImageOf(*job)});
    } else if (change.what == ListChange::What::kFields) {
      changes.emplace_back(change::JobSet{ImageOf(*job)});
    } else {
      ids.push_back(job->id);
    }
  }
  if (change.what == ListChange::What::kRemoved) changes.emplace_back(change::JobsGone{ids});
  if (change.what == ListChange::What::kOrder)
    changes.emplace_back(change::JobOrder{groupId, change.place, ids});
  writer_.Put(std::move(changes));
}

void QueueRecord::GroupChanged(int groupId, const std::string& name, const std::string& text) {
  writer_.Put(change::GroupSet{groupId, name, text});
}

void QueueRecord::GroupRemoved(int groupId) {
  writer_.Put(change::GroupGone{groupId});
}

void QueueRecord::GroupPlaced(int groupId, int place) {
  writer_.Put(change::GroupPlaced{groupId, place});
}

void QueueRecord::CurrentGroupChanged(int groupId) {
  writer_.Put(change::CurrentGroup{groupId});
}

void QueueRecord::JobRequested(const JobRequest& request) {
  writer_.Put(change::JobRequested{request});
}

void QueueRecord::RequestGivenUp(JobId request) {
  writer_.Put(change::JobGone{request});
}

void QueueRecord::RunRecorded(JobId job, const RunRecord& run) {
  writer_.Put(change::Run{job, run});
  const bool isAboutToStart = run.process.id == 0 && !HasEnded(run.verdict);
  if (isAboutToStart) {
    // A solver of which the record knows nothing would not be found after a crash.
    writer_.AwaitWritten(kStartPatience);
  } else {
    writer_.PutRun(run);
  }
}
