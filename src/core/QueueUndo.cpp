#include "core/QueueUndo.h"

#include <utility>

void QueueUndo::Keep(Kind kind, const Group& group, Jobs jobs, std::function<int()> back) {
  if (jobs.empty() && kind != Kind::kGroupDeleted) return;
  const int place = manager_.IndexOf(group.get());
  steps_.push_back({kind, group, place, std::move(jobs), std::move(back)});
  if (steps_.size() > kMostSteps) steps_.pop_front();
}

int QueueUndo::Remove(const Group& group, const Jobs& jobs) {
  std::vector<RemovedJob> removed = group->RemoveJobs(jobs);
  const int count = static_cast<int>(removed.size());
  Jobs gone;
  for (const RemovedJob& one : removed) gone.push_back(one.job->id);
  Keep(Kind::kDeleted, group, std::move(gone), [group, removed = std::move(removed)] {
    group->ReturnJobs(removed);
    return 0;
  });
  return count;
}

// The group itself is kept, with its jobs.
bool QueueUndo::RemoveGroup(int index) {
  const Group group = manager_.GroupAt(index);
  if (!group) return false;
  Keep(Kind::kGroupDeleted, group, group->JobIds(), [] { return 0; });
  return manager_.RemoveGroup(index);
}

ManyDone QueueUndo::Move(const Group& group, const Jobs& jobs, JobList::Move move) {
  Jobs before;
  const ManyDone done = group->MoveJobs(jobs, move, &before);
  if (before.empty()) return done;
  Keep(Kind::kMoved, group, jobs, [group, before = std::move(before)] {
    group->RestoreOrder(before);
    return 0;
  });
  return done;
}

ManyDone QueueUndo::Resubmit(const Group& group, const Jobs& jobs) {
  std::vector<JobEnd> ends;
  const ManyDone done = group->ResubmitJobs(jobs, &ends);
  Jobs changed;
  for (const JobEnd& end : ends) changed.push_back(end.job);
  Keep(Kind::kResubmitted, group, std::move(changed),
       [group, ends = std::move(ends)] { return group->RestoreEnds(ends).LeftOut(); });
  return done;
}

ManyDone QueueUndo::SetField(const Group& group, const Jobs& jobs, JobField field,
                             const FieldValue& value) {
  std::vector<FieldBefore> before;
  const ManyDone done = group->SetField(jobs, field, value, &before);
  KeepField(field, {{group, std::move(before)}});
  return done;
}

ManyDone QueueUndo::SetFields(const Group& group, JobField field,
                              const std::vector<FieldBefore>& values) {
  std::vector<FieldBefore> before;
  const ManyDone done = group->SetFields(field, values, &before);
  KeepField(field, {{group, std::move(before)}});
  return done;
}

int QueueUndo::KeepApart(const Jobs& jobs) {
  std::vector<GroupFields> before;
  const int named = KeepResultsApart(manager_, jobs, &before);
  if (!before.empty()) KeepField(JobField::kOutputName, std::move(before));
  return named;
}

// The step is one of the first group.
void QueueUndo::KeepField(JobField field, std::vector<GroupFields> before) {
  const Group group = before.front().group;
  Jobs changed;
  for (const GroupFields& its : before) {
    for (const FieldBefore& one : its.fields) changed.push_back(one.job);
  }
  Keep(Kind::kField, group, std::move(changed), [field, before = std::move(before)] {
    int leftOut = 0;
    for (const GroupFields& its : before)
      leftOut += its.group->SetFields(field, its.fields).LeftOut();
    return leftOut;
  });
}

std::optional<QueueUndo::Taken> QueueUndo::Undo() {
  if (steps_.empty()) return std::nullopt;
  const Step step = std::move(steps_.back());
  steps_.pop_back();
  manager_.ReturnGroup(step.group, step.place);
  const int leftOut = step.back();
  TakeFreeNames(manager_, step.jobs);
  return Taken{step.kind, step.group, step.jobs, leftOut};
}
