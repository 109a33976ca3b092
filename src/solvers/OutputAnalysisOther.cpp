// The reports of INC and Vorel jobs.
#include <algorithm>
#include <array>
#include <string_view>

#include "jobs/JobFile.h"
#include "solvers/OutputAnalysis.h"
#include "solvers/ReportText.h"
#include "util/files/FileDirWrapper.h"
#include "util/files/LineBlocks.h"
#include "util/text/PlainText.h"
#include "util/text/StrWrapper.h"

namespace {

std::string Beside(const std::string& jobFile, const char* ending) {
  std::string folder;
  std::string name;
  FileDirWrapper::DirOf(jobFile, folder);
  FileDirWrapper::FileNameOf(jobFile, name, false);
  return FileDirWrapper::Join(folder, name + ending);
}

// Calls `take` with every line. The report keeps its name line when the file cannot be read.
template <typename Take>
void ReadLines(const std::string& path, const AnalysisHooks& hooks, AnalysisReport& report,
               const Take& take) {
  LineBlocks blocks;
  if (!blocks.Open(path)) return;
  blocks.SetProgress(hooks.progress);
  std::string_view block;
  while (blocks.Next(block)) {
    for (std::size_t position = 0; position < block.size();) take(TakeLine(block, position));
  }
  if (blocks.Stopped()) {
    report.outcome = AnalysisReport::Outcome::kEnded;
  } else if (!blocks.Failed()) {
    report.outcome = AnalysisReport::Outcome::kRead;
  }
}

// The dates, times and errors of a Vorel output.
class VorelScan {
 public:
  void TakeLine(std::string_view line) {
    if (const auto text = ValueBehind(line, kDate); !text.empty()) dates_.Add(text);
    if (const auto text = ValueBehind(line, kTime); !text.empty()) times_.Add(text);
    if (Holds(line, "ERROR")) errors_.Add(Trimmed(line));
  }

  void Append(const AnalysisHooks& hooks, std::vector<std::string>& lines) const {
    // A run that has not ended has written its start only.
    if (dates_.count > 0 && times_.count > 1) {
      const Message elapsed = ElapsedText(dates_.first, times_.first, dates_.last, times_.last);
      lines.push_back(Said(hooks, Message(MessageId::kReportTotalTime)) + Said(hooks, elapsed));
    }
    AppendLines(errors_, hooks, lines);
  }

 private:
  static constexpr std::string_view kDate = "D A T E (MM/DD/YY):";
  static constexpr std::string_view kTime = "TIME(HH:MM:SS:.01):";

  // First and last of a kind: those of the run's begin and end, whatever stands between.
  struct Stamps {
    void Add(std::string_view text) {
      last = text;
      if (count++ == 0) first = last;
    }
    std::string first;
    std::string last;
    std::int64_t count = 0;
  };

  // Both labels may stand in one line.
  static std::string_view ValueBehind(std::string_view line, std::string_view label) {
    const std::size_t at = line.find(label);
    if (at == std::string_view::npos) return {};
    line.remove_prefix(at + label.size());
    line = line.substr(0, std::min(line.find(kDate), line.find(kTime)));
    constexpr std::size_t kLongest = 64;
    return Trimmed(line).substr(0, kLongest);
  }

  Stamps dates_;
  Stamps times_;
  GatheredLines errors_;
};

// The first three numbers of a text.
std::array<std::int64_t, 3> Numbers(const std::string& text, char separator) {
  std::vector<std::string> pieces;
  StrWrapperTxt::SeparateString(text, pieces, separator);
  std::array<std::int64_t, 3> numbers{};
  for (std::size_t i = 0; i < numbers.size() && i < pieces.size(); ++i) {
    numbers[i] = StrWrapperTxt::LeadingInt(pieces[i]);
  }
  return numbers;
}

std::array<std::int64_t, 3> ClockNumbers(const std::string& time) {
  std::array<std::int64_t, 3> numbers = Numbers(time, ':');
  if (Holds(time, "pm")) numbers[0] += 12;
  return numbers;
}

}  // namespace

AnalysisReport NameOfOutput(const std::string& path, const AnalysisHooks& hooks) {
  AnalysisReport report;
  report.lines.push_back(Said(hooks, Message(MessageId::kReportFileName, path)));
  return report;
}

std::string IncInfoFile(const std::string& jobFile) {
  return Beside(jobFile, JobFileInc::kNames.outputEnding);
}

std::string VorelOutFile(const std::string& jobFile) {
  return Beside(jobFile, JobFileVorel::kNames.outputEnding);
}

AnalysisReport AnalyseIncInfo(const std::string& jobFile, JobStatus status,
                              const AnalysisHooks& hooks) {
  const std::string infoFile = IncInfoFile(jobFile);
  if (status != JobStatus::kFinished) return NameOfOutput(infoFile, hooks);
  return AnalyseIncInfoFile(infoFile, hooks);
}

AnalysisReport AnalyseVorelOut(const std::string& jobFile, const AnalysisHooks& hooks) {
  return AnalyseVorelOutFile(VorelOutFile(jobFile), hooks);
}

AnalysisReport AnalyseIncInfoFile(const std::string& infoFile, const AnalysisHooks& hooks) {
  constexpr std::string_view kTotal = "THE TOTAL TIME";
  constexpr std::string_view kAbout = "ABOUT";
  AnalysisReport report = NameOfOutput(infoFile, hooks);
  GatheredLines times;
  ReadLines(infoFile, hooks, report, [&](std::string_view line) {
    const std::size_t about = line.find(kAbout);
    if (about == std::string_view::npos || !Holds(line, kTotal)) return;
    times.AddWords(Said(hooks, Message(MessageId::kReportTotalTime)));
    times.Add(line.substr(about + kAbout.size()));
    times.Add("");
  });
  if (report.outcome == AnalysisReport::Outcome::kEnded) {
    report.lines.clear();
  } else {
    AppendLines(times, hooks, report.lines);
  }
  return report;
}

AnalysisReport AnalyseVorelOutFile(const std::string& outFile, const AnalysisHooks& hooks) {
  AnalysisReport report = NameOfOutput(outFile, hooks);
  VorelScan scan;
  ReadLines(outFile, hooks, report, [&](std::string_view line) { scan.TakeLine(line); });
  if (report.outcome == AnalysisReport::Outcome::kEnded) {
    report.lines.clear();
  } else {
    scan.Append(hooks, report.lines);
  }
  return report;
}

Message ElapsedText(const std::string& startDate, const std::string& startTime,
                    const std::string& endDate, const std::string& endTime) {
  const auto [startMonth, startDay, startYear] = Numbers(startDate, '/');
  const auto [endMonth, endDay, endYear] = Numbers(endDate, '/');
  const auto [startHour, startMinute, startSecond] = ClockNumbers(startTime);
  const auto [endHour, endMinute, endSecond] = ClockNumbers(endTime);

  const std::int64_t days =
      ((endYear - startYear) * 12 - startMonth + endMonth) * 30 - startDay + endDay;
  std::int64_t hours = days * 24 - startHour + endHour;
  std::int64_t minutes = endMinute - startMinute;
  std::int64_t seconds = endSecond - startSecond;
  if (seconds < 0) {
    seconds += 60;
    --minutes;
  }
  if (minutes < 0) {
    minutes += 60;
    --hours;
  }
  return Message(MessageId::kReportElapsed, hours, minutes, seconds);
}
