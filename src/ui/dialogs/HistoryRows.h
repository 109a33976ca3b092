// The runs of the past as rows of texts, sorted and filtered.
#ifndef KR_UI_DIALOGS_HISTORYROWS_H
#define KR_UI_DIALOGS_HISTORYROWS_H

#include <array>
#include <cstddef>
#include <set>
#include <string>
#include <vector>

#include "runs/RunRecord.h"
#include "ui/text/TextTable.h"

enum class HistoryColumn {
  kWhen,
  kJob,
  kFolder,
  kSolver,
  kTook,
  kVerdict,
  kReason,
  kCpus,
  kMemory,
  kNodes,
  kElements
};
inline constexpr std::size_t kHistoryColumns = 11;

// Running without a process, as a crash leaves it, is unknown.
enum class HistoryVerdict { kFinished, kAborted, kRunning, kUnknown };
inline constexpr std::size_t kHistoryVerdicts = 4;

struct HistoryRow {
  RunRecord run;
  HistoryVerdict verdict = HistoryVerdict::kUnknown;
  std::array<std::string, kHistoryColumns> cells;  // UTF-8
  std::string path;                                // of its files, in lines; UTF-8
  std::string searched;                            // all of it, folded

  const std::string& Cell(HistoryColumn column) const {
    return cells[static_cast<std::size_t>(column)];
  }
};

// Looks for the processes of the runs that have not ended. Any thread that has the texts for
// itself.
std::vector<HistoryRow> HistoryRowsOf(std::vector<RunRecord> runs, const TextTable& texts);

// What is shown of the rows, and in which order.
struct HistoryView {
  HistoryColumn sortedBy = HistoryColumn::kWhen;
  bool descending = true;
  std::string words;  // all of them, between blanks, are in a row; case does not matter; UTF-8
  std::set<HistoryVerdict> verdicts;  // none: all
};

// The places of the rows to show; rows that are equal stand as they ran, the newest first.
std::vector<std::size_t> ShownRows(const std::vector<HistoryRow>& rows, const HistoryView& view);

#endif
