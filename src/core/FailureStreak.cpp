#include "core/FailureStreak.h"

namespace {

constexpr std::int64_t kSoon = 60;  // seconds

}  // namespace

void FailureStreak::Take(const JobFile& job) {
  const Failure failure = job.HowFailed();
  const bool failed = job.status == JobStatus::kAborted && failure.kind != FailureKind::kNone &&
                      failure.kind != FailureKind::kStopped;
  if (!failed || job.started == 0 || job.RunSeconds() >= kSoon) {
    *this = {};
    return;
  }
  count_ = failure == failure_ ? count_ + 1 : 1;
  failure_ = failure;
  const Message reason = job.RunMessage();
  const bool tellsMore = failure.kind == FailureKind::kCannotStart && !reason.Empty();
  reason_ = tellsMore ? reason : FailureMessage(failure);
}
