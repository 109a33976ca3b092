#include "record/History.h"

#include <algorithm>
#include <unordered_map>

#include "record/Form.h"
#include "record/Journal.h"
#include "record/RecordFiles.h"
#include "util/files/InputFile.h"

namespace {

// One word that no other run has.
std::string KeyOf(const RunRecord& run) {
  std::string key = std::to_string(run.started) + '/' + std::to_string(run.process.id) + '/' +
                    run.process.mark + '/' + std::to_string(run.stage);
  std::replace(key.begin(), key.end(), ' ', '_');
  return key;
}

}  // namespace

std::string HistoryRecordOf(const RunRecord& run) {
  RunRecord kept = run;
  kept.filesBefore.clear();  // only for who goes on with it
  return KeyOf(run) + ' ' + form::Text(form::Of(kept));
}

std::string_view HistoryKeyOf(std::string_view record) {
  return record.substr(0, record.find(' '));
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

std::vector<RunRecord> ReadHistory(const std::string& path, const std::string& machine) {
  std::vector<RunRecord> runs;
  std::string bytes;
  if (!ReadJournalBytes(path, bytes)) return runs;
  std::vector<std::string> records;
  for (const std::string_view record : ReadJournalText(bytes, {kHistoryKind, machine}).records) {
    records.emplace_back(record);
  }
  DropOldHistory(records);
  for (const std::string& record : records) {
    RunRecord run;
    const std::size_t blank = record.find(' ');
    if (blank == std::string::npos) continue;
    if (form::Take(form::Parsed(std::string_view(record).substr(blank)), run)) {
      runs.push_back(std::move(run));
    }
  }
  return runs;
}
