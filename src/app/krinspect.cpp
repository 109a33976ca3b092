// Prints what the program reads out of the files of a run: decks, solver outputs, result databases.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "core/SettingsAndPaths.h"
#include "d3plot/ptkPostD3plotManager.h"
#include "jobs/DeckEndTime.h"
#include "jobs/DeckScan.h"
#include "jobs/StageDecks.h"
#include "progress/RunCases.h"
#include "record/History.h"
#include "record/RecordFiles.h"
#include "solvers/OutputAnalysis.h"
#include "solvers/SolverKinds.h"
#include "solvers/Verdict.h"
#include "util/files/FileDirWrapper.h"
#include "util/text/CsvField.h"
#include "util/text/PlainText.h"

namespace {

using Json = nlohmann::ordered_json;

constexpr char kUsage[] =
    "Usage: krinspect deck|message|inc|vorel|d3plot FILE [--json]\n"
    "       krinspect progress FOLDER|FILE [--json]\n"
    "       krinspect glstat FILE [--json|--csv]\n"
    "       krinspect history [FILE] [--json|--csv]\n"
    "\n"
    "  deck     what the queue reads from an LS-DYNA deck\n"
    "  message  the report of a message file\n"
    "  inc      the report of an INC job or its _INFO.OUT file\n"
    "  vorel    the report of a Vorel job or its .OUT file\n"
    "  d3plot   nodes, elements and files of a result database\n"
    "  progress how far a run is: of a job's folder, its message file, or an INC or Vorel job\n"
    "  glstat   energies, time steps and more of all states in a glstat file\n"
    "  history  the runs that Kestrun remembers of this computer, the newest last\n"
    "\n"
    "The exit code is 0 only when the file was read.\n";

// A quantity over the states of a run; nothing where a state does not have it.
using Numbers = std::vector<std::optional<double>>;

// What there is to say about a file: keys with one value or with a list; nothing when it is
// unknown.
struct Entry {
  using Value = std::variant<std::monostate, std::string, std::int64_t, std::uint64_t, double, bool,
                             std::vector<std::string>, std::vector<std::int64_t>, Numbers>;
  std::string key;
  Value value;
};

struct Findings {
  std::vector<Entry> entries;
  std::vector<std::string> lines;  // of a report
  bool isReport = false;
};

// The length of the UTF-8 character at the front, 0 when it is none.
std::size_t CharacterLength(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  if (byte(0) < 0x80) return 1;
  const std::size_t length = byte(0) >= 0xF0 ? 4 : byte(0) >= 0xE0 ? 3 : 2;
  if (byte(0) < 0xC2 || byte(0) > 0xF4 || text.size() < length) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return 0;
  }
  const bool overlong = (byte(0) == 0xE0 && byte(1) < 0xA0) || (byte(0) == 0xF0 && byte(1) < 0x90);
  const bool surrogate = byte(0) == 0xED && byte(1) >= 0xA0;
  const bool beyond = byte(0) == 0xF4 && byte(1) >= 0x90;
  return overlong || surrogate || beyond ? 0 : length;
}

// Bytes that are no UTF-8 are taken for single characters of Latin-1.
std::string Utf8(std::string_view text) {
  std::string utf8;
  while (!text.empty()) {
    const std::size_t length = CharacterLength(text);
    if (length == 0) {
      const auto byte = static_cast<unsigned char>(text[0]);
      utf8 += static_cast<char>(0xC0 | byte >> 6);
      utf8 += static_cast<char>(0x80 | (byte & 0x3F));
    } else {
      utf8 += text.substr(0, length);
    }
    text.remove_prefix(length == 0 ? 1 : length);
  }
  return utf8;
}

std::string NumberText(double value) {
  if (std::isnan(value)) return "NaN";
  if (std::isinf(value)) return value < 0 ? "-Infinity" : "Infinity";
  char text[32];
  std::snprintf(text, sizeof text, "%.10g", value);
  return text;
}

struct ToJson {
  Json operator()(const std::string& text) const { return Utf8(text); }
  Json operator()(const std::vector<std::string>& texts) const {
    Json list = Json::array();
    for (const std::string& text : texts) list.push_back(Utf8(text));
    return list;
  }
  Json operator()(const Numbers& numbers) const {
    Json list = Json::array();
    for (const std::optional<double>& number : numbers)
      list.push_back(number ? Json(*number) : Json());
    return list;
  }
  Json operator()(std::monostate) const { return nullptr; }
  template <typename Plain>
  Json operator()(Plain value) const {
    return value;
  }
};

