// What is done to several jobs in one step.
#include <algorithm>
#include <unordered_set>

#include "core/JobList.h"
#include "solvers/SolverKinds.h"

namespace {

using List = std::vector<std::shared_ptr<JobFile>>;
using IdSet = std::unordered_set<JobId>;

bool IsQueued(const std::shared_ptr<JobFile>& job) {
  return job->status == JobStatus::kQueued;
}

// A place further for each, as far as there is one; those that stand together move together.
void MoveByOne(List& list, const IdSet& moving, bool up) {
  const auto moves = [&](const std::shared_ptr<JobFile>& job) {
    return IsQueued(job) && moving.count(job->id) != 0;
  };
  for (std::size_t i = 1; i < list.size(); ++i) {
    std::shared_ptr<JobFile>& upper = list[up ? i - 1 : list.size() - 1 - i];
    std::shared_ptr<JobFile>& lower = list[up ? i : list.size() - i];
    if (up ? moves(lower) && !moves(upper) && IsQueued(upper) : moves(upper) && !moves(lower))
      std::swap(upper, lower);
  }
}

void MoveToEnd(List& list, const IdSet& moving, bool top) {
  const auto moves = [&](const std::shared_ptr<JobFile>& job) {
    return IsQueued(job) && moving.count(job->id) != 0;
  };
  if (!top) {
    std::stable_partition(list.begin(), list.end(), [&](const auto& job) { return !moves(job); });
    return;
  }
  for (auto begin = list.begin(); begin != list.end();) {
    begin = std::find_if(begin, list.end(), IsQueued);
    const auto end = std::find_if_not(begin, list.end(), IsQueued);
    std::stable_partition(begin, end, moves);
    begin = end;
  }
}

void SetAll(JobFile& job, const JobProgress& progress) {
  job.status = progress.status;
  job.started = progress.started;
  job.ended = progress.ended;
  job.SetResult(progress);
}

JobEnd EndOf(const JobFile& job) {
  JobEnd end{job.id, ProgressOf(job), {}};
  for (const std::shared_ptr<JobFile>& stage : job.stages) {
    end.stages.emplace_back(stage->id, ProgressOf(*stage));
  }
  return end;
}

// Nothing when the job has no such field.
std::optional<FieldBefore> BeforeOf(const JobFile& job, JobField field) {
  const std::optional<FieldValue> value = ValueOf(job, field);
  if (!value) return std::nullopt;
  FieldBefore before{job.id, *value, {}};
  for (const std::shared_ptr<JobFile>& stage : job.stages) {
    if (const auto its = ValueOf(*stage, field)) before.stages.emplace_back(stage->id, *its);
  }
  return before;
}

bool HasOther(const FieldBefore& before, const FieldValue& value) {
  return before.value != value || std::any_of(before.stages.begin(), before.stages.end(),
                                              [&](const auto& its) { return its.second != value; });
}

template <typename Values, typename Use>
void WithStages(JobFile& job, const Values& values, Use use) {
  for (const auto& [id, value] : values) {
    for (const std::shared_ptr<JobFile>& stage : job.stages) {
      if (stage->id == id) use(*stage, value);
    }
  }
}

std::vector<const JobFile*> AsTold(const std::vector<JobFile*>& jobs) {
  return {jobs.begin(), jobs.end()};
}

// The jobs that the values are of, and the value of each.
template <typename Value>
std::pair<JobList::Jobs, std::unordered_map<JobId, const Value*>> ByJob(
    const std::vector<Value>& values) {
  std::pair<JobList::Jobs, std::unordered_map<JobId, const Value*>> found;
  for (const Value& value : values) {
    found.first.push_back(value.job);
    found.second[value.job] = &value;
  }
  return found;
}

}  // namespace

template <typename Fits>
std::vector<JobFile*> JobList::Pick(const Jobs& jobs, ManyDone& done, Fits fits) const {
  std::vector<JobFile*> picked;
  for (const JobId id : jobs) {
    JobFile* const job = Find(id);
    if (job == nullptr) continue;
    if (fits(*job)) {
      picked.push_back(job);
    } else {
      ++(job->status == JobStatus::kRunning ? done.running : done.unfit);
    }
  }
  done.done = static_cast<int>(picked.size());
  return picked;
}

void JobList::TellAll() {
  const Access access(*this);
  Told all;
  for (const std::shared_ptr<JobFile>& job : jobs_) all.push_back(job.get());
  Tell(ListChange::What::kAdded, all);
}

std::vector<RemovedJob> JobList::RemoveJobs(const Jobs& jobs) {
  const IdSet wanted(jobs.begin(), jobs.end());
  std::vector<RemovedJob> removed;
  const Access access(*this);
  List kept;
  Told gone;
  for (std::shared_ptr<JobFile>& job : jobs_) {
    const std::size_t place = kept.size() + removed.size();
    if (wanted.count(job->id) == 0) {
      kept.push_back(std::move(job));
      continue;
    }
    if (IsActive(job->status)) job->Abort();
    byId_.erase(job->id);
    gone.push_back(job.get());
    removed.push_back({std::move(job), place});
  }
  jobs_ = std::move(kept);
  Tell(ListChange::What::kRemoved, gone);
  return removed;
}

void JobList::ReturnJobs(const std::vector<RemovedJob>& removed) {
  const Access access(*this);
  List list;
  Told added;
  auto next = jobs_.begin();
  for (const RemovedJob& one : removed) {
    if (!byId_.emplace(one.job->id, one.job.get()).second) continue;
    while (list.size() < one.place && next != jobs_.end()) list.push_back(std::move(*next++));
    list.push_back(one.job);
    added.push_back(one.job.get());
  }
  std::move(next, jobs_.end(), std::back_inserter(list));
  jobs_ = std::move(list);
  Tell(ListChange::What::kAdded, added);
  Told order;
  for (const std::shared_ptr<JobFile>& job : jobs_) order.push_back(job.get());
  if (!added.empty()) Tell(ListChange::What::kOrder, order);
  for (const JobFile* const job : added) {
    if (job->status == JobStatus::kQueued) JobQueued(*job);
  }
}

