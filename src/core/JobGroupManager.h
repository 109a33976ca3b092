// The groups of the queue and which of them is current.
#ifndef KR_CORE_JOBGROUPMANAGER_H
#define KR_CORE_JOBGROUPMANAGER_H

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "core/JobGroup.h"
#include "core/QueueObserver.h"
#include "core/SettingsAndPaths.h"
#include "solvers/JobSolver.h"

// Owned by the application. Groups are added and removed on the interface thread; everything may be
// read on any thread.
class JobGroupManager {
 public:
  // All three outlive the manager.
  JobGroupManager(SettingsAndPaths& settings,
                  const std::vector<std::unique_ptr<JobSolver>>& solvers);
  virtual ~JobGroupManager();

  // Null: nobody is told. Interface thread, before groups run.
  void SetObserver(QueueObserver* observer);
  QueueObserver& Observer();  // never null: an empty one stands in

  int AddGroup(const std::string& name);
  // A group that runs is told to stop first; its thread may outlive this call.
  bool RemoveGroup(int index);
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
  // A group's thread runs.
  bool IsAnyGroupRunning() const;

  // Tells one group (or all, -1) to stop; does not wait.
  void RequestStop(int index);
  // The same and waits up to 30 seconds; true when all threads have ended. Not for the interface
  // thread.
  bool Stop(int index);

  SettingsAndPaths& Settings() { return settings_; }
  JobSolver* SolverFor(int type) const;

  // How the last run that failed ended (see JobFile::RunErrorCode).
  std::atomic<int> runErrorCode{0};

 private:
  SettingsAndPaths& settings_;
  const std::vector<std::unique_ptr<JobSolver>>& solvers_;
  std::atomic<QueueObserver*> observer_;
  mutable std::mutex mutex_;  // the list and the current index; taken after a group's mutex
  std::vector<std::shared_ptr<JobGroup>> groups_;
  int current_ = -1;
};

#endif