// One key a line. A number that JSON does not know (NaN, infinite) is null.
void PrintJson(const Findings& findings) {
  std::string json;
  const auto add = [&](const std::string& key, const Json& value) {
    json += (json.empty() ? "{\n  " : ",\n  ") + Json(Utf8(key)).dump() + ": " + value.dump();
  };
  for (const Entry& entry : findings.entries) add(entry.key, std::visit(ToJson(), entry.value));
  if (findings.isReport) add("lines", ToJson()(findings.lines));
  json += "\n}\n";
  std::fwrite(json.data(), 1, json.size(), stdout);
}

// What a file says must not steer the terminal.
void PrintLine(std::string line) {
  std::replace_if(
      line.begin(), line.end(),
      [](char c) { return (c >= 0 && c < ' ' && c != '\t') || c == 0x7F; }, '?');
  std::fwrite(line.data(), 1, line.size(), stdout);
  std::fputc('\n', stdout);
}

void PrintText(const Findings& findings) {
  if (findings.isReport) {
    for (std::string line : findings.lines) {
      if (!line.empty() && line.back() == '\n') line.pop_back();
      PrintLine(line);
    }
    return;
  }
  for (const Entry& entry : findings.entries) {
    const std::string head = std::string(entry.key) + ": ";
    if (const auto* texts = std::get_if<std::vector<std::string>>(&entry.value)) {
      for (const std::string& text : *texts) PrintLine(head + text);
    } else if (const auto* numbers = std::get_if<Numbers>(&entry.value)) {
      std::string line = head;
      for (const std::optional<double>& number : *numbers) {
        line += (number ? NumberText(*number) : "-") + " ";
      }
      PrintLine(line);
    } else if (const auto* text = std::get_if<std::string>(&entry.value)) {
      PrintLine(head + *text);
    } else if (const auto* real = std::get_if<double>(&entry.value)) {
      PrintLine(head + NumberText(*real));
    } else if (!std::holds_alternative<std::monostate>(entry.value)) {
      PrintLine(head + std::visit(ToJson(), entry.value).dump());
    }
  }
}

void PrintError(const std::string& message) {
  std::fprintf(stderr, "krinspect: %s\n", message.c_str());
}

bool InspectDeck(const std::string& path, Findings& findings) {
  JobFileDyna job{Settings()};
  job.jobFile = path;
  DeckScanHooks hooks;
  hooks.report = [](const Message& message) { PrintError(message.English()); };
  if (!ScanDeck(job, hooks)) return false;
  const DeckEndTime endTime = FindEndTime(job);
  findings.entries = {
      {"memory_mb", job.deckMemory},
      {"job_id", job.deckIdentifier},
      {"simulation_type", job.simulationType},
      {"calculation_method", job.calculationMethod},
      {"solver_type", static_cast<std::int64_t>(job.solverType)},
      {"first_stage", std::int64_t{job.firstStage}},
      {"keep_deck", job.keepDeck},
      {"case_run", job.caseRun},
      {"end_time", endTime.value ? Entry::Value(*endTime.value) : Entry::Value(endTime.text)},
      {"include", job.includes},
      {"stage", StageDecks(job, hooks.report)},
  };
  return true;
}

bool TakeReport(const std::string& path, const AnalysisReport& report, Findings& findings) {
  findings.isReport = true;
  findings.lines = report.lines;
  if (report.outcome == AnalysisReport::Outcome::kRead) return true;
  PrintError("cannot read " + path);
  return false;
}

bool InspectMessage(const std::string& path, Findings& findings) {
  const AnalysisReport report = AnalyseMessageFile(path);
  if (!TakeReport(path, report, findings)) return false;
  const MessageVerdict verdict = ReadVerdict(path);
  const bool isPlain = verdict.failure.kind == FailureKind::kNone;
  const Failure failure = isPlain ? Failure{FailureKind::kNoNormalEnd} : verdict.failure;
  findings.entries = {
      {"errors", report.errors},
      {"warnings", report.warnings},
      {"cpu_time", report.cpuTime},
      {"how", verdict.normal ? Entry::Value() : Entry::Value(FailureMessage(failure).English())}};
  return true;
}

// The output of a job; a file that is no job is taken for an output itself.
std::string OutputOf(const std::string& path, const TextOutputNames& names,
                     const std::string& jobsOutput) {
  if (EndsInAnyCase(path, std::string(".") + names.jobExtension)) return jobsOutput;
  if (EndsInAnyCase(path, names.outputEnding)) return path;
  return FileDirWrapper::FileExists(jobsOutput) ? jobsOutput : path;
}

