#include "ui/monitor/HeadingTexts.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <utility>

#include "ui/dialogs/RunWords.h"
#include "ui/dialogs/StatusCell.h"
#include "ui/fltk/ChartScale.h"
#include "ui/fltk/Theme.h"
#include "ui/text/Encoding.h"
#include "ui/text/ShownValues.h"

namespace {

constexpr std::size_t kMostFindings = 4;
constexpr double kUnsure = 1.5;  // a spread from which on two times are told

// Between two facts of a line.
const std::string kDot = " \xC2\xB7 ";

void Add(std::string& line, const std::string& text) {
  if (!text.empty()) line += (line.empty() ? "" : kDot) + text;
}

std::int64_t Whole(double seconds) {
  constexpr double kMost = 1e12;
  return static_cast<std::int64_t>(std::clamp(seconds, 0.0, kMost));
}

double Seconds(std::int64_t from, std::int64_t until) {
  return static_cast<double>(std::max<std::int64_t>(until - from, 0));
}

std::string Percent(double percent) {
  return std::to_string(static_cast<int>(std::floor(percent)));
}

std::string Size(std::uint64_t bytes) {
  constexpr double kStep = 1024;
  const char* const units[] = {"KB", "MB", "GB", "TB"};
  double size = static_cast<double>(bytes) / kStep;
  std::size_t unit = 0;
  for (; size >= kStep && unit + 1 < std::size(units); ++unit) size /= kStep;
  char text[40];
  std::snprintf(text, sizeof text, "%.*f %s", size < 10 ? 1 : 0, size, units[unit]);
  return text;
}

std::string Left(const RunPicture& picture, const TextTable& texts) {
  const RunNews& news = picture.news;
  if (!news.secondsLeft) return {};
  const double left = *news.secondsLeft;
  const auto duration = [&](double seconds) { return ShownDuration(seconds, texts); };
  std::string text = texts.Format("mon_left", duration(left));
  if (news.spread >= kUnsure) {
    text = texts.Format("mon_left_between", duration(left / news.spread),
                        duration(left * news.spread));
  }
  Add(text, texts.Format("mon_ends", EndWords(static_cast<double>(Whole(left)), texts)));
  return text;
}

// Of a folder, by its files alone.
void TellByFiles(const RunPicture& picture, const TextTable& texts, HeadingTexts& heading) {
  switch (picture.news.ended) {
    case RunEnd::kNormal:
    case RunEnd::kStopped:
      heading.title = texts.Get("mon_run_normal");
      heading.color = Theme::kFinished;
      break;
    case RunEnd::kError:
      heading.title = texts.Get("mon_run_error");
      heading.color = Theme::kAborted;
      break;
    case RunEnd::kRunning:
      heading.title = texts.Get(picture.isRunning ? "mon_run_runs" : "mon_run_cut");
      heading.color = picture.isRunning ? Theme::kRunning : Theme::kWaiting;
      break;
  }
  if (picture.files.kind == RunFiles::Kind::kNone) heading.title = texts.Get("mon_none_folder");
}

void TellByQueue(const MonitoredRun::State& run, const TextTable& texts, HeadingTexts& heading) {
  heading.title = texts.Say(JobStatusWord(run.status)) + HowWords(run.status, run.failure, texts);
  const bool stopped = run.failure.kind == FailureKind::kStopped;
  heading.color = stopped ? Theme::kQueued : StatusColor(run.status);
  if (run.status == JobStatus::kQueued) Add(heading.details, texts.Get("mon_none_queued"));
}

std::string Details(const RunPicture& picture, const TextTable& texts) {
  const RunNews& news = picture.shown;
  std::string line;
  Add(line, CaseWords(news, texts));
  if (news.implicitStep > 0) {
    Add(line, texts.Format("mon_implicit", std::to_string(news.implicitStep),
                           std::to_string(news.iterations)));
  } else if (news.cycle) {
    Add(line, texts.Format("mon_cycle", std::to_string(*news.cycle)));
  }
  if (news.time && news.endTime) {
    Add(line, texts.Format("mon_time_of", ValueText(*news.time), ValueText(*news.endTime)));
  } else if (news.time) {
    Add(line, texts.Format("mon_time", ValueText(*news.time)));
  }
  if (news.timeStep && *news.timeStep > 0) {
    const std::string step = ValueText(*news.timeStep);
    Add(line, news.controlledBy.empty()
                  ? texts.Format("mon_step", step)
                  : texts.Format("mon_step_by", step, ToUi(news.controlledBy)));
  }
  if (picture.bytes > 0) Add(line, texts.Format("mon_results", Size(picture.bytes)));
  return line;
}

}  // namespace

HeadingTexts HeadingOf(const MonitoredRun::State& run, bool isJob, const RunPicture* picture,
                       const TextTable& texts) {
  HeadingTexts heading;
  heading.color = Theme::kMuted;
  // A picture of it is to tell of which run.
  heading.details = run.name.substr(run.name.find_last_of("/\\") + 1);
  if (isJob) {
    TellByQueue(run, texts, heading);
  } else if (picture) {
    TellByFiles(*picture, texts, heading);
  }
  const bool runs = isJob ? run.status == JobStatus::kRunning : picture && picture->isRunning;
  if (picture) {
    const RunNews& news = picture->news;
    heading.percent = news.percent;
    if (runs && news.percent)
      heading.title = texts.Format("mon_percent", heading.title, Percent(*news.percent));
    if (runs) Add(heading.title, Left(*picture, texts));
    Add(heading.details, Details(*picture, texts));
    for (const Message& finding : picture->health) heading.findings.push_back(texts.Say(finding));
  }
  int stoppedAt = kNotStopped;
  if (isJob && run.status == JobStatus::kFinished) stoppedAt = run.stoppedAt;
  if (!isJob && picture) stoppedAt = StoppedAt(picture->news);
  if (stoppedAt != kNotStopped) {
    Add(heading.title, texts.Say(StoppedMessage(stoppedAt)));
    heading.color = Theme::kWaiting;
  }
  if (isJob && run.started > 0) {
    if (run.seconds >= 0) {
      Add(heading.title, texts.Format(runs ? "mon_elapsed" : "mon_took",
                                      ShownDuration(static_cast<double>(run.seconds), texts)));
    }
  } else if (!isJob && picture && picture->news.started && picture->news.lastTold) {
    Add(heading.title,
        texts.Format(
            runs ? "mon_elapsed" : "mon_took",
            ShownDuration(Seconds(*picture->news.started, *picture->news.lastTold), texts)));
  }
  if (isJob && (run.status == JobStatus::kAborted || run.status == JobStatus::kWaiting)) {
    const std::string reason = texts.Say(run.reason);
    if (!reason.empty()) heading.findings.insert(heading.findings.begin(), reason);
  }
  if (isJob && !run.inQueue) heading.findings.push_back(texts.Get("mon_removed"));
  if (heading.findings.size() > kMostFindings) {
    const std::size_t more = heading.findings.size() - kMostFindings + 1;
    heading.findings.resize(kMostFindings - 1);
    heading.findings.push_back(texts.Format("mon_more_findings", std::to_string(more)));
  }
  return heading;
}
