// Every run that there was, the newest last.
#ifndef KR_RECORD_HISTORY_H
#define KR_RECORD_HISTORY_H

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "record/Journal.h"
#include "runs/RunRecord.h"

// More are dropped, the oldest first.
inline constexpr std::size_t kMostHistory = 10000;

// One word that no other run has.
std::string HistoryName(const RunRecord& run);

// A run is written down when it begins and again when it has ended: of records with one key the
// last one counts.
std::string HistoryRecordOf(const RunRecord& run);
std::string_view HistoryKeyOf(std::string_view record);

// Nothing when it is no record of a run.
std::optional<RunRecord> RunOfHistoryRecord(std::string_view record);

// The newest so many of the records, each run once, in the order in which they began.
void DropOldHistory(std::vector<std::string>& records, std::size_t most = kMostHistory);

// The runs of the file, which may be in use; empty when there is none or it cannot be believed.
// Changes nothing. `state`, unless it is null, is what the file is; kForeign too when it cannot be
// read. Any thread.
std::vector<RunRecord> ReadHistory(const std::string& path, const std::string& machine,
                                   JournalText::State* state = nullptr);

// What a solver of the kind is called.
using SolverNames = std::function<std::string(SolverKind)>;

// For scripts. Texts that are no UTF-8 are taken for Latin-1.
std::string HistoryJson(const std::vector<RunRecord>& runs, const SolverNames& solverName);
// A line of titles, then one a run: times in local time, seconds between them, commas between
// fields, which stand in double quotes where they have to.
std::string HistoryCsv(const std::vector<RunRecord>& runs, const SolverNames& solverName);

#endif
