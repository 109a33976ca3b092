// What the core tells the interface.
#ifndef KR_CORE_QUEUEOBSERVER_H
#define KR_CORE_QUEUEOBSERVER_H

#include <string>

#include "jobs/JobId.h"
#include "jobs/JobStatus.h"
#include "messages/Message.h"

// Calls come from any thread, those about jobs while the list of jobs is locked, in the order of
// the changes: note what changed and return. Groups are named by JobGroup::Id(), which no other
// group of this process ever had.
class QueueObserver {
 public:
  virtual ~QueueObserver() = default;

  virtual void JobStatusChanged(int groupId, JobId job, JobStatus status) = 0;
  // A stage of a multi-stage job has a new status.
  virtual void StageStatusChanged(int groupId, JobId job, JobId stage, JobStatus status) = 0;
  // Jobs were added to, removed from or moved in the group, or fields of them changed.
  virtual void JobsChanged(int groupId) = 0;
  // A group's thread has begun or ended.
  virtual void GroupRunChanged(int groupId) = 0;
  // The hand-over file changed settings or a group's text.
  virtual void SettingsChanged() = 0;
  // Decks are being read: how many are done of how many, the one being read and its percentage.
  // done == total: nothing is being read any more.
  virtual void IntakeProgress(int done, int total, const std::string& file, int percent) = 0;
  // Something was reported to the application log.
  virtual void Logged(const Message& message) = 0;
};

#endif
