// A named list of jobs with the thread that runs them.
#ifndef KR_CORE_JOBGROUP_H
#define KR_CORE_JOBGROUP_H

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/FailureStreak.h"
#include "core/JobList.h"
#include "core/RunningThreads.h"
#include "core/RunWatch.h"
#include "runs/JobRun.h"

// What groups are handed. All of it outlives their threads.
struct JobGroupSetup {
  QueueObserver& observer;
  AppLog& log;
  std::function<Settings()> settings;  // a copy for a run; any thread
  JobRunSetup run;                     // what all runs share: drivers, positioning
  // The prefixes of the files of all other jobs in the job's folders (core/SharedFolders.h); may be
  // null. Called with no list locked.
  std::function<std::vector<std::string>(const JobFile& job)> otherPrefixes = {};
  // Called when the job is about to run, with no list locked: its results are to have a name that
  // no other job of its folder has (core/SharedFolders.h). May be null.
  std::function<void(JobId job)> takeFreeName = {};
  std::atomic<int>* runErrorCode = nullptr;
  RunWatch* watch = nullptr;  // may be null
  std::shared_ptr<RunningThreads> threads;
};

// Why a group that was submitted goes on with no further job.
struct GroupPause {
  int failures = 0;  // in a row
  Message reason;    // of all of them

  bool operator==(const GroupPause&) const = default;
};

// Shared by the manager, which holds it in a shared_ptr, and its own thread, which keeps it alive
// until it ends. Any thread.
class JobGroup : public JobList, public std::enable_shared_from_this<JobGroup> {
 public:
  explicit JobGroup(JobGroupSetup setup);
  ~JobGroup() override;

  std::string Name() const;
  void SetName(const std::string& name);
  // The host assignment (a hand-over file's "#group" line).
  std::string Text() const;
  void SetText(const std::string& text);

  // Goes on with a run that another copy of the program has begun, on a thread of its own: the job
  // is in the list, Running. Queued jobs wait until it has ended.
  bool Resume(JobId job, const RunRecord& run);

  // Starts the thread. "Running work thread is found, submit job failed" when one runs.
  bool Submit();

  // RequestStop, then waits up to 30 seconds for the thread to end; true when it has. Not for the
  // interface thread, which must stay alive: it calls RequestStop and looks at Running().
  bool Stop();
  // Sets the stop flag and the abort flags of the active jobs and their stages.
  void RequestStop();
  bool Running() const { return running_ || resumed_ > 0; }
  // The run of a job that was told to stop, by whatever, has not ended yet.
  bool Stopping() const;
  // Jobs that are queued now follow without another submit.
  bool TakesQueued() const { return running_ && !stop_; }
  bool StopRequested() const { return stop_; }  // since the last Submit
  // It ended with jobs queued since so many before them failed, as the settings want it
  // (stop_after_failures). Submit goes on, and counts on: when the next one fails like them the
  // group pauses again at once.
  std::optional<GroupPause> Paused() const;

 private:
  struct ThreadStart;
  static std::uint32_t ThreadMain(void* start);
  bool StartThread(PTWrapperThread& thread, std::function<void()> work);
  bool Refuse(const Message& message);

  // The group's thread.
  void RunLoop(FailureStreak streak);
  void GoOnWith(const std::shared_ptr<JobFile>& job, const RunRecord& run);
  void TellRunChanged();
  // Of the stage that runs, as its record has them; seconds since 1970, 0: not known.
  struct RunTimes {
    std::int64_t started = 0;
    std::int64_t ended = 0;
  };
  JobRunSetup SetupFor(JobFile& job, RunTimes& times);
  void RunToEnd(const std::shared_ptr<JobFile>& job, const std::function<JobStatus()>& run,
                const RunTimes& times);
  void EndRunOf(JobFile& job, JobStatus status, const RunTimes& times);
  bool PausesAfter(const FailureStreak& streak);
  std::optional<JobRunContext> BeginRunOf(JobFile& job, std::int64_t since);
  void NoteQueued();
  void JobQueued(const JobFile& job) override;
  std::vector<std::string> FoldersOf(const JobFile& job);
  void ShowWait(const JobFile& job, const Message& message);

  const JobGroupSetup setup_;
  Mutex submitMutex_;
  PTWrapperThread thread_ KR_GUARDED_BY(submitMutex_);
  std::atomic<bool> running_{false};
  std::atomic<int> resumed_{0};  // runs of another copy that are watched
  std::atomic<bool> stop_{false};
  mutable Mutex textMutex_;
  std::string name_ KR_GUARDED_BY(textMutex_) = "NewGroup";
  std::string text_ KR_GUARDED_BY(textMutex_);
  std::optional<FailureStreak> pause_ KR_GUARDED_BY(textMutex_);
  mutable Mutex runsMutex_;
  std::vector<std::shared_ptr<JobFile>> runs_ KR_GUARDED_BY(runsMutex_);  // also removed ones
};

#endif
