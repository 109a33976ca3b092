// Carries what the queue tells from its threads to the interface thread.
#ifndef KR_UI_WINDOW_QUEUENOTES_H
#define KR_UI_WINDOW_QUEUENOTES_H

#include <chrono>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <thread>

#include "core/QueueObserver.h"
#include "util/signals/Mutex.h"

// What changed since the interface looked last.
struct QueueChanges {
  std::map<int, std::set<JobId>> jobs;  // whose status or fields changed, by group id
  std::set<JobId> runs;                 // that were looked at
  std::set<int> groups;                 // groups whose list changed
  bool running = false;                 // a group's thread began or ended
  bool settings = false;
  bool intake = false;
  int done = 0, total = 0, percent = 0;  // of the intake
  std::string file;
  Message message;  // the last one that the log got from other threads
  Message answer;   // and from the interface thread: about what the user has just asked for
};

// The observer's calls only take a note and wake the interface, once until it has looked. What
// takes the interface long to show is shown less often, so that thousands of changes do not keep it
// busy. Outlives the manager that it observes. Made on the interface thread.
class QueueNotes : public QueueObserver {
 public:
  QueueNotes();
  ~QueueNotes() override;

  // Called on the interface thread after something changed. Set before the manager observes.
  std::function<void(const QueueChanges& changes)> OnChanges;

  void JobStatusChanged(int groupId, const JobFile& job) override;
  void StageStatusChanged(int groupId, const JobFile& job, const JobFile& stage) override;
  void JobsChanged(int groupId, const ListChange& change) override;
  void GroupRunChanged(int groupId) override;
  void SettingsChanged() override;
  void IntakeProgress(int done, int total, const std::string& file, int percent) override;
  void RunLookedAt(JobId job) override;
  void Logged(const Message& message) override;

 private:
  template <typename Note>
  void Take(Note note);
  static void Wake(void* self);
  static void DeliverLater(void* self);
  void Deliver();

  const std::thread::id interface_ = std::this_thread::get_id();
  Mutex mutex_;
  QueueChanges changes_ KR_GUARDED_BY(mutex_);
  // The interface has been woken and has not looked yet.
  bool awake_ KR_GUARDED_BY(mutex_) = false;
  std::chrono::steady_clock::time_point next_;  // not delivered before; interface thread
};

#endif
