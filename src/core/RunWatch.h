// Follows the runs of all groups: which ones go on, and how.
#ifndef KR_CORE_RUNWATCH_H
#define KR_CORE_RUNWATCH_H

#include <functional>
#include <map>
#include <optional>
#include <vector>

#include "jobs/Settings.h"
#include "messages/Message.h"
#include "progress/RunWatcher.h"
#include "runs/RunRecord.h"
#include "util/signals/Mutex.h"

// Owned by the manager, whose groups tell it of their runs. Any thread.
class RunWatch {
 public:
  // All outlive the object and may be called on any thread. `changed` as QueueObserver::RunLookedAt
  // has it; `report` is the log.
  RunWatch(std::function<Settings()> settings, std::function<void(JobId job)> changed,
           MessageSink report);

  // Each run of a solver process, at its start and at its end, as JobRunSetup::recorded has them.
  void Recorded(JobId job, const RunRecord& run);
  // As JobRunSetup::stoppedAt has it.
  int StoppedAt(JobId job, const RunRecord& run);
  // As JobRunSetup::stepFell has it, by the limit of the settings.
  bool StepFell(JobId job, const RunRecord& run);

  // How the job's last run goes on or how it ended, in this session; none before. Does not wait.
  std::optional<RunState> StateOf(JobId job) const { return watcher_.StateOf(job); }

 private:
  std::vector<WatchedRun> Runs() const;

  mutable Mutex mutex_;
  std::map<JobId, WatchedRun> runs_ KR_GUARDED_BY(mutex_);  // those that go on
  RunWatcher watcher_;
};

#endif
