#include "core/HandOverFormat.h"

#include <algorithm>
#include <functional>
#include <map>

#include "core/HandOverFile.h"
#include "core/SmallTextFile.h"
#include "util/files/FileDirWrapper.h"
#include "util/text/StrWrapper.h"

namespace {

constexpr std::size_t kLongestLine = 65536;
// Of one file: each job of a record has all its texts.
constexpr std::size_t kMostJobBytes = 32 * 1024 * 1024;
constexpr std::size_t kMostRemarks = 100;
constexpr char kRecord[] = "#krjob";

struct Line {
  std::string key;
  std::string value;
  bool hasEquals = false;
};

Line SplitLine(const std::string& text) {
  const std::size_t equals = text.find('=');
  if (equals == std::string::npos) return {text, {}, false};
  return {text.substr(0, equals), text.substr(equals + 1), true};
}

// A record while its lines are read.
struct Record {
  JobRequest job;
  std::vector<std::string> paths;
};

class Reader {
 public:
  explicit Reader(HandOverOrder& order) : order_(order) {}

  void Take(const std::string& text);
  void SkipRecord();
  void EndRecord();
  void Remark(Message remark);

 private:
  using Effect = void (Reader::*)(const std::string& value);
  static const std::map<std::string, Effect>& SettingsKeys();
  static const std::map<std::string, Effect>& JobKeys();

  void SetMpp(const std::string& value) { Set().use_mpp = value == "1"; }
  void SetMpiParam(const std::string& value) { Set().mpi_param = value; }
  void SetMppParam(const std::string& value) { Set().mpp_param = value; }
  void SetGroup(const std::string& value);
  void SetSolverMode(const std::string& value);
  void SetSingleCpu(const std::string& value);

  bool SetKind(const Line& line);
  void SetPause(const std::string& value) { Job().pause = StrWrapperTxt::LeadingInt(value); }
  void SetMemory(const std::string& value) { Job().memory = StrWrapperTxt::LeadingUnsigned(value); }
  void SetCpuCount(const std::string& value);
  void SetInput(const std::string& value) { Job().inputFile = value; }
  void SetRestart(const std::string& value) { Job().restartFile = value; }
  void SetForce(const std::string& value);
  void SetDump(const std::string& value);

  Settings& Set() { return order_.settings; }
  JobRequest& Job() { return record_->job; }
  void BeginRecord();

