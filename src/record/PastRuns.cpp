#include "record/PastRuns.h"

#include <algorithm>

#include "util/files/FileDirWrapper.h"
#include "util/text/PlainText.h"

namespace {

std::string KeyOf(const std::string& deck, const std::string& restart) {
  constexpr bool kCaseMatters = FileDirWrapper::kSeparator == '/';
  const std::string key = deck + '\n' + restart;
  return kCaseMatters ? key : Lower(key);
}

// When it ended is not known of one that nobody watched.
bool WasWatched(const RunRecord& run) {
  return run.reason.Id() != MessageId::kEndedUnwatched &&
         run.reason.Id() != MessageId::kEndedUnwatchedWith;
}

}  // namespace

void PastRuns::Add(const RunRecord& run) {
  const std::optional<std::int64_t> took = run.Took(run.started, run.ended);
  const bool tells = run.verdict == JobStatus::kFinished && run.stoppedAt == kNotStopped && took &&
                     WasWatched(run);
  if (!tells) return;
  const PastRun past{run.started, *took, run.cpus};
  const MutexLock lock(mutex_);
  const auto [known, isNew] = runs_.emplace(KeyOf(run.jobFile, run.restartFile), past);
  if (!isNew && past.started >= known->second.started) known->second = past;
}

std::optional<PastRun> PastRuns::Find(const JobFile& stage) const {
  const std::string key = KeyOf(stage.jobFile, stage.restartFile);
  const MutexLock lock(mutex_);
  const auto known = runs_.find(key);
  return known == runs_.end() ? std::nullopt : std::optional(known->second);
}

std::optional<PastRun> PastRuns::Of(const JobFile& job) const {
  if (job.stages.empty()) return Find(job);
  std::optional<PastRun> all;
  for (auto i = static_cast<std::size_t>(std::max(job.firstStage, 0)); i < job.stages.size(); ++i) {
    const std::optional<PastRun> one = Find(*job.stages[i]);
    if (!one) return std::nullopt;
    if (!all) all.emplace();
    all->started = std::max(all->started, one->started);
    all->seconds += one->seconds;
    all->cpus = std::max(all->cpus, one->cpus);
  }
  return all;
}
