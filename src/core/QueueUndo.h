// What the user does to jobs and groups, so that it can be taken back.
#ifndef KR_CORE_QUEUEUNDO_H
#define KR_CORE_QUEUEUNDO_H

#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "core/JobGroupManager.h"
#include "core/SharedFolders.h"

// Changes the queue and keeps the last steps. A step that changed nothing is none. What runs is
// never started by it: a deleted job that ran was stopped and comes back as Aborted; jobs that run
// by now are left out. Nothing of it outlives the session. Interface thread; the manager outlives
// it.
class QueueUndo {
 public:
  static constexpr std::size_t kMostSteps = 10;
  enum class Kind { kDeleted, kGroupDeleted, kField, kMoved, kResubmitted };
  using Group = std::shared_ptr<JobGroup>;
  using Jobs = JobList::Jobs;

  explicit QueueUndo(JobGroupManager& manager) : manager_(manager) {}

  // As those of the list and of the manager; see there.
  int Remove(const Group& group, const Jobs& jobs);  // how many
  bool RemoveGroup(int index);
  ManyDone Move(const Group& group, const Jobs& jobs, JobList::Move move);
  ManyDone Resubmit(const Group& group, const Jobs& jobs);
  ManyDone SetField(const Group& group, const Jobs& jobs, JobField field, const FieldValue& value);
  ManyDone SetFields(const Group& group, JobField field, const std::vector<FieldBefore>& values);
  int KeepApart(const Jobs& jobs);  // KeepResultsApart, of jobs of any group

  bool Empty() const { return steps_.empty(); }

  // What was taken back.
  struct Taken {
    Kind kind;
    Group group;
    Jobs jobs;
    int leftOut = 0;  // jobs that have gone on meanwhile
  };
  // The last step; its group is made again should it have gone. None when there is no step.
  std::optional<Taken> Undo();

 private:
  struct Step {
    Kind kind;
    Group group;
    int place = 0;  // of the group among the others
    Jobs jobs;
    std::function<int()> back;  // how many were left out
  };
  void KeepField(JobField field, std::vector<GroupFields> before);
  void Keep(Kind kind, const Group& group, Jobs jobs, std::function<int()> back);

  JobGroupManager& manager_;
  std::deque<Step> steps_;
};

#endif
