// A named list of jobs with the thread that runs them.
#ifndef KR_CORE_JOBGROUP_H
#define KR_CORE_JOBGROUP_H

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "jobs/JobFile.h"
#include "util/process/PTWrapper.h"

class JobGroupManager;

// Owned by the manager; its thread keeps it alive until it ends. Operations may be called on any
// thread; each list operation takes the mutex that all groups share, waits for it without limit and
// lets go before it returns. Jobs and stages are named by their id; for one that is not there an
// operation returns false, with nothing changed.
// Operations that change a field of a job refuse a job with status Running.
//
// A mutex that cannot be taken is recorded as the last error and reported in the log; the work goes
// on, safe within this process.
class JobGroup : public PTWrapper, public std::enable_shared_from_this<JobGroup> {
 public:
  explicit JobGroup(JobGroupManager& manager);
  ~JobGroup() override;

  // The last error may be of any thread's operation.
  std::string LastError() const;

  int Id() const { return id_; }
  std::string Name() const;
  void SetName(const std::string& name);
  // The host assignment (a hand-over file's "#group" line).
  std::string Text() const;
  void SetText(const std::string& text);

  // Starts the thread. "Running work thread is found, submit job failed" when one runs.
  bool Submit();

  // RequestStop, then waits up to 30 seconds for the thread to end; true when it has. Not for the
  // interface thread, which must stay alive: it calls RequestStop and looks at Running().
  bool Stop();
  // Sets the stop flag and the abort flag of the first active job and its stages.
  void RequestStop();
  bool Running() const { return running_; }

  bool AddJob(std::shared_ptr<JobFile> job);  // at the end; false for one that is there already
  // A job that runs is told to abort; its thread ends the solver and goes on with the next job.
  bool RemoveJob(JobId job);
  // A queued job moves down past any job, and up past a queued one only.
  bool MoveJob(JobId job, bool up);
  bool SetJobStatus(JobId job, JobStatus status);
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
  bool SetStageStatus(JobId job, JobId stage, JobStatus status);
  // Changes fields of one stage, other than status and abort, while the mutex is held; false when
  // `change` says so.
  bool ChangeStage(JobId job, JobId stage, const std::function<bool(JobFile&)>& change);

  int JobCount() const;
  std::vector<JobId> JobIds() const;  // in order
  // The first job with status Waiting or Running.
  JobId ActiveJob() const;

  // Calls `read` with the job while the mutex is held: no waiting, no calls back into the group.
  bool ReadJob(JobId job, const std::function<void(const JobFile&)>& read) const;
  bool ReadStage(JobId job, JobId stage, const std::function<void(const JobFile&)>& read) const;
  // The same for the active job.
  bool ReadActiveJob(const std::function<void(const JobFile&)>& read) const;
  // The same for all jobs in order.
  void ReadJobs(const std::function<void(const JobFile&)>& read) const;

  // Null when it is not there. The program reads jobs as above: what these give is not guarded.
  std::shared_ptr<JobFile> GetJob(JobId job) const;
  std::shared_ptr<JobFile> GetStage(JobId job, JobId stage) const;

 private:
  // Holds the job lists of all groups, within this process also where the mutex cannot be had.
  class ListLock {
   public:
    explicit ListLock(const JobGroup& group);
    ~ListLock();
    ListLock(const ListLock&) = delete;
    ListLock& operator=(const ListLock&) = delete;

   private:
    const std::lock_guard<std::recursive_mutex> process_;
    const JobGroup& group_;
    const bool taken_;
  };

  struct ThreadStart;
  static std::uint32_t ThreadMain(void* start);
  bool StartThread();
  bool Refuse(const Message& message);

  // The steps of the group's thread.
  void RunLoop();
  std::shared_ptr<JobFile> TakeNextJob(std::chrono::seconds& pause);
  std::optional<JobRunContext> BeginRun(JobFile& job);
  void ShowStageStatus(const JobFile& job, JobFile& stage, JobStatus status);
  void EndRun(JobFile& job, JobStatus status);

  // With the list locked.
  JobFile* Find(JobId job) const;  // null when it is not there
  std::size_t PlaceOf(const JobFile& job) const;
  JobFile* FirstActive() const;
  void SetStatus(JobFile& job, JobStatus status);

  bool ChangeStages(JobId job, const std::function<bool(JobFile&)>& change);
  bool ChangeJob(JobId job, const std::function<bool(JobFile&)>& change);
  bool TakeMutex() const;
  void RecordMutexError(const std::string& message) const;
  void RecordError(const std::string& message);

  const int id_;
  JobGroupManager& manager_;
  mutable std::mutex errorMutex_;
  mutable std::string reportedMutexError_;
  std::mutex submitMutex_;
  PTWrapperThread thread_;
  mutable PTWrapperSignal mutex_;
  const bool mutexCreated_;
  std::atomic<bool> running_{false};
  std::atomic<bool> stop_{false};
  std::vector<std::shared_ptr<JobFile>> jobs_;
  std::unordered_map<JobId, JobFile*> byId_;  // the same jobs
  std::string name_ = "NewGroup";
  std::string text_;
};

#endif