bool InspectInc(const std::string& path, Findings& findings) {
  const std::string file = OutputOf(path, JobFileInc::kNames, IncInfoFile(path));
  return TakeReport(file, AnalyseIncInfoFile(file), findings);
}

bool InspectVorel(const std::string& path, Findings& findings) {
  const std::string file = OutputOf(path, JobFileVorel::kNames, VorelOutFile(path));
  return TakeReport(file, AnalyseVorelOutFile(file), findings);
}

bool InspectD3plot(const std::string& path, Findings& findings) {
  ptkPostD3plotManager manager;
  ptkUnstructuredGridManager grids;
  if (!manager.Open(path, grids)) {
    PrintError(path + ": " + manager.Reader().Error().English());
    return false;
  }
  const ptkUnstructuredGrid& grid = grids.Grid();
  const std::vector<FileFamily>& families = manager.Reader().Families();
  std::size_t files = 0;
  for (const FileFamily& family : families) files += family.members.size();
  findings.entries = {
      {"nodes", std::int64_t{grid.NumberOfPoints()}},
      {"elements", std::int64_t{grid.NumberOfCells()}},
      {"solids", std::int64_t{grid.CellsByKind().solids}},
      {"thick_shells", std::int64_t{grid.CellsByKind().thickShells}},
      {"beams", std::int64_t{grid.CellsByKind().beams}},
      {"shells", std::int64_t{grid.CellsByKind().shells}},
      {"families", static_cast<std::int64_t>(families.size())},
      {"files", static_cast<std::int64_t>(files)},
      {"word_size", static_cast<std::int64_t>(manager.Reader().Format().wordSize)},
      {"byte_order", std::string(manager.Reader().Format().ByteOrder())},
  };
  return true;
}

template <typename T>
Entry::Value Known(const std::optional<T>& value) {
  return value ? Entry::Value(*value) : Entry::Value();
}

const char* EndWord(RunEnd end) {
  switch (end) {
    case RunEnd::kNormal:
      return "normal";
    case RunEnd::kStopped:
      return "stopped";
    case RunEnd::kError:
      return "error";
    case RunEnd::kRunning:
      break;
  }
  return "running";
}

bool InspectProgress(const std::string& path, Findings& findings) {
  RunCases run;
  run.TakeFiles(FindCaseFiles(path, CasesBy::kName));
  if (run.Newest().Files().kind == RunFiles::Kind::kNone) {
    PrintError("no output of a run in " + path);
    return false;
  }
  run.Look();
  run.TakeOpenLines();
  std::string folder = path;
  if (!FileDirWrapper::IsFolder(path)) FileDirWrapper::DirOf(path, folder);
  run.SetDeck(EndTimeOfDeck(folder, run.Newest().Message().DeckName()));
  if (!run.HasRead()) {
    PrintError("cannot read " + path);
    return false;
  }
  RunNews news = run.News();
  if (news.secondsLeft) *news.secondsLeft = std::round(*news.secondsLeft * 10) / 10;
  findings.entries = {
      {"cycle", Known(news.cycle)},
      {"time", Known(news.time)},
      {"time_step", Known(news.timeStep)},
      {"end_time", Known(news.endTime)},
      {"percent", Known(news.percent)},
      {"seconds_left", Known(news.secondsLeft)},
      {"controlled_by",
       news.controlledBy.empty() ? Entry::Value() : Entry::Value(news.controlledBy)},
      {"ended", std::string(EndWord(news.ended))},
  };
  return true;
}

bool InspectGlstat(const std::string& path, Findings& findings) {
  constexpr std::size_t kMostValues = std::size_t{1} << 28;
  GlobalStates states(kMostValues);
  GrowingFile file(path);
  if (file.Look(states) == GrowingFile::News::kMissing) {
    PrintError("cannot read " + path);
    return false;
  }
  file.TakeOpenLine(states);
  if (states.Rows() == 0) {
    PrintError("no states in " + path);
    return false;
  }
  const auto numbers = [&](const auto& valueOf) {
    Numbers list(states.Rows());
    for (std::size_t row = 0; row < list.size(); ++row) list[row] = valueOf(row);
    return list;
  };
  std::vector<std::string> controls;
  for (std::size_t row = 0; row < states.Rows(); ++row)
    controls.push_back(states.ControlledBy(row));
  std::vector<std::int64_t> cycles;
  for (std::size_t row = 0; row < states.Rows(); ++row) cycles.push_back(states.Cycle(row));
  findings.entries.push_back({"cycle", std::move(cycles)});
  findings.entries.push_back({"controlled_by", std::move(controls)});
  for (const GlobalStates::Column& column : states.Columns()) {
    std::string key = column.name;
    std::replace(key.begin(), key.end(), ' ', '_');
    findings.entries.push_back({key, numbers([&](std::size_t row) {
                                  return GlobalStates::Has(column, row)
                                             ? std::optional<double>(column.values[row])
                                             : std::nullopt;
                                })});
  }
  return true;
}

