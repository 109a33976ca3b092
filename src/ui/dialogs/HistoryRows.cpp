#include "ui/dialogs/HistoryRows.h"

#include <algorithm>
#include <cstdint>
#include <tuple>
#include <utility>

#include "solvers/SolverKinds.h"
#include "ui/dialogs/RunWords.h"
#include "ui/fltk/CellDrawing.h"
#include "ui/text/Encoding.h"
#include "ui/text/FileText.h"
#include "ui/text/ShownValues.h"
#include "ui/text/WordFilter.h"
#include "util/process/ProcessIdentity.h"

namespace {

HistoryVerdict VerdictOf(const RunRecord& run) {
  if (run.verdict == JobStatus::kFinished) return HistoryVerdict::kFinished;
  if (run.verdict == JobStatus::kAborted) return HistoryVerdict::kAborted;
  return Runs(run.process) ? HistoryVerdict::kRunning : HistoryVerdict::kUnknown;
}

// -1: not known.
std::int64_t SecondsOf(const RunRecord& run) {
  return run.Took(run.started, run.ended).value_or(-1);
}

std::string Known(std::int64_t number) {
  return number < 0 ? CellDrawing::kNothing : std::to_string(number);
}

HistoryRow RowOf(RunRecord run, const TextTable& texts) {
  HistoryRow row;
  const auto set = [&row](HistoryColumn column, std::string text) {
    row.cells[static_cast<std::size_t>(column)] = std::move(text);
  };
  row.verdict = VerdictOf(run);
  const std::int64_t seconds = SecondsOf(run);
  set(HistoryColumn::kWhen, ShownMinute(run.started));
  set(HistoryColumn::kJob, ShownJob(run.jobFile, run.restartFile));
  set(HistoryColumn::kFolder, ToUi(run.folder));
  set(HistoryColumn::kSolver, RowOfKind(run.solver).name);
  set(HistoryColumn::kTook,
      seconds < 0 ? CellDrawing::kNothing : ShownDuration(static_cast<double>(seconds), texts));
  std::string verdict = texts.Get("ui_past_unknown");
  if (row.verdict != HistoryVerdict::kUnknown) {
    verdict = texts.Say(JobStatusWord(run.verdict)) + HowWords(run.verdict, run.failure, texts);
    if (run.verdict == JobStatus::kFinished && run.stoppedAt != kNotStopped)
      verdict += " \xC2\xB7 " + texts.Say(StoppedMessage(run.stoppedAt));
  }
  set(HistoryColumn::kVerdict, verdict);
  set(HistoryColumn::kReason, texts.Say(run.reason));
  set(HistoryColumn::kCpus, Known(run.cpus > 0 ? run.cpus : -1));
  set(HistoryColumn::kMemory, Known(run.memory > 0 ? static_cast<std::int64_t>(run.memory) : -1));
  set(HistoryColumn::kNodes, Known(run.nodes.value_or(-1)));
  set(HistoryColumn::kElements, Known(run.elements.value_or(-1)));
  row.path = ShownPath(run.jobFile, run.restartFile, texts);
  std::string all = row.path;
  for (const std::string& cell : row.cells) all += '\n' + cell;
  row.searched = Folded(all);
  row.run = std::move(run);
  return row;
}

// What a row is sorted by where that is a number.
std::int64_t NumberOf(const HistoryRow& row, HistoryColumn column) {
  switch (column) {
    case HistoryColumn::kTook:
      return SecondsOf(row.run);
    case HistoryColumn::kVerdict:
      return static_cast<std::int64_t>(row.verdict);
    case HistoryColumn::kCpus:
      return row.run.cpus;
    case HistoryColumn::kMemory:
      return static_cast<std::int64_t>(row.run.memory);
    case HistoryColumn::kNodes:
      return row.run.nodes.value_or(-1);
    case HistoryColumn::kElements:
      return row.run.elements.value_or(-1);
    default:
      return 0;
  }
}

bool IsText(HistoryColumn column) {
  return column == HistoryColumn::kJob || column == HistoryColumn::kFolder ||
         column == HistoryColumn::kSolver || column == HistoryColumn::kReason;
}

}  // namespace

std::vector<HistoryRow> HistoryRowsOf(std::vector<RunRecord> runs, const TextTable& texts) {
  std::vector<HistoryRow> rows;
  rows.reserve(runs.size());
  for (RunRecord& run : runs) rows.push_back(RowOf(std::move(run), texts));
  return rows;
}

std::vector<std::size_t> ShownRows(const std::vector<HistoryRow>& rows, const HistoryView& view) {
  const WordFilter filter(view.words);
  struct Key {
    std::string text;
    std::int64_t number = 0;
    std::int64_t started = 0;
    std::size_t place = 0;
  };
  std::vector<Key> keys;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const HistoryRow& row = rows[i];
    if (!view.verdicts.empty() && !view.verdicts.contains(row.verdict)) continue;
    if (!filter.Matches(row.searched)) continue;
    const bool isText = IsText(view.sortedBy);
    keys.push_back({isText ? NaturalKey(Folded(row.Cell(view.sortedBy))) : std::string(),
                    NumberOf(row, view.sortedBy), row.run.started, i});
  }
  std::sort(keys.begin(), keys.end(), [&view](const Key& a, const Key& b) {
    const auto of = [](const Key& key) { return std::tie(key.text, key.number); };
    if (of(a) != of(b)) return view.descending ? of(b) < of(a) : of(a) < of(b);
    const bool byTime = view.sortedBy == HistoryColumn::kWhen;
    const bool newestFirst = view.descending || !byTime;
    const auto when = [](const Key& key) { return std::pair(key.started, key.place); };
    return newestFirst ? when(b) < when(a) : when(a) < when(b);
  });
  std::vector<std::size_t> places;
  places.reserve(keys.size());
  for (const Key& key : keys) places.push_back(key.place);
  return places;
}
