#include "progress/RunProgress.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <future>
#include <system_error>

#include "util/files/FileDirWrapper.h"
#include "util/signals/Mutex.h"

namespace {

// So near its end time a run has reached it: printed times have five digits.
constexpr double kEndNoise = 1e-3;

}  // namespace

int StoppedAt(const RunNews& news) {
  if (news.ended != RunEnd::kStopped) return kNotStopped;
  return news.percent ? static_cast<int>(*news.percent) : kStoppedSomewhere;
}

RunProgress::RunProgress(const RunFiles& files) {
  AddFiles(files);
}

void RunProgress::AddFiles(const RunFiles& files) {
  if (files_.kind == RunFiles::Kind::kNone) files_.kind = files.kind;
  const auto add = [](const std::string& found, std::string& path, std::optional<GrowingFile>& file,
                      GrowingFile::Writing writing) {
    if (found.empty() || !path.empty()) return;
    path = found;
    file.emplace(path, writing);
  };
  add(files.output, files_.output, output_, GrowingFile::Writing::kAppended);
  add(files.glstat, files_.glstat, glstat_, GrowingFile::Writing::kAppended);
  add(files.status, files_.status, statusOut_, GrowingFile::Writing::kWhole);
}

void RunProgress::FollowKeptFile() {
  const std::string kept = files_.output + std::string(kKeptEnding);
  if (!output_ || FileDirWrapper::FileExists(files_.output) || !FileDirWrapper::FileExists(kept)) {
    return;
  }
  files_.output = kept;
  output_->MovedTo(kept);
}

namespace {

// What several threads have read of several files, for one hook.
class SharedProgress {
 public:
  explicit SharedProgress(const RunProgress::Progress& hook) : hook_(hook) {}

  // For the file with this number. Empty when nobody wants to know.
  RunProgress::Progress Of(std::size_t file) {
    if (!hook_) return {};
    return [this, file](std::uint64_t done, std::uint64_t size) {
      const MutexLock lock(mutex_);
      done_[file] = done;
      size_[file] = size;
      goesOn_ = goesOn_ && hook_(done_[0] + done_[1], size_[0] + size_[1]);
      return goesOn_;
    };
  }

 private:
  const RunProgress::Progress& hook_;
  Mutex mutex_;
  std::array<std::uint64_t, 2> done_ KR_GUARDED_BY(mutex_){};
  std::array<std::uint64_t, 2> size_ KR_GUARDED_BY(mutex_){};
  bool goesOn_ KR_GUARDED_BY(mutex_) = true;
};

}  // namespace

bool RunProgress::Look(const Progress& progress) {
  const bool hasMuch = !hasRead_ || stopped_;
  SharedProgress shared(progress);
  std::array<GrowingFile::News, 3> news;
  const auto lookAt = [](std::optional<GrowingFile>& file, LineTaker& taker, const Progress& hook) {
    return file ? file->Look(taker, hook) : GrowingFile::News::kMissing;
  };
  const auto lookAtStates = [&] { news[2] = lookAt(glstat_, states_, shared.Of(1)); };
  // The two big ones at the same time.
  std::future<void> states;
  if (hasMuch && glstat_) {
    try {
      states = std::async(std::launch::async, lookAtStates);
    } catch (const std::system_error&) {
      // One after the other, then.
    }
  }
  const bool isKeyword = files_.kind == RunFiles::Kind::kKeyword;
  news[0] = lookAt(output_, isKeyword ? static_cast<LineTaker&>(message_) : text_, shared.Of(0));
  news[1] = lookAt(statusOut_, status_, {});
  states.valid() ? states.get() : lookAtStates();
  const auto any = [&](GrowingFile::News wanted) {
    return std::find(news.begin(), news.end(), wanted) != news.end();
  };
  stopped_ = any(GrowingFile::News::kStopped);
  const bool hasNews = any(GrowingFile::News::kRead) || stopped_;
  hasRead_ = hasRead_ || hasNews || any(GrowingFile::News::kNone);
  return hasNews;
}

void RunProgress::TakeOpenLines() {
  if (output_ && files_.kind == RunFiles::Kind::kKeyword) output_->TakeOpenLine(message_);
  if (output_ && files_.kind != RunFiles::Kind::kKeyword) output_->TakeOpenLine(text_);
  if (glstat_) glstat_->TakeOpenLine(states_);
}

void RunProgress::ForgetStates() {
  states_.BeginAnew();
  glstat_.reset();
}

std::optional<double> RunProgress::EndTime() const {
  // The run's own word is newer than the deck: a restart or a switch may have moved the end.
  for (const SolverEstimate* told : {&message_.Estimate(), &status_.Estimate()}) {
    if (told->endTime) return told->endTime;
  }
  return deckEndTime_;
}

RunNews RunProgress::News(std::optional<std::int64_t> now) const {
  RunNews news;
  if (files_.kind != RunFiles::Kind::kKeyword) {
    news.ended = text_.End();
    news.started = text_.Started();
    news.lastTold = text_.Ended();
    if (news.ended != RunEnd::kRunning) news.secondsLeft = 0;
    return news;
  }
  news.endTime = EndTime();
  news.event = message_.LastEvent();
  news.implicitStep = message_.ImplicitStep();
  news.iterations = message_.Iterations();
  const std::size_t rows = states_.Rows();
  if (rows > 0) news.controlledBy = states_.ControlledBy(rows - 1);
  if (const ProgressPoint* last = message_.Last()) {
    news.cycle = last->cycle;
    news.time = last->time;
    news.timeStep = last->step;
    news.started = message_.Points().front().clock;
    news.lastTold = last->clock;
  } else if (rows > 0) {
    news.cycle = states_.Cycle(rows - 1);
    const auto value = [&](const char* name) -> std::optional<double> {
      const GlobalStates::Column* column = states_.Find(name);
      if (column == nullptr || !GlobalStates::Has(*column, rows - 1)) return std::nullopt;
      const double number = column->values[rows - 1];
      return std::isfinite(number) ? std::optional(number) : std::nullopt;
    };
    news.time = value("time");
    news.timeStep = value("time step");
  }
  TellEnd(news);
  if (news.ended != RunEnd::kRunning) {
    news.secondsLeft = 0;
  } else if (news.endTime && *news.endTime > 0 && news.lastTold) {
    const auto clock = static_cast<double>(std::max(now.value_or(*news.lastTold), *news.lastTold));
    if (const auto left = message_.Left().At(clock, *news.endTime)) {
      news.secondsLeft = left->seconds;
      news.spread = left->spread;
    }
  }
  news.caseSecondsLeft = news.secondsLeft;
  return news;
}

void RunProgress::TellEnd(RunNews& news) const {
  news.ended = message_.End();
  const bool knowsShare = news.time && news.endTime && *news.endTime > 0;
  if (knowsShare) news.percent = std::clamp(100 * *news.time / *news.endTime, 0.0, 100.0);
  if (news.ended != RunEnd::kNormal) return;
  if (message_.ReachedEnd()) {
    news.percent = 100;
    return;
  }
  if (!knowsShare) return;
  const double missing = *news.endTime - *news.time;
  // A step that is longer than the whole run says nothing.
  const double step = news.timeStep.value_or(0);
  const double noise = std::max(kEndNoise * *news.endTime, step <= *news.endTime ? 2 * step : 0);
  if (missing <= noise) {
    news.percent = 100;
  } else if (*news.time > 0) {
    news.ended = RunEnd::kStopped;
  } else {
    news.percent.reset();  // an eigenvalue analysis, say: it has no time to go through
  }
}
