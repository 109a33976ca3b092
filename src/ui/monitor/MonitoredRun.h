// Which run a monitor shows, and how it stands in the queue.
#ifndef KR_UI_MONITOR_MONITOREDRUN_H
#define KR_UI_MONITOR_MONITOREDRUN_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "core/JobList.h"
#include "progress/RunReader.h"

// The files of a job without stages, or of a stage; `started` in seconds since 1970, and whether
// its solver runs decks. Nothing for one that has not run. With the lock of the job's list held.
RunToRead WhatToRead(const JobFile& job, std::int64_t started, bool runsDeck);

// A job, one of its stages, or a folder of which the queue knows nothing. Interface thread.
class MonitoredRun {
 public:
  MonitoredRun(const std::shared_ptr<JobList>& list, JobId job);
  explicit MonitoredRun(std::string folder);

  bool IsJob() const { return job_ != JobId::kNone; }
  JobId Job() const { return job_; }
  bool IsSameAs(const MonitoredRun& other) const {
    return job_ == other.job_ && folder_ == other.folder_;
  }

  // By its place among the job's stages; -1: the one that runs, or ran last.
  void ChooseStage(int stage) { chosen_ = stage; }
  // By its number; 0: the newest.
  void ChooseCase(int number) { chosenCase_ = number; }

  struct State {
    JobId job = JobId::kNone;  // of the whole job, also where a stage is shown
    bool inQueue = false;
    std::string name;                 // of the deck or the folder; UTF-8, as those of the stages
    std::vector<std::string> stages;  // empty: a job without any
    int stage = -1;                   // that is shown
    JobStatus status = JobStatus::kQueued;  // of the job or the stage
    std::int64_t started = 0, ended = 0;    // seconds since 1970; 0: not yet
    std::int64_t seconds = -1;              // JobFile::RunSeconds
    int stoppedAt = kNotStopped;            // a RunStop, by the verdict of the queue
    Message reason;                         // why it waits or was aborted
    Failure failure;                        // how it failed
    bool runsDeck = true;                   // by a solver that writes energies and takes switches
    RunToRead run;
    bool operator==(const State& other) const = default;
  };
  // How it stands now. A job that has left the queue stays as it was.
  const State& Look();

 private:
  void Take(const JobFile& job);

  const std::weak_ptr<JobList> list_;
  const JobId job_ = JobId::kNone;
  const std::string folder_;
  int chosen_ = -1;
  int chosenCase_ = 0;
  State state_;
};

#endif
