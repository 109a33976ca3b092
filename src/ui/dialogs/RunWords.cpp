#include "ui/dialogs/RunWords.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

#include "ui/text/Encoding.h"
#include "ui/text/ShownValues.h"
#include "util/text/DateTimeWrapper.h"

namespace {

const std::string kDot = " \xC2\xB7 ";

// In the order of HealthCheck.
constexpr std::array kHealthKeys = {"run_silent", "run_step_low",   "run_energy", "run_hourglass",
                                    "run_mass",   "run_not_finite", "run_disk"};
static_assert(kHealthKeys.size() == static_cast<std::size_t>(HealthCheck::kDisk) + 1);

const char* KeyOf(HealthCheck check) {
  return kHealthKeys[static_cast<std::size_t>(check)];
}

// Of what was found the newest says the most.
std::string HealthWord(const RunState& state, const TextTable& texts) {
  return state.health.empty() ? std::string() : texts.Get(KeyOf(state.health.back().check));
}

std::string Short(double value, const char* format = "%.4g") {
  char text[48];
  std::snprintf(text, sizeof text, format, value);
  return text;
}

// 12,000
std::string Grouped(std::int64_t number) {
  std::string text = std::to_string(number);
  for (auto at = static_cast<std::ptrdiff_t>(text.size()) - 3; at > 0; at -= 3) {
    text.insert(static_cast<std::size_t>(at), ",");
  }
  return text;
}

std::string Bytes(std::uint64_t bytes) {
  constexpr std::array kUnits = {"KB", "MB", "GB", "TB"};
  double value = static_cast<double>(bytes) / 1024;
  std::size_t unit = 0;
  for (; value >= 1000 && unit + 1 < kUnits.size(); ++unit) value /= 1024;
  return Short(value, value < 10 && unit > 0 ? "%.1f " : "%.0f ") + kUnits[unit];
}

// Down, so that 100 means the end.
int Percent(const RunNews& news) {
  return static_cast<int>(*news.percent);
}

// What the figures of a run say.
void AddNews(const RunNews& news, const TextTable& texts, std::vector<std::string>& lines) {
  const std::string which = CaseWords(news, texts);
  if (!which.empty()) lines.push_back(which);
  if (news.time && news.endTime && *news.endTime > 0) {
    const double percent = std::clamp(100 * *news.time / *news.endTime, 0.0, 100.0);
    lines.push_back(texts.Format("run_time_of", Short(*news.time), Short(*news.endTime),
                                 std::to_string(static_cast<int>(percent)) + "%"));
  } else if (news.time) {
    lines.push_back(texts.Format("run_time", Short(*news.time)));
  }
  if (news.cycle) lines.push_back(texts.Format("run_cycle", Grouped(*news.cycle)));
  if (news.implicitStep > 0) {
    lines.push_back(texts.Format("run_implicit", std::to_string(news.implicitStep),
                                 std::to_string(news.iterations)));
  }
  if (news.timeStep && *news.timeStep > 0) {
    const std::string step = Short(*news.timeStep, "%.3g");
    lines.push_back(news.controlledBy.empty()
                        ? texts.Format("run_step", step)
                        : texts.Format("run_step_by", step, ToUi(news.controlledBy)));
  }
}

void AddUse(const RunState& state, const TextTable& texts, std::vector<std::string>& lines) {
  std::string line;
  const auto add = [&line](const std::string& words) {
    line += (line.empty() ? "" : kDot) + words;
  };
  if (state.run.cpus > 0) add(texts.Format("run_cpus", std::to_string(state.run.cpus)));
  if (state.use.processors) {
    add(texts.Format("run_processor", Short(100 * *state.use.processors, "%.0f") + "%"));
  }
  if (state.use.memory) add(texts.Format("run_memory", Bytes(*state.use.memory)));
  if (!line.empty()) lines.push_back(line);
  if (state.use.results > 0) {
    lines.push_back(texts.Format("run_results", Bytes(state.use.results)));
  }
}

void AddTimes(const JobFile& job, const RunState* running, const TextTable& texts,
              std::vector<std::string>& lines) {
  if (job.started == 0) return;
  const auto elapsed = static_cast<double>(std::max<std::int64_t>(job.RunSeconds(), 0));
  lines.push_back(texts.Format(HasEnded(job.status) ? "run_started_took" : "run_started",
                               ShownMoment(job.started, texts), ShownDuration(elapsed, texts)));
  if (running == nullptr || !running->news.secondsLeft) return;
  const double left = *running->news.secondsLeft;
  lines.push_back(texts.Format("run_ends", EndWords(left, texts),
                               ShownDuration(left, texts, running->news.spread)));
}

std::string StoppedWords(int stoppedAt, const TextTable& texts) {
  return texts.Say(StoppedMessage(stoppedAt));
}

}  // namespace

