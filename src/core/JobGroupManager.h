// The groups of the queue and which of them is current.
#ifndef KR_CORE_JOBGROUPMANAGER_H
#define KR_CORE_JOBGROUPMANAGER_H

#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include "core/JobGroup.h"
#include "core/QueueObserver.h"
#include "core/RunningThreads.h"
#include "core/SettingsAndPaths.h"
#include "runs/PositioningLibrary.h"
#include "solvers/JobSolver.h"
#include "util/signals/Mutex.h"

// Owned by the application. Groups are added and removed on the interface thread; everything may be
// read on any thread.
class JobGroupManager {
 public:
  // All outlive the manager. The recorder, when there is one, hears of everything, before the
  // observer does.
  JobGroupManager(SettingsAndPaths& settings,
                  const std::vector<std::unique_ptr<JobSolver>>& solvers,
                  QueueObserver* recorder = nullptr);
  // Stops all groups and waits up to 30 seconds for their threads.
  virtual ~JobGroupManager();

  // Null: nobody is told. Once this returns, the former observer is not called any more. Not from
  // within a call of the observer.
  void SetObserver(QueueObserver* observer);
  QueueObserver& Observer();  // passes everything on; always there

  // Why a name cannot be used for a group: the group file could not hold it ("=", "#" in front,
  // control characters) or a tab could not show it (only blanks). Empty when it can.
  static Message RefusalOfName(const std::string& name);

  int AddGroup(const std::string& name);
  // A group that runs is told to stop first; its thread may outlive this call.
  bool RemoveGroup(int index);
  // A group that was removed is there again with its jobs, at this place; its name gets a number
  // when another one has it now. False when it is there.
  bool ReturnGroup(const std::shared_ptr<JobGroup>& group, int index);
  std::shared_ptr<JobGroup> GroupAt(int index) const;  // null out of range
  std::shared_ptr<JobGroup> GroupById(int id) const;
  int GroupCount() const;
  int IndexOf(const JobGroup* group) const;  // -1 when it has been removed
  int IndexOfName(const std::string& name) const;

  int CurrentGroupIndex() const;  // -1: none
  bool SetCurrentGroup(int index);
  std::shared_ptr<JobGroup> CurrentGroup() const;

  // True at the first job of any group that is Waiting or Running.
  bool IsAnyJobActive() const;
  // A group's thread runs, of a removed group too.
  bool IsAnyGroupRunning() const;

  // Tells one group (or all, -1) to stop; does not wait.
  void RequestStop(int index);
  // The same and waits up to 30 seconds; true when all threads have ended. Not for the interface
  // thread.
  bool Stop(int index);
  // Waits as long for the runs that have been told to stop, and for no others.
  void AwaitStopped() const;

  SettingsAndPaths& Settings() { return settings_; }
  const RunWatch& Watch() const { return watch_; }
  // The first driver of that kind; null when there is none.
  JobSolver* SolverFor(SolverKind kind) const;

  // The positioning library works for a running job.
  std::atomic<bool> autoPosition{false};

  // How the last run that failed ended (see JobFile::RunErrorCode).
  std::atomic<int> runErrorCode{0};

 private:
  class ObserverRelay;
  JobGroupSetup GroupSetup();
  void TellCurrentGroup();
  std::vector<std::shared_ptr<JobGroup>> Groups() const;
  std::vector<std::shared_ptr<JobGroup>> GroupsToStop(int index) const;

  SettingsAndPaths& settings_;
  const std::vector<std::unique_ptr<JobSolver>>& solvers_;
  const std::unique_ptr<ObserverRelay> relay_;
  const std::shared_ptr<RunningThreads> threads_;
  PositioningLibrary positioning_;
  RunWatch watch_;
  mutable Mutex mutex_;  // never held while a group is asked for something
  std::vector<std::shared_ptr<JobGroup>> groups_ KR_GUARDED_BY(mutex_);
  std::vector<std::weak_ptr<JobGroup>> removed_ KR_GUARDED_BY(mutex_);
  int current_ KR_GUARDED_BY(mutex_) = -1;
};

#endif