void JobList::TakeOrder(List order, Jobs* before) {
  std::size_t first = 0;
  while (first < order.size() && order[first] == jobs_[first]) ++first;
  std::size_t last = order.size();
  while (last > first && order[last - 1] == jobs_[last - 1]) --last;
  Told told;
  for (std::size_t i = first; i < last; ++i) {
    if (before != nullptr) before->push_back(jobs_[i]->id);
    told.push_back(order[i].get());
  }
  jobs_ = std::move(order);
  Tell(ListChange::What::kOrder, told, first);
}

ManyDone JobList::MoveJobs(const Jobs& jobs, Move move, Jobs* before) {
  const Access access(*this);
  ManyDone done;
  const auto fits = [](const JobFile& job) { return job.status == JobStatus::kQueued; };
  const std::vector<JobFile*> picked = Pick(jobs, done, fits);
  if (picked.empty()) return done;
  IdSet moving;
  for (const JobFile* const job : picked) moving.insert(job->id);
  List order = jobs_;
  const bool byOne = move == Move::kUp || move == Move::kDown;
  if (byOne) MoveByOne(order, moving, move == Move::kUp);
  if (!byOne) MoveToEnd(order, moving, move == Move::kToTop);
  done.done = 0;
  for (std::size_t i = 0; i < order.size(); ++i) {
    done.done += order[i] != jobs_[i] && moving.count(order[i]->id) != 0;
  }
  TakeOrder(std::move(order), before);
  return done;
}

void JobList::RestoreOrder(const Jobs& wanted) {
  const Access access(*this);
  ManyDone done;
  const std::vector<JobFile*> picked = Pick(wanted, done, [](const JobFile&) { return true; });
  const std::unordered_set<const JobFile*> mine(picked.begin(), picked.end());
  std::unordered_map<const JobFile*, std::shared_ptr<JobFile>> owners;
  for (const std::shared_ptr<JobFile>& job : jobs_) {
    if (mine.count(job.get()) != 0) owners.emplace(job.get(), job);
  }
  List order = jobs_;
  auto next = picked.begin();
  for (std::shared_ptr<JobFile>& job : order) {
    if (mine.count(job.get()) != 0) job = owners.at(*next++);
  }
  TakeOrder(std::move(order), nullptr);
}

ManyDone JobList::ResubmitJobs(const Jobs& jobs, std::vector<JobEnd>* ends) {
  const Access access(*this);
  ManyDone done;
  const std::vector<JobFile*> picked =
      Pick(jobs, done, [](const JobFile& job) { return HasEnded(job.status); });
  for (JobFile* const job : picked) {
    if (ends != nullptr) ends->push_back(EndOf(*job));
    job->ResetForRun();
  }
  Tell(ListChange::What::kFields, AsTold(picked));
  for (const JobFile* const job : picked) JobQueued(*job);
  return done;
}

ManyDone JobList::RestoreEnds(const std::vector<JobEnd>& ends) {
  const Access access(*this);
  ManyDone done;
  const auto [jobs, endOf] = ByJob(ends);
  const std::vector<JobFile*> picked =
      Pick(jobs, done, [](const JobFile& job) { return job.status == JobStatus::kQueued; });
  for (JobFile* const job : picked) {
    SetAll(*job, endOf.at(job->id)->progress);
    WithStages(*job, endOf.at(job->id)->stages, SetAll);
  }
  Tell(ListChange::What::kFields, AsTold(picked));
  return done;
}

ManyDone JobList::SetField(const Jobs& jobs, JobField field, const FieldValue& value,
                           std::vector<FieldBefore>* before) {
  const auto* const kind = std::get_if<SolverKind>(&value);
  const bool isRunnable = kind == nullptr || RowOfKind(*kind).runsDecks;
  const Access access(*this);
  ManyDone done;
  const std::vector<JobFile*> picked = Pick(jobs, done, [&](const JobFile& job) {
    return CanChange(job, field) && isRunnable && ValueOf(job, field).has_value();
  });
  Told changed;
  for (JobFile* const job : picked) {
    std::optional<FieldBefore> its = BeforeOf(*job, field);
    if (!HasOther(*its, value)) continue;
    SetValue(*job, field, value);
    for (const std::shared_ptr<JobFile>& stage : job->stages) SetValue(*stage, field, value);
    changed.push_back(job);
    if (before != nullptr) before->push_back(std::move(*its));
  }
  Tell(ListChange::What::kFields, changed);
  return done;
}

ManyDone JobList::SetFields(JobField field, const std::vector<FieldBefore>& values,
                            std::vector<FieldBefore>* before) {
  const Access access(*this);
  ManyDone done;
  const auto [jobs, valueOf] = ByJob(values);
  const std::vector<JobFile*> picked =
      Pick(jobs, done, [field](const JobFile& job) { return CanChange(job, field); });
  const auto set = [field](JobFile& job, const FieldValue& value) { SetValue(job, field, value); };
  Told changed;
  for (JobFile* const job : picked) {
    std::optional<FieldBefore> its = BeforeOf(*job, field);
    if (!its || *its == *valueOf.at(job->id)) continue;
    if (before != nullptr) before->push_back(std::move(*its));
    changed.push_back(job);
    set(*job, valueOf.at(job->id)->value);
    WithStages(*job, valueOf.at(job->id)->stages, set);
  }
  Tell(ListChange::What::kFields, changed);
  return done;
}
