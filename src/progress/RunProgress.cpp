#include "progress/RunProgress.h"

#include <algorithm>
#include <cmath>

#include "util/files/FileDirWrapper.h"

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

bool RunProgress::LookAt(std::optional<GrowingFile>& file, LineTaker& taker,
                         const Progress& progress) {
  if (!file || stopped_) return false;
  const GrowingFile::News news = file->Look(taker, progress);
  hasRead_ = hasRead_ || news != GrowingFile::News::kMissing;
  stopped_ = news == GrowingFile::News::kStopped;
  return news == GrowingFile::News::kRead || stopped_;
}

bool RunProgress::Look(const Progress& progress) {
  stopped_ = false;
  const bool isKeyword = files_.kind == RunFiles::Kind::kKeyword;
  bool news = isKeyword ? LookAt(output_, message_, progress) : LookAt(output_, text_, progress);
  news = LookAt(statusOut_, status_, progress) || news;
  return LookAt(glstat_, states_, progress) || news;
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
      return column->values[rows - 1];
    };
    news.time = value("time");
    news.timeStep = value("time step");
  }
  TellEnd(news);
  if (news.ended != RunEnd::kRunning) {
    news.secondsLeft = 0;
  } else if (news.endTime && news.lastTold) {
    const auto clock = static_cast<double>(std::max(now.value_or(*news.lastTold), *news.lastTold));
    if (const auto left = message_.Left().At(clock, *news.endTime)) {
      news.secondsLeft = left->seconds;
      news.spread = left->spread;
    }
  }
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
  const double noise = std::max(kEndNoise * *news.endTime, 2 * news.timeStep.value_or(0));
  if (missing <= noise) {
    news.percent = 100;
  } else if (*news.time > 0) {
    news.ended = RunEnd::kStopped;
  } else {
    news.percent.reset();  // an eigenvalue analysis, say: it has no time to go through
  }
}
