#include "core/JobTimeLeft.h"

#include <algorithm>

#include "util/text/DateTimeWrapper.h"

namespace {

constexpr int kFewestToJudgeBy = 3;

// Of the stages from that one on, each after its pause.
std::optional<double> StagesLeft(const JobFile& job, int first, const PastRunOf& past) {
  double left = 0;
  for (auto i = static_cast<std::size_t>(first); i < job.stages.size(); ++i) {
    const std::optional<PastRun> run = past(*job.stages[i]);
    if (!run) return std::nullopt;
    left += static_cast<double>(job.stages[i]->pause) + static_cast<double>(run->seconds);
  }
  return left;
}

std::optional<double> RunLeft(const JobFile& run, const RunState& state, const PastRunOf& past,
                              std::int64_t now) {
  if (state.news.secondsLeft) return state.news.secondsLeft;
  const std::optional<PastRun> known = past(run);
  if (!known) return std::nullopt;
  const std::int64_t left = state.run.started + known->seconds - now;
  return left > 0 ? std::optional(static_cast<double>(left)) : std::nullopt;
}

}  // namespace

std::optional<double> JobTimeLeft(const JobFile& job, const std::optional<RunState>& state,
                                  const PastRunOf& past, std::int64_t now) {
  if (HasEnded(job.status)) return 0;
  if (job.status != JobStatus::kRunning) {
    // The first one's pause is the job's.
    const JobFile* first = &job;
    int next = 0;
    if (!job.stages.empty()) {
      next = std::clamp(job.firstStage, 0, static_cast<int>(job.stages.size()) - 1) + 1;
      first = job.stages[static_cast<std::size_t>(next) - 1].get();
    }
    const std::optional<PastRun> run = past(*first);
    const std::optional<double> later = StagesLeft(job, next, past);
    if (!run || !later) return std::nullopt;
    return static_cast<double>(job.pause) + static_cast<double>(run->seconds) + *later;
  }
  if (!state || !state->running) return std::nullopt;
  const int stage = state->run.stage;
  if (stage >= static_cast<int>(job.stages.size())) return std::nullopt;
  const JobFile& run = stage < 0 ? job : *job.stages[static_cast<std::size_t>(stage)];
  const std::optional<double> left = RunLeft(run, *state, past, now);
  const std::optional<double> later = StagesLeft(job, stage + 1, past);
  return left && later ? std::optional(*left + *later) : std::nullopt;
}

std::optional<double> GroupTimeLeft(const JobGroup& group, const RunWatch& watch,
                                    const PastRunOf& past) {
  if (!group.Running()) return std::nullopt;
  const std::int64_t now = DateTimeWrapper::CurrentTime();
  int known = 0;
  int unknown = 0;
  double left = 0;
  double passed = 0;  // of those that do not tell and run
  int finished = 0;
  double took = 0;
  group.ReadJobs([&](const JobFile& job) {
    if (const std::int64_t its = job.RunSeconds(); job.status == JobStatus::kFinished && its >= 0) {
      ++finished;
      took += static_cast<double>(its);
    }
    if (HasEnded(job.status)) return;
    const std::optional<double> one = JobTimeLeft(job, watch.StateOf(job.id), past, now);
    ++(one ? known : unknown);
    const bool runs = job.status == JobStatus::kRunning;
    left += one.value_or(runs ? 0 : static_cast<double>(job.pause));
    if (!one && runs) passed += static_cast<double>(job.RunSeconds());
  });
  if (known + unknown == 0) return std::nullopt;
  if (unknown == 0) return left;
  if (finished < kFewestToJudgeBy) return std::nullopt;
  return left + std::max(0.0, unknown * took / finished - passed);
}
