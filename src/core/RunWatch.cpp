#include "core/RunWatch.h"

#include <algorithm>
#include <utility>

#include "jobs/OutputPrefix.h"

namespace {

RunFiles::Kind KindOf(SolverKind kind) {
  switch (kind) {
    case SolverKind::kLsDynaSingle:
    case SolverKind::kLsDynaDouble:
      return RunFiles::Kind::kKeyword;
    case SolverKind::kVorel:
    case SolverKind::kInc:
      return RunFiles::Kind::kText;
    case SolverKind::kUtilityBatch:
      break;
  }
  return RunFiles::Kind::kNone;
}

WatchedRun WatchedFrom(JobId job, const RunRecord& run) {
  return {.job = job,
          .started = run.started,
          .stage = run.stage,
          .kind = KindOf(run.solver),
          .folder = run.folder,
          .jobFile = run.jobFile,
          .filesBefore = run.filesBefore,
          .process = run.process,
          .cpus = run.cpus,
          .names = {OutputPrefix(run.solver, run.outputName, run.extraOptions),
                    AsksForCases(run.commandLine)}};
}

}  // namespace

RunWatch::RunWatch(std::function<Settings()> settings, std::function<void(JobId job)> changed,
                   MessageSink report)
    : watcher_({.runs = [this] { return Runs(); },
                .settings = std::move(settings),
                .changed = std::move(changed),
                .report = std::move(report)}) {}

std::vector<WatchedRun> RunWatch::Runs() const {
  const MutexLock lock(mutex_);
  std::vector<WatchedRun> runs;
  for (const auto& [job, run] : runs_) runs.push_back(run);
  return runs;
}

void RunWatch::Recorded(JobId job, const RunRecord& run) {
  const MutexLock lock(mutex_);
  if (HasEnded(run.verdict)) {
    runs_.erase(job);
  } else {
    runs_.insert_or_assign(job, WatchedFrom(job, run));
  }
}

bool RunWatch::StepFell(JobId job, const RunRecord& run) {
  const std::optional<RunState> state = watcher_.LookLast(WatchedFrom(job, run));
  if (!state) return false;
  return std::any_of(state->health.begin(), state->health.end(), [](const HealthFinding& finding) {
    return finding.check == HealthCheck::kTimeStep;
  });
}

int RunWatch::StoppedAt(JobId job, const RunRecord& run) {
  const WatchedRun watched = WatchedFrom(job, run);
  const std::optional<RunState> state = watcher_.LookLast(watched);
  // Where no end was found, that of the run stands in files that were not seen.
  if (state && state->news.ended != RunEnd::kRunning) return ::StoppedAt(state->news);
  // Others tell of no end time that could have been missed.
  return watched.kind == RunFiles::Kind::kKeyword ? kStopUnknown : kNotStopped;
}