  HandOverOrder& order_;
  std::optional<Record> record_;
  bool skips_ = false;  // the lines of a record that is not valid
  std::size_t jobBytes_ = 0;
  std::size_t remarks_ = 0;
};

const std::map<std::string, Reader::Effect>& Reader::SettingsKeys() {
  static const std::map<std::string, Effect> keys = {
      {"#mpp", &Reader::SetMpp},
      {"#mpi_param", &Reader::SetMpiParam},
      {"#mpp_param", &Reader::SetMppParam},
      {"#group", &Reader::SetGroup},
      {"#solver", &Reader::SetSolverMode},
      {"#single_cpu", &Reader::SetSingleCpu},
  };
  return keys;
}

const std::map<std::string, Reader::Effect>& Reader::JobKeys() {
  static const std::map<std::string, Effect> keys = {
      {"#pause_time", &Reader::SetPause},
      {"memory", &Reader::SetMemory},
      {"ncpu", &Reader::SetCpuCount},
      {"i", &Reader::SetInput},
      {"r", &Reader::SetRestart},
      {"s", &Reader::SetForce},
      {"d", &Reader::SetDump},
  };
  return keys;
}

void Reader::Take(const std::string& text) {
  if (text.find_first_not_of(" \t") == std::string::npos) return;
  const Line line = SplitLine(text);
  if (line.key == kRecord) return BeginRecord();
  if (skips_) return;
  const auto setting = SettingsKeys().find(line.key);
  if (setting != SettingsKeys().end()) return (this->*setting->second)(line.value);
  if (!record_ || SetKind(line)) return;
  const auto field = JobKeys().find(line.key);
  if (field != JobKeys().end()) return (this->*field->second)(line.value);
  record_->paths.push_back(text);
}

void Reader::SkipRecord() {
  EndRecord();
  skips_ = true;
  Remark(Message(MessageId::kHandOverNotFinished));
}

void Reader::BeginRecord() {
  EndRecord();
  skips_ = false;
  record_.emplace();
  record_->job = MakeJobRequest(order_.settings);
}

// The "i" value and each path line are a job of their own, with all values of the record; a path
// line that leads to the file of the "i" value is the same job.
void Reader::EndRecord() {
  if (!record_) return;
  std::vector<std::string> paths = std::move(record_->paths);
  const std::string input = std::exchange(record_->job.inputFile, {});
  const auto isInput = [&](const std::string& path) {
    return path == input || FileDirWrapper::IsSameFile(path, input);
  };
  if (!input.empty() && std::none_of(paths.begin(), paths.end(), isInput)) {
    paths.insert(paths.begin(), input);
  }
  if (paths.empty() && !record_->job.restartFile.empty()) paths.emplace_back();
  for (const std::string& path : paths) {
    jobBytes_ += path.size() + record_->job.restartFile.size();
    if (order_.jobs.size() >= kMostHandOverJobs || jobBytes_ > kMostJobBytes) {
      Remark(
          Message(MessageId::kHandOverTooManyJobs, kMostHandOverJobs, kMostJobBytes >> 20, path));
      continue;
    }
    order_.jobs.push_back(record_->job);
    order_.jobs.back().jobFile = path;
  }
  record_.reset();
}

// A file of nothing but faults must not fill the log.
void Reader::Remark(Message remark) {
  if (++remarks_ < kMostRemarks) order_.remarks.push_back(std::move(remark));
  if (remarks_ == kMostRemarks) order_.remarks.push_back(Message(MessageId::kHandOverMoreLines));
}

void Reader::SetGroup(const std::string& value) {
  Set().group = value;
  order_.groupText = value;
  std::vector<std::string> pieces;
  StrWrapperTxt::SeparateString(value, pieces, ',');
  if (!pieces.empty()) Set().memory2 = StrWrapperTxt::LeadingUnsigned(pieces.front());
}

void Reader::SetSolverMode(const std::string& value) {
  if (const auto mode = SolverModeOf(value)) order_.solverMode = mode;
}

void Reader::SetSingleCpu(const std::string& value) {
  std::string& path = Set().SolverPath(SolverKind::kInc);
  std::string folder;
  if (path.empty() || !FileDirWrapper::DirOf(path, folder)) return;
  const bool single = StrWrapperTxt::LeadingInt(value) != 0;
  path = FileDirWrapper::Join(folder, single ? RowOfKind(SolverKind::kInc).program : "KVIN_MC.EXE");
}

// False for a key that names no kind. A value that none of its kinds has leaves the kind open.
bool Reader::SetKind(const Line& line) {
  bool isKey = false;
  for (const SolverKindRow& row : SolverKinds()) {
    if (row.handOverKey == nullptr || line.key != row.handOverKey) continue;
    if (!std::exchange(isKey, true)) Job().kind.reset();
    const bool anyValue = row.handOverValue == 0;
    if (anyValue || StrWrapperTxt::LeadingInt(line.value) == row.handOverValue)
      Job().kind = row.kind;
  }
  return isKey;
}

void Reader::SetCpuCount(const std::string& value) {
  Job().ncpu = StrWrapperTxt::LeadingInt(value);
  Set().cpu_count = Job().ncpu;
}

void Reader::SetForce(const std::string& value) {
  Job().sGiven = true;
  Set().force = value.empty() ? Settings().force : value;
}

void Reader::SetDump(const std::string& value) {
  if (value != "nodump") return;
  Job().dump = false;
  Set().output_dump = false;
}

bool IsKeyWithValue(const std::string& key) {
  static const char* const kKeys[] = {"memory", "ncpu", "i", "r", "s", "d"};
  return std::find(std::begin(kKeys), std::end(kKeys), key) != std::end(kKeys);
}

std::string MakeLine(const std::string& argument) {
  const Line line = SplitLine(argument);
  if (argument == kRecord) return argument;
  const std::string path = FileDirWrapper::AbsolutePath(argument);
  const bool isWord = argument.front() == '#' || (line.hasEquals && IsKeyWithValue(line.key));
  if (!isWord || FileDirWrapper::FileExists(path)) return path;
  const bool namesFile = line.key == "i" || line.key == "r";
  if (!namesFile || line.value.empty()) return argument;
  return line.key + '=' + FileDirWrapper::AbsolutePath(line.value);
}

}  // namespace

HandOverOrder ReadHandOverText(const std::string& text, const Settings& settings) {
  HandOverOrder order;
  order.settings = settings;
  Reader reader(order);
  std::string notValid = kRecord;
  notValid.front() = hand_over_file::kNotValid;
  for (const std::string& line : LinesOf(text)) {
    if (line == notValid) {
      reader.SkipRecord();
    } else if (line.size() > kLongestLine || line.find('\0') != std::string::npos) {
      reader.Remark(Message(MessageId::kHandOverNoText, OneLine(line.substr(0, 200))));
    } else {
      reader.Take(line);
    }
  }
  reader.EndRecord();
  return order;
}

std::string MakeHandOverText(const std::vector<std::string>& arguments,
                             std::vector<Message>& remarks) {
  std::string text;
  if (arguments.empty() || arguments.front() != kRecord) text = std::string(kRecord) + '\n';
  for (const std::string& argument : arguments) {
    if (argument.empty()) {
      remarks.push_back(Message(MessageId::kArgumentEmpty));
    } else if (FileDirWrapper::IsFolder(FileDirWrapper::AbsolutePath(argument))) {
      remarks.push_back(Message(MessageId::kFolderIsNoJob, argument));
    } else if (argument.find_first_of("\r\n") != std::string::npos) {
      remarks.push_back(Message(MessageId::kArgumentWithBreak, OneLine(argument)));
    } else {
      text += MakeLine(argument) + '\n';
    }
  }
  return text;
}

std::vector<std::size_t> RecordsOf(const std::string& text) {
  const std::string line = std::string(kRecord) + '\n';
  std::vector<std::size_t> records;
  for (std::size_t at = text.find(line); at != std::string::npos; at = text.find(line, at + 1)) {
    if (at == 0 || text[at - 1] == '\n') records.push_back(at);
  }
  return records;
}
