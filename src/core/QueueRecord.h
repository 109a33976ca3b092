// Keeps the queue on disk, and brings back what the last session left.
#ifndef KR_CORE_QUEUERECORD_H
#define KR_CORE_QUEUERECORD_H

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "core/JobGroupManager.h"
#include "core/JobIntake.h"
#include "core/QueueObserver.h"
#include "core/SettingsAndPaths.h"
#include "record/RecordWriter.h"
#include "util/process/ProcessIdentity.h"
#include "util/signals/Mutex.h"

// The jobs that earlier sessions left behind.
struct LeftBehind {
  int queued = 0;
  int wereRunning = 0;    // their solver is gone
  int stillRun = 0;       // it is not
  int ended = 0;          // come back too, as they ended
  std::int64_t last = 0;  // when they were heard of last, seconds since 1970
  bool isSearched = false;  // how many of them run still may turn out to be another number

  int Jobs() const { return queued + wereRunning + stillRun + ended; }
};

// Owned by the application; outlives the manager, whose recorder it is. The observer's calls come
// from any thread and cost it a copy of the job; the rest is the interface thread's.
class QueueRecord : public QueueObserver {
 public:
  // What keep_jobs of the settings says.
  enum Keep : int { kNever = 0, kOffer = 1, kAtOnce = 2 };

  explicit QueueRecord(SettingsAndPaths& settings);
  ~QueueRecord() override;  // waits for what Begin has started

  // Reads the record; from here on every change is kept in it. Before the first group is made. On a
  // thread of its own, solvers are ended whose jobs the last session had removed or stopped, and
  // solvers are looked for that it was starting.
  void Begin();
  // The session's first groups are there. Nothing is written before that.
  void GroupsMade();
  // The groups of a session that ended as none should, so that the group file does not have them;
  // empty: it has.
  const std::vector<SettingsAndPaths::GroupEntry>& LostGroups() const { return lostGroups_; }
  int LostCurrent() const { return lostCurrent_; }  // which of them was current
  // The last session wanted its jobs back without a question.
  bool WantsRestore() const { return resume_; }

  // What the job's deck took when it ran last; only a look into the memory. Any thread, with the
  // lock of the job's list held.
  std::optional<PastRun> LastRunOf(const JobFile& job) const { return writer_.Past().Of(job); }
  // The runs of all sessions, for ReadHistory, and a number that changes when they do. Any thread.
  const RecordFiles& Files() const { return writer_.Files(); }
  std::uint64_t HistoryVersion() const { return writer_.HistoryVersion(); }

  // All zero when there is nothing. Looks at processes, never long.
  LeftBehind Left() const;
  // Puts them into the groups of their names, behind what is there; groups that are missing are
  // made. As long as no group has a job, the groups become those of the record as a whole. Waiting
  // jobs are queued again; solvers that still run are watched, those that have ended are judged.
  // What had not become a job yet is asked of the intake again.
  void Restore(JobGroupManager& manager, JobIntake& intake);
  // The same for the session that wanted it alone; earlier ones stay.
  void RestoreWanted(JobGroupManager& manager, JobIntake& intake);
  void Forget();

  // What `request` asks of the intake is recorded in one step with the hand-over files from which
  // it came. `files`: all that must not be read again should they still be there, by their names.
  void TakeOver(const std::vector<std::string>& files, const std::function<void()>& request);
  // The session before had taken what this file holds.
  bool HasTaken(const std::string& file) const;
  // What was taken over is on the disk, or no queue is kept.
  bool IsSafe() const { return writer_.IsSafe(takenOver_); }

  // The end of the program stops jobs: they are offered as those that had not ended.
  void EndStopsJobs(bool stops) { endStopsJobs_ = stops; }
  // The program ends as it should; `resume`: the next one restores without a question.
  void End(bool resume);
  // Waits until all is on the disk, at most a few seconds.
  void Flush();

  void JobStatusChanged(int groupId, const JobFile& job) override;
  void StageStatusChanged(int groupId, const JobFile& job, const JobFile& stage) override;
  void JobsChanged(int groupId, const ListChange& change) override;
  void GroupChanged(int groupId, const std::string& name, const std::string& text) override;
  void GroupRemoved(int groupId) override;
  void GroupPlaced(int groupId, int place) override;
  void CurrentGroupChanged(int groupId) override;
  void JobRequested(const JobRequest& request) override;
  void RequestGivenUp(JobId request) override;
  void RunRecorded(JobId job, const RunRecord& run) override;
  void GroupRunChanged(int) override {}
  void SettingsChanged() override {}
  void IntakeProgress(int, int, const std::string&, int) override {}
  void Logged(const Message&) override {}

 private:
  struct Resumed;
  void Restore(JobGroupManager& manager, JobIntake& intake, bool wantedOnly);
  void RestoreSession(const SessionImage& session, JobGroupManager& manager, JobIntake& intake,
                      bool isUntouched, std::vector<Resumed>& resumed);
  void LookForProcesses(std::int64_t last);
  void EndLeaving(const RunRecord& run, std::int64_t last);
  void EndStopped(const RunRecord& run);
  ProcessIdentity KnownProcessOf(const RunRecord& run) const;
  std::shared_ptr<JobFile> Revived(JobImage image, std::int64_t last) const;

  SettingsAndPaths& settings_;
  RecordWriter writer_;
  std::vector<SessionImage> left_;
  std::vector<SettingsAndPaths::GroupEntry> lostGroups_;
  int lostCurrent_ = 0;
  bool resume_ = false;
  bool endStopsJobs_ = false;
  std::vector<std::string> handedOver_;  // before
  std::uint64_t takenOver_ = 0;          // the mark behind what was taken over last
  std::vector<RunRecord> starting_;      // left behind, their process is not known
  std::vector<RunRecord> stopped_;       // left behind, to be ended
  std::vector<LeavingRun> leaving_;
  mutable Mutex foundMutex_;
  std::map<std::string, ProcessIdentity> found_
      KR_GUARDED_BY(foundMutex_);  // of starting_, by token
  std::atomic<bool> isSearched_{false};
  std::thread looker_;  // uses the three lists
};

#endif
