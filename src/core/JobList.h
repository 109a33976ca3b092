// The jobs of a group in their order, with the lock that guards them.
#ifndef KR_CORE_JOBLIST_H
#define KR_CORE_JOBLIST_H

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "core/AppLog.h"
#include "core/QueueObserver.h"
#include "jobs/JobFile.h"
#include "util/process/PTWrapper.h"
#include "util/signals/Mutex.h"

// Operations may be called on any thread; each takes the lock that all lists share, waits for it
// without limit and lets go before it returns. Jobs and stages are named by their id; for one that
// is not there an operation returns false, with nothing changed. Operations that change a field of
// a job refuse a job with status Running.
//
// The lock is a named mutex, shared with other copies of the program, behind one of this process.
// When the named one cannot be taken that is the last error, and stands in the log; the work goes
// on, safe within this process.
class JobList : public PTWrapper {
 public:
  // The observer hears of the list under this id, in the order of the changes: it is called while
  // the list is locked. It and the log outlive the list.
  JobList(int id, QueueObserver& observer, AppLog& log);
  ~JobList() override;

  int Id() const { return id_; }

  bool AddJob(std::shared_ptr<JobFile> job);  // at the end; false for one that is there already
  // A job that runs is told to abort; whoever runs it ends the solver and goes on with the next.
  bool RemoveJob(JobId job);
  // A queued job moves down past any job, and up past a queued one only.
  bool MoveJob(JobId job, bool up);
  // Finished and Aborted jobs only: back to Queued.
  bool Resubmit(JobId job);

  // Of a job with stages these set each stage too; for a single one there is ChangeStage.
  bool SetMemory(JobId job, std::uint64_t megabytes);
  bool SetCpuCount(JobId job, int count);
  bool SetPause(JobId job, int seconds);
  bool SetPrecision(JobId job, SolverKind kind);  // LS-DYNA jobs: one that runs decks
  bool SetUseSFile(JobId job, bool on);           // LS-DYNA jobs
  bool SetDump(JobId job, bool on);               // LS-DYNA jobs

  // Of the job alone.
  bool SetRestartFile(JobId job, const std::string& path);
  bool SetExtraOptions(JobId job, const std::string& options);

  // Stages, see JobFile::stages. Which of them there are changes only while the job is Queued; the
  // first stage to run stays the same one wherever it moves, and when it goes, the next one is it.
  // A run of all stages stays one.
  bool AddStage(JobId job, std::shared_ptr<JobFile> stage);  // at the end
  bool RemoveStage(JobId job, JobId stage);
  bool MoveStage(JobId job, JobId stage, bool up);
  bool SetFirstStage(JobId job, JobId stage);
  // Changes fields of one stage, other than status and abort; false when `change` says so. It is
  // called like the readers below.
  bool ChangeStage(JobId job, JobId stage, const std::function<bool(JobFile&)>& change);

  int JobCount() const;
  std::vector<JobId> JobIds() const;  // in order
  // The first job with status Waiting or Running; kNone when there is none.
  JobId ActiveJob() const;

  // Calls `read` with the job while the list is locked: no waiting, no calls to any list.
  bool ReadJob(JobId job, const std::function<void(const JobFile&)>& read) const;
  bool ReadStage(JobId job, JobId stage, const std::function<void(const JobFile&)>& read) const;
  // The same for the active job.
  bool ReadActiveJob(const std::function<void(const JobFile&)>& read) const;
  // The same for all jobs in order.
  void ReadJobs(const std::function<void(const JobFile&)>& read) const;

  // For who runs the jobs. The first queued job becomes Waiting; `pause` is the time to wait before
  // its run. Null when there is none or `stop` is set: `none` is called then, with the list locked,
  // so that no job can be added in between.
  std::shared_ptr<JobFile> TakeQueuedJob(const std::atomic<bool>& stop, std::chrono::seconds& pause,
                                         const std::function<void()>& none);
  // One that is in the list; null when it is not.
  std::shared_ptr<JobFile> Share(JobId job) const;
  // The job becomes Running, since this moment (seconds since 1970; 0: now). False when it has been
  // removed.
  bool BeginRun(JobFile& job, std::int64_t since = 0);
  // What a waiting job says of itself has changed.
  void ShowWaiting(const JobFile& job);
  // These write nothing for a job that has been removed, but for the stage's own status.
  void ShowStage(const JobFile& job, JobFile& stage, JobStatus status);
  void EndRun(JobFile& job, JobStatus status);
  // Sets the abort flags of the active jobs and their stages.
  void AbortActiveJobs();

 protected:
  // A job that was not Queued is now, or has come in. Called while the list is locked.
  virtual void JobQueued(const JobFile& /*job*/) {}

 private:
  // The lock of all lists. Its members are its holder's.
  class KR_CAPABILITY("lock of the job lists") SharedLock {
   public:
    SharedLock();
    void Lock() KR_ACQUIRE();
    void Unlock() KR_RELEASE();
    // What was wrong with the named mutex when it was taken last; empty: nothing.
    const std::string& Trouble() const { return trouble_; }

   private:
    PTWrapperSignal mutex_;
    const bool created_;
    bool taken_ = false;
    std::string trouble_;
  };

  // Holds the lock to the end of its scope.
  class KR_SCOPED_CAPABILITY Access {
   public:
    explicit Access(const JobList& list) KR_ACQUIRE(list.lock_);
    ~Access() KR_RELEASE();
    Access(const Access&) = delete;
    Access& operator=(const Access&) = delete;

   private:
    const JobList& list_;
  };

  void Tell(ListChange::What what, const JobFile& job, std::size_t place) const KR_REQUIRES(lock_);
  JobFile* Find(JobId job) const KR_REQUIRES(lock_);  // null when it is not there
  JobFile* FindStage(JobId job, JobId stage) const KR_REQUIRES(lock_);
  std::size_t PlaceOf(const JobFile& job) const KR_REQUIRES(lock_);
  JobFile* FirstActive() const KR_REQUIRES(lock_);
  void SetStatus(JobFile& job, JobStatus status, std::int64_t since = 0) KR_REQUIRES(lock_);
  void SetStatus(const JobFile& job, JobFile& stage, JobStatus status) KR_REQUIRES(lock_);

  bool ChangeJob(JobId job, const std::function<bool(JobFile&)>& change);
  bool ChangeStages(JobId job, const std::function<bool(JobFile&)>& change);
  void TakeTrouble(const std::string& trouble, bool isNew) const;

  const int id_;
  QueueObserver& observer_;
  AppLog& log_;
  mutable SharedLock lock_;
  mutable std::string reported_ KR_GUARDED_BY(lock_);  // the trouble that the log has
  std::vector<std::shared_ptr<JobFile>> jobs_ KR_GUARDED_BY(lock_);
  std::unordered_map<JobId, JobFile*> byId_ KR_GUARDED_BY(lock_);  // the same jobs
};

#endif