std::string CsvCell(const Entry& entry, std::size_t row) {
  if (const auto* numbers = std::get_if<Numbers>(&entry.value)) {
    return (*numbers)[row] ? NumberText(*(*numbers)[row]) : std::string();
  }
  if (const auto* counts = std::get_if<std::vector<std::int64_t>>(&entry.value)) {
    return std::to_string((*counts)[row]);
  }
  const std::string text = CsvField(std::get<std::vector<std::string>>(entry.value)[row]);
  return text.starts_with('"') ? text : '"' + text + '"';
}

// A line a state.
void PrintCsv(const Findings& findings) {
  std::string line;
  for (const Entry& entry : findings.entries) line += (line.empty() ? "" : ",") + CsvField(entry.key);
  PrintLine(line);
  const std::size_t rows =
      std::get<std::vector<std::int64_t>>(findings.entries.front().value).size();
  for (std::size_t row = 0; row < rows; ++row) {
    line.clear();
    for (const Entry& entry : findings.entries) {
      line += (line.empty() ? "" : ",") + CsvCell(entry, row);
    }
    PrintLine(line);
  }
}

struct Command {
  const char* name;
  bool (*inspect)(const std::string& path, Findings& findings);
};

constexpr Command kCommands[] = {{"deck", InspectDeck},     {"message", InspectMessage},
                                 {"inc", InspectInc},       {"vorel", InspectVorel},
                                 {"d3plot", InspectD3plot}, {"progress", InspectProgress},
                                 {"glstat", InspectGlstat}};

// The whole of what Kestrun remembers; a script wants one of the two forms, a person the second.
int PrintHistory(const std::string& file, bool json) {
  const RecordFiles files = RecordFilesIn(SettingsAndPaths::WorkFolderOf(SettingsAndPaths::kTitle));
  const std::string path = file.empty() ? HistoryToRead(files) : file;
  if (!FileDirWrapper::FileExists(path)) {
    PrintError(path + ": no such file");
    return 1;
  }
  JournalText::State state{};
  const std::vector<RunRecord> runs = ReadHistory(path, files.machine, &state);
  if (state == JournalText::State::kForeign || state == JournalText::State::kNewer) {
    PrintError(path + (state == JournalText::State::kNewer ? ": of a later version of Kestrun"
                                                           : ": no history of Kestrun"));
    return 1;
  }
  const std::string text = json ? HistoryJson(runs, NameOfKind) : HistoryCsv(runs, NameOfKind);
  std::fwrite(text.data(), 1, text.size(), stdout);
  const bool isWritten = std::fflush(stdout) == 0 && std::ferror(stdout) == 0;
  const bool isWhole = state == JournalText::State::kWhole;
  if (!isWhole) PrintError(path + ": damaged, not all of its runs can be read");
  return isWritten && isWhole ? 0 : 1;
}

int RefuseUsage() {
  std::fputs(kUsage, stderr);
  return 2;
}

}  // namespace

int main(int argc, char** argv) {
  bool json = false;
  bool csv = false;
  std::vector<std::string> words;
  for (int i = 1; i < argc; ++i) {
    const std::string word = argv[i];
    if (word == "--json") {
      json = true;
    } else if (word == "--csv") {
      csv = true;
    } else if (word == "--help" || word == "-h") {
      std::fputs(kUsage, stdout);
      return 0;
    } else {
      words.push_back(word);
    }
  }
  if (!words.empty() && words[0] == "history" && words.size() <= 2 && !(csv && json)) {
    return PrintHistory(words.size() == 2 ? words[1] : std::string(), json);
  }
  if (words.size() != 2 || (csv && (json || words[0] != "glstat"))) return RefuseUsage();
  for (const Command& command : kCommands) {
    if (words[0] != command.name) continue;
    Findings findings;
    const bool read = command.inspect(words[1], findings);
    // The report of a file that cannot be read says so.
    if (!read && !findings.isReport) return 1;
    if (csv) {
      PrintCsv(findings);
    } else if (json) {
      PrintJson(findings);
    } else {
      PrintText(findings);
    }
    return read && std::fflush(stdout) == 0 && std::ferror(stdout) == 0 ? 0 : 1;
  }
  return RefuseUsage();
}
