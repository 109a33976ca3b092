// Looks at the running jobs once a second, on a thread of its own.
#ifndef KR_PROGRESS_RUNWATCHER_H
#define KR_PROGRESS_RUNWATCHER_H

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "jobs/JobId.h"
#include "jobs/Settings.h"
#include "messages/Message.h"
#include "progress/RunFiles.h"
#include "progress/RunProgress.h"
#include "util/signals/Mutex.h"

// A run that is going on.
struct WatchedRun {
  JobId job = JobId::kNone;
  std::int64_t started = 0;  // tells the runs of a job apart
  RunFiles::Kind kind = RunFiles::Kind::kKeyword;
  std::string folder;   // that it runs in
  std::string jobFile;  // the deck or the job; empty for a restart without one
};

// How a run stands, or how it stood when it ended.
struct RunState {
  std::int64_t started = 0;  // of WatchedRun
  bool running = true;
  RunNews news;
  std::vector<Message> health;  // what is wrong
};

// Reads files without any lock held. Any thread.
class RunWatcher {
 public:
  struct Hooks {
    std::function<std::vector<WatchedRun>()> runs;  // those that are going on
    std::function<Settings()> settings;
    std::function<void(JobId job)> changed;  // the state of a job is another one
    MessageSink report;                      // for the log: what is wrong with a run, once
  };
  // The hooks are called on the watcher's thread.
  explicit RunWatcher(Hooks hooks, std::chrono::milliseconds every = std::chrono::seconds(1));
  ~RunWatcher();
  RunWatcher(const RunWatcher&) = delete;
  RunWatcher& operator=(const RunWatcher&) = delete;

  // Nothing for a job that has not run. Ended runs are kept for the newest thousand jobs.
  std::optional<RunState> StateOf(JobId job) const;

 private:
  struct Watch;
  void Work();
  void LookAtAll();
  void Publish(const Watch& watch, bool running);

  const Hooks hooks_;
  const std::chrono::milliseconds every_;
  std::map<JobId, std::unique_ptr<Watch>> watches_;  // the thread's
  mutable Mutex mutex_;
  std::condition_variable woken_;
  bool end_ KR_GUARDED_BY(mutex_) = false;
  std::map<JobId, RunState> states_ KR_GUARDED_BY(mutex_);
  std::deque<JobId> ended_ KR_GUARDED_BY(mutex_);  // the oldest first
  std::thread thread_;
};

#endif
