#include "ui/monitor/MonitoredRun.h"

#include <utility>

#include "jobs/OutputPrefix.h"
#include "solvers/SolverKinds.h"
#include "ui/text/Encoding.h"
#include "util/files/FileDirWrapper.h"

namespace {

std::string NameOf(const std::string& path) {
  const std::string name = FileDirWrapper::NameOf(path);
  return ToUi(name.empty() ? path : name);
}

// The stage that runs, else the last one that has run, else the first.
int NewestStage(const JobFile& job) {
  int newest = 0;
  for (std::size_t i = 0; i < job.stages.size(); ++i) {
    const JobStatus status = job.stages[i]->status;
    if (status == JobStatus::kRunning) return static_cast<int>(i);
    if (HasEnded(status)) newest = static_cast<int>(i);
  }
  return newest;
}

}  // namespace

RunToRead WhatToRead(const JobFile& job, std::int64_t started, bool runsDeck) {
  RunToRead run;
  run.isRunning = run.mayGrow = job.status == JobStatus::kRunning;
  if (!run.isRunning && !HasEnded(job.status)) return run;
  run.folder = job.Folder();
  run.deck = job.jobFile;
  run.names = OutputNamesOf(job);
  run.since = started;
  run.until = job.ended;
  // A deck with cases writes one message file after another while it runs.
  if (!run.isRunning) run.path = job.MessageFile();
  if (run.path.empty()) run.path = runsDeck ? run.folder : job.jobFile;
  return run;
}

MonitoredRun::MonitoredRun(const std::shared_ptr<JobList>& list, JobId job)
    : list_(list), job_(job) {}

MonitoredRun::MonitoredRun(std::string folder) : folder_(std::move(folder)) {
  state_.name = ToUi(folder_);
  state_.run.path = state_.run.folder = folder_;
}

const MonitoredRun::State& MonitoredRun::Look() {
  state_.run.caseShown = chosenCase_;
  if (!IsJob()) return state_;
  const std::shared_ptr<JobList> list = list_.lock();
  const bool found = list && list->ReadJob(job_, [this](const JobFile& job) { Take(job); });
  state_.job = job_;
  state_.inQueue = found;
  if (!found) state_.run.isRunning = state_.run.mayGrow = false;
  return state_;
}

void MonitoredRun::Take(const JobFile& job) {
  state_.stages.clear();
  for (const std::shared_ptr<JobFile>& stage : job.stages)
    state_.stages.push_back(NameOf(stage->MainFile()));
  const JobFile* shown = &job;
  state_.stage = -1;
  if (!job.stages.empty()) {
    const bool isChosen = chosen_ >= 0 && chosen_ < static_cast<int>(job.stages.size());
    state_.stage = isChosen ? chosen_ : NewestStage(job);
    shown = job.stages[static_cast<std::size_t>(state_.stage)].get();
  }
  state_.name = NameOf(job.MainFile());
  state_.status = shown->status;
  state_.started = shown->started != 0 ? shown->started : job.started;
  state_.ended = shown->ended;
  state_.seconds = shown->RunSeconds();
  state_.stoppedAt = shown->StoppedAt();
  state_.reason = shown->RunMessage();
  state_.failure = shown->HowFailed();
  state_.runsDeck = RowOfKind(shown->GetSolverType()).runsDecks;
  state_.run = WhatToRead(*shown, state_.started, state_.runsDeck);
  state_.run.caseShown = chosenCase_;
}
