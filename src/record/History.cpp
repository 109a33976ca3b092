#include "record/History.h"

#include <algorithm>
#include <unordered_map>

#include "record/Form.h"
#include "record/RecordFiles.h"
#include "util/text/CsvField.h"
#include "util/text/DateTimeWrapper.h"

namespace {

std::string LocalTime(std::int64_t seconds) {
  std::tm time{};
  std::string text;
  if (seconds != 0 && DateTimeWrapper::LocalTime(seconds, &time)) {
    DateTimeWrapperStr::DateTimeString(&time, text);
  }
  return text;
}

template <typename Number>
std::string Known(const std::optional<Number>& number) {
  return number ? std::to_string(*number) : std::string();
}

// A percentage, or a word where none is known; empty for a run that reached its end time.
std::string StopCell(int stoppedAt) {
  if (stoppedAt == kNotStopped) return {};
  if (stoppedAt == kStoppedSomewhere) return "early";
  return stoppedAt < 0 ? "unknown" : std::to_string(stoppedAt);
}

}  // namespace

std::string HistoryName(const RunRecord& run) {
  std::string name = std::to_string(run.started) + '/' + std::to_string(run.process.id) + '/' +
                     run.process.mark + '/' + std::to_string(run.stage) + '/' + run.token;
  std::replace(name.begin(), name.end(), ' ', '_');
  return name;
}

std::string HistoryRecordOf(const RunRecord& run) {
  RunRecord kept = run;
  kept.filesBefore.clear();  // only for who goes on with it
  return HistoryName(run) + ' ' + form::Text(form::Of(kept));
}

std::string_view HistoryKeyOf(std::string_view record) {
  return record.substr(0, record.find(' '));
}

std::optional<RunRecord> RunOfHistoryRecord(std::string_view record) {
  RunRecord run;
  const std::size_t blank = record.find(' ');
  if (blank == std::string_view::npos) return std::nullopt;
  if (!form::Take(form::Parsed(record.substr(blank)), run)) return std::nullopt;
  return run;
}

void DropOldHistory(std::vector<std::string>& records, std::size_t most) {
  std::unordered_map<std::string, std::size_t> places;
  std::vector<std::string> kept;
  for (std::string& record : records) {
    const auto [place, isNew] = places.emplace(HistoryKeyOf(record), kept.size());
    if (isNew) {
      kept.push_back(std::move(record));
    } else {
      kept[place->second] = std::move(record);
    }
  }
  if (kept.size() > most) {
    kept.erase(kept.begin(), kept.end() - static_cast<std::ptrdiff_t>(most));
  }
  records = std::move(kept);
}

std::vector<RunRecord> ReadHistory(const std::string& path, const std::string& machine,
                                   JournalText::State* state) {
  std::vector<RunRecord> runs;
  std::string bytes;
  JournalText journal;
  journal.state = JournalText::State::kForeign;
  if (ReadJournalBytes(path, bytes)) journal = ReadJournalText(bytes, {kHistoryKind, machine});
  if (state != nullptr) *state = journal.state;
  std::vector<std::string> records(journal.records.begin(), journal.records.end());
  DropOldHistory(records);
  for (const std::string& record : records) {
    if (std::optional<RunRecord> run = RunOfHistoryRecord(record)) runs.push_back(std::move(*run));
  }
  return runs;
}

std::string HistoryJson(const std::vector<RunRecord>& runs, const SolverNames& solverName) {
  form::Json list = form::Json::array();
  for (const RunRecord& run : runs) {
    form::Json json = form::Of(run);
    json["solver"] = form::Of(solverName(run.solver));
    json["verdict"] = JobStatusWord(run.verdict).English();
    if (!run.reason.Empty()) json["reason"] = form::Of(run.reason.English());
    if (run.failure != Failure()) json["how"] = FailureMessage(run.failure).English();
    list.push_back(std::move(json));
  }
  return list.dump(1, ' ', false, form::Json::error_handler_t::replace) + '\n';
}

std::string HistoryCsv(const std::vector<RunRecord>& runs, const SolverNames& solverName) {
  std::string text =
      "started,ended,seconds,verdict,exit,file,restart,folder,program,cpus,memory_mb,errors,"
      "warnings,nodes,elements,message_file,reason,stopped_at,how,solver\n";
  for (const RunRecord& run : runs) {
    text += CsvLine({LocalTime(run.started),
                     LocalTime(run.ended),
                     Known(run.Took(run.started, run.ended)),
                     JobStatusWord(run.verdict).English(),
                     Known(run.exitCode),
                     run.jobFile,
                     run.restartFile,
                     run.folder,
                     run.program,
                     std::to_string(run.cpus),
                     std::to_string(run.memory),
                     Known(run.errors),
                     Known(run.warnings),
                     Known(run.nodes),
                     Known(run.elements),
                     run.messageFile,
                     run.reason.English(),
                     StopCell(run.stoppedAt),
                     FailureMessage(run.failure).English(),
                     solverName(run.solver)});
  }
  return text;
}
