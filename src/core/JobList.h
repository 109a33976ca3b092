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
#include "jobs/JobField.h"
#include "jobs/JobFile.h"
#include "record/JobImage.h"
#include "util/process/PTWrapper.h"
#include "util/signals/Mutex.h"

// What became of an operation on several jobs. Jobs that are not in the list count nowhere.
struct ManyDone {
  int done = 0;
  int running = 0;  // left out, since they run
  int unfit = 0;    // left out, since their status or their kind forbids it

  int LeftOut() const { return running + unfit; }
};

// A job that was taken out, and the place in the list that it had.
struct RemovedJob {
  std::shared_ptr<JobFile> job;
  std::size_t place = 0;
};

// How a job and its stages had ended before they were queued again.
struct JobEnd {
  JobId job = JobId::kNone;
  JobProgress progress;
  std::vector<std::pair<JobId, JobProgress>> stages;
};

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

  // On several jobs in one step, in a time that grows as the list does: nobody sees a part of it.
  using Jobs = std::vector<JobId>;
  // A job that runs is told to abort; whoever runs it ends the solver and goes on with the next.
  // What comes back has the order of the list.
  std::vector<RemovedJob> RemoveJobs(const Jobs& jobs);
  // Back to the places that they had. Of a job that runs still, the run ends as Aborted.
  void ReturnJobs(const std::vector<RemovedJob>& removed);
  // Queued jobs move down past any job, and up past queued ones only; they keep their order. Jobs
  // that have nowhere to go stay and are not counted as done. `before`, when there is one, gets the
  // order of what has moved and has been moved past.
  enum class Move { kUp, kDown, kToTop, kToBottom };
  ManyDone MoveJobs(const Jobs& jobs, Move move, Jobs* before = nullptr);
  // These jobs stand in this order among themselves again, wherever others are.
  void RestoreOrder(const Jobs& order);
  // Finished and Aborted jobs only: back to Queued. `ends` gets how they had ended.
  ManyDone ResubmitJobs(const Jobs& jobs, std::vector<JobEnd>* ends = nullptr);
  // Those that are still Queued are as they had ended.
  ManyDone RestoreEnds(const std::vector<JobEnd>& ends);
  // Of a job with stages this sets each stage too; for a single one there is ChangeStage. A
  // precision is one that runs decks. `before` gets what the jobs had that had something else.
  ManyDone SetField(const Jobs& jobs, JobField field, const FieldValue& value,
                    std::vector<FieldBefore>* before = nullptr);
  // Each job has its own value; `before` as above. For both a value can be changed when CanChange
  // says so.
  ManyDone SetFields(JobField field, const std::vector<FieldBefore>& values,
                     std::vector<FieldBefore>* before = nullptr);
  // Tells of all jobs as if they had been added: the list is known again.
  void TellAll();

  // The same for one job.
  bool RemoveJob(JobId job) { return !RemoveJobs({job}).empty(); }
  bool MoveJob(JobId job, bool up) {
    return MoveJobs({job}, up ? Move::kUp : Move::kDown).done > 0;
  }
  bool Resubmit(JobId job) { return ResubmitJobs({job}).done > 0; }
  bool Set(JobId job, JobField field, const FieldValue& value) {
    return SetField({job}, field, value).done > 0;
  }
  bool SetMemory(JobId job, std::uint64_t megabytes) {
    return Set(job, JobField::kMemory, megabytes);
  }
  bool SetCpuCount(JobId job, int count) { return Set(job, JobField::kCpus, count); }
  bool SetPause(JobId job, int seconds) { return Set(job, JobField::kPause, seconds); }
  bool SetPrecision(JobId job, SolverKind kind) { return Set(job, JobField::kPrecision, kind); }
  bool SetUseSFile(JobId job, bool on) { return Set(job, JobField::kForce, on); }
  bool SetDump(JobId job, bool on) { return Set(job, JobField::kDump, on); }
  bool SetExtraOptions(JobId job, const std::string& options) {
    return Set(job, JobField::kOptions, options);
  }

  bool SetRestartFile(JobId job, const std::string& path);  // of the job alone

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
  // How often a job of this list has ended since the list was made.
  int Endings() const;
  // The first job with status Waiting or Running; kNone when there is none.
  JobId ActiveJob() const;

  // Calls `read` with the job while the list is locked: no waiting, no calls to any list.
  bool ReadJob(JobId job, const std::function<void(const JobFile&)>& read) const;
  bool ReadStage(JobId job, JobId stage, const std::function<void(const JobFile&)>& read) const;
  // The same for the active job.
  bool ReadActiveJob(const std::function<void(const JobFile&)>& read) const;
  // The same for these jobs, in this order, in one step.
  void ReadJobs(const Jobs& jobs, const std::function<void(const JobFile&)>& read) const;
  // The same for all jobs in order.
  void ReadJobs(const std::function<void(const JobFile&)>& read) const;

  // For who runs the jobs. The first queued job becomes Waiting; `pause` is the time to wait before
  // its run. Null when there is none or `stop` is set: `none` is called then, with the list locked,
  // so that no job can be added in between.
  std::shared_ptr<JobFile> TakeQueuedJob(const std::atomic<bool>& stop, std::chrono::seconds& pause,
                                         const std::function<void()>& none);
  // One that is in the list; null when it is not.
  std::shared_ptr<JobFile> Share(JobId job) const;
  // Moments are seconds since 1970; 0: now.
  // The job becomes Running, since that moment. False when it has been removed.
  bool BeginRun(JobFile& job, std::int64_t since = 0);
  // What a waiting job says of itself has changed.
  void ShowWaiting(const JobFile& job);
  // Of a job that has been removed nobody is told.
  void ShowStage(const JobFile& job, JobFile& stage, JobStatus status, std::int64_t since = 0);
  void EndRun(JobFile& job, JobStatus status, std::int64_t ended = 0);
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
    bool IsMade() const { return created_; }  // the named mutex

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

  using Told = std::vector<const JobFile*>;
  void Tell(ListChange::What what, const Told& jobs, std::size_t place = 0) const
      KR_REQUIRES(lock_);
  // Takes a new order of the same jobs, and tells what of it is new.
  void TakeOrder(std::vector<std::shared_ptr<JobFile>> order, Jobs* before) KR_REQUIRES(lock_);
  // Which of the jobs are to be changed, in the order of `jobs`; counts the others.
  template <typename Fits>
  std::vector<JobFile*> Pick(const Jobs& jobs, ManyDone& done, Fits fits) const KR_REQUIRES(lock_);
  JobFile* Find(JobId job) const KR_REQUIRES(lock_);  // null when it is not there
  JobFile* FindStage(JobId job, JobId stage) const KR_REQUIRES(lock_);
  std::size_t PlaceOf(const JobFile& job) const KR_REQUIRES(lock_);
  JobFile* FirstActive() const KR_REQUIRES(lock_);
  void SetStatus(JobFile& job, JobStatus status, std::int64_t since = 0) KR_REQUIRES(lock_);

  bool ChangeJob(JobId job, const std::function<bool(JobFile&)>& change);
  bool ChangeStages(JobId job, const std::function<bool(JobFile&)>& change);
  void TakeTrouble(const std::string& trouble, bool isNew) const;

  const int id_;
  QueueObserver& observer_;
  AppLog& log_;
  mutable SharedLock lock_;
  mutable std::string reported_ KR_GUARDED_BY(lock_);  // the trouble that the log has
  int endings_ KR_GUARDED_BY(lock_) = 0;
  std::vector<std::shared_ptr<JobFile>> jobs_ KR_GUARDED_BY(lock_);
  std::unordered_map<JobId, JobFile*> byId_ KR_GUARDED_BY(lock_);  // the same jobs
};

#endif