std::string CaseWords(const RunNews& news, const TextTable& texts) {
  if (news.caseNumber == 0) return {};
  const std::string number = std::to_string(news.caseNumber);
  if (news.cases == 0) return texts.Format("run_case", number);
  return texts.Format("run_case_of", number, std::to_string(news.cases));
}

std::string EndWords(double secondsLeft, const TextTable& texts) {
  const std::int64_t now = DateTimeWrapper::CurrentTime();
  return ShownMoment(now + static_cast<std::int64_t>(secondsLeft), texts);
}

std::string HowWords(JobStatus status, const Failure& failure, const TextTable& texts) {
  if (status != JobStatus::kAborted || failure.kind == FailureKind::kNone) return {};
  return kDot + texts.Say(FailureMessage(failure));
}

StatusShown ShownStatus(const JobFile& job, const std::optional<RunState>& state,
                        const TextTable& texts) {
  StatusShown shown;
  shown.status = job.status;
  const std::string word = texts.Say(JobStatusWord(job.status));
  if (job.status == JobStatus::kFinished && job.StoppedAt() != kNotStopped) {
    shown.marked = true;
    const std::string full = word + kDot + StoppedWords(job.StoppedAt(), texts);
    const bool known = job.StoppedAt() >= 0;
    const std::string at = known ? std::to_string(job.StoppedAt()) + "%" : "";
    shown.words = {full};
    if (known) shown.words.push_back(word + kDot + texts.Format("run_stopped_at", at));
    if (known) shown.words.push_back(word + " " + at);
    const bool early = job.StoppedAt() == kStoppedSomewhere;
    if (!known) {
      shown.words.push_back(word + kDot +
                            texts.Get(early ? "run_stopped_early" : "run_stop_unknown"));
    }
    shown.words.push_back(word);
    return shown;
  }
  shown.words = {word};
  const std::string how = HowWords(job.status, job.HowFailed(), texts);
  if (!how.empty()) {
    shown.stopped = job.HowFailed().kind == FailureKind::kStopped;
    // Where both have no room the colour and the icon tell that it was aborted.
    shown.words = {word + how, how.substr(kDot.size()), word};
  }
  if (job.status != JobStatus::kRunning || !state || !state->running) return shown;
  const RunNews& news = state->news;
  std::string text = word;
  if (state->run.stage >= 0 && !job.stages.empty()) {
    text += " " + std::to_string(state->run.stage + 1) + "/" + std::to_string(job.stages.size());
    if (news.percent) text += ",";
  }
  if (news.percent) {
    shown.share = *news.percent / 100;
    text += " " + std::to_string(Percent(news)) + "%";
  }
  shown.words = {text, word};
  const std::string health = HealthWord(*state, texts);
  if (!health.empty()) {
    shown.marked = true;
    shown.words = {text + kDot + health, word + kDot + health, text, word};
  }
  if (news.percent && news.secondsLeft) {
    const std::string left = ShownDuration(*news.secondsLeft, texts, news.spread);
    const std::string rest = health.empty() ? "" : kDot + health;
    shown.words.insert(shown.words.begin(), text + kDot + left + rest);
  }
  return shown;
}

std::string RunTip(const JobFile& job, const std::optional<RunState>& state,
                   const TextTable& texts) {
  std::vector<std::string> lines;
  const bool running = job.status == JobStatus::kRunning && state && state->running;
  if (running) {
    for (const HealthFinding& finding : state->health) {
      lines.push_back("! " + texts.Say(finding.message));
    }
    if (state->run.stage >= 0 && !job.stages.empty()) {
      lines.push_back(texts.Format("run_stage", std::to_string(state->run.stage + 1),
                                   std::to_string(job.stages.size())));
    }
    AddNews(state->news, texts, lines);
  }
  if (job.status == JobStatus::kFinished && job.StoppedAt() != kNotStopped) {
    lines.push_back("! " + StoppedWords(job.StoppedAt(), texts));
  }
  const Failure failure = job.HowFailed();
  if (job.status == JobStatus::kAborted && failure.kind != FailureKind::kStopped) {
    const std::string how = texts.Say(FailureMessage(failure));
    if (!how.empty()) lines.push_back("! " + how);
  }
  if (job.status == JobStatus::kRunning || HasEnded(job.status)) {
    AddTimes(job, running ? &*state : nullptr, texts, lines);
  }
  if (running) AddUse(*state, texts, lines);
  std::string tip;
  for (const std::string& line : lines) tip += (tip.empty() ? "" : "\n") + line;
  return tip;
}
