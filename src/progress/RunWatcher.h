// Looks at the running jobs once a second, on a thread of its own.
#ifndef KR_PROGRESS_RUNWATCHER_H
#define KR_PROGRESS_RUNWATCHER_H

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "jobs/JobFile.h"
#include "jobs/Settings.h"
#include "messages/Message.h"
#include "progress/Health.h"
#include "progress/RunFiles.h"
#include "progress/RunProgress.h"
#include "util/process/ProcessIdentity.h"

// A run that is going on.
struct WatchedRun {
  JobId job = JobId::kNone;
  std::int64_t started = 0;                        // seconds since 1970
  int stage = -1;                                  // of the job; -1: the job itself
  RunFiles::Kind kind = RunFiles::Kind::kKeyword;  // kNone: nothing tells how far it is
  std::string folder;                              // that it runs in
  std::string jobFile;           // the deck or the job; empty for a restart without one
  std::string filesBefore = {};  // what lay in the folder, as FolderSnapshot::Text tells it
  ProcessIdentity process = {};  // the solver's
  int cpus = 0;                  // asked for; 0: not known
  OutputNames names = {};        // of its files

  bool IsSameAs(const WatchedRun& other) const {
    return job == other.job && started == other.started && stage == other.stage &&
           process.id == other.process.id;
  }
};

// What a run takes of the machine. What is not known is empty.
struct RunUse {
  std::optional<double> processors;  // busy on average since the look before
  std::optional<std::uint64_t> memory;
  std::uint64_t results = 0;  // bytes of the files that it has written so far
};

// How a run stands, or how it stood when it ended.
struct RunState {
  WatchedRun run;
  bool running = true;
  RunNews news;
  RunUse use;
  std::vector<HealthFinding> health;  // what is wrong
};

// Each run's files are read on a thread of the run's own, without any lock held: a file system that
// does not answer holds up that run alone. Any thread.
class RunWatcher {
 public:
  struct Hooks {
    std::function<std::vector<WatchedRun>()> runs;  // those that are going on
    std::function<Settings()> settings;
    std::function<void(JobId job)> changed;  // the state of a job is another one
    MessageSink report;                      // for the log: what is wrong with a run, once
  };
  // The hooks are called on threads of the watcher, one at a time but for `runs`, and not after its
  // end. `runs` is called under the watcher's lock and must not ask it. `patience`: how long a last
  // look is waited for.
  explicit RunWatcher(Hooks hooks, std::chrono::milliseconds every = std::chrono::seconds(1),
                      std::chrono::milliseconds patience = std::chrono::seconds(30));
  // Does not wait for files that cannot be read.
  ~RunWatcher();
  RunWatcher(const RunWatcher&) = delete;
  RunWatcher& operator=(const RunWatcher&) = delete;

  // Nothing for a job that has not run. Ended runs are kept for the newest thousand jobs.
  std::optional<RunState> StateOf(JobId job) const;

  // How the run ended: looks once more, or for the first time, and then no more. The solver has
  // ended. Waits for as long as it has patience; none then. Not within a hook.
  std::optional<RunState> LookLast(const WatchedRun& run);

 private:
  class Watch;
  struct Worker;
  struct Shared;

  void Work();
  void LookAtRuns();
  void SampleUse();

  const std::shared_ptr<Shared> shared_;
  const std::chrono::milliseconds patience_;
  std::chrono::steady_clock::time_point nextSample_;  // the thread's
  std::thread thread_;
};

#endif
