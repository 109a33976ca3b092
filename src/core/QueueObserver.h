// What the core tells the interface.
#ifndef KR_CORE_QUEUEOBSERVER_H
#define KR_CORE_QUEUEOBSERVER_H

#include <span>
#include <string>

#include "jobs/JobRequest.h"
#include "messages/Message.h"

struct RunRecord;

// How the list of a group changed: of one job, or of several in one step.
struct ListChange {
  enum class What {
    kAdded,    // at the end
    kRemoved,  // whatever their status is
    kOrder,    // from `place` on, these jobs stand in this order
    kFields    // fields of them, stages, or all that tells how far they are
  };
  What what;
  std::span<const JobFile* const> jobs;
  std::size_t place = 0;  // in the list
};

// Calls come from any thread, those about jobs while the list of jobs is locked, in the order of
// the changes, so that the job may be read: note what changed and return. Groups are named by
// JobGroup::Id(), which no other group of this process ever had.
class QueueObserver {
 public:
  virtual ~QueueObserver() = default;

  // It has a new status, or another thing to say of it.
  virtual void JobStatusChanged(int groupId, const JobFile& job) = 0;
  // A stage of a multi-stage job has a new status.
  virtual void StageStatusChanged(int groupId, const JobFile& job, const JobFile& stage) = 0;
  virtual void JobsChanged(int groupId, const ListChange& change) = 0;
  // A group's thread has begun or ended.
  virtual void GroupRunChanged(int groupId) = 0;
  // The hand-over file changed settings or a group's text.
  virtual void SettingsChanged() = 0;
  // Decks are being read: how many are done of how many, the one being read and its percentage.
  // done == total: nothing is being read any more.
  virtual void IntakeProgress(int done, int total, const std::string& file, int percent) = 0;
  // A running job, or one that has just ended, was looked at: RunWatch::StateOf tells more. While
  // no list is locked.
  virtual void RunLookedAt(JobId /*job*/) {}
  // Something was reported to the application log.
  virtual void Logged(const Message& message) = 0;

  // For who keeps a record. The first is called for a new group, too; the first four on the
  // interface thread, the last on the run's, while no list is locked.
  virtual void GroupChanged(int /*groupId*/, const std::string& /*name*/,
                            const std::string& /*text*/) {}
  virtual void GroupRemoved(int /*groupId*/) {}
  // It stands at this place among the groups.
  virtual void GroupPlaced(int /*groupId*/, int /*place*/) {}
  virtual void CurrentGroupChanged(int /*groupId*/) {}
  // A job is to be made, which will have the request's id; or will not be made after all. Any
  // thread.
  virtual void JobRequested(const JobRequest& /*request*/) {}
  virtual void RequestGivenUp(JobId /*request*/) {}
  // A run of the job's, or of a stage's, solver has begun or has ended.
  virtual void RunRecorded(JobId /*job*/, const RunRecord& /*run*/) {}
};

#endif
