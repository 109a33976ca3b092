#include "core/SenseSwitch.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <memory>
#include <utility>

#include "jobs/JobFile.h"
#include "progress/RunFiles.h"
#include "util/files/FileDirWrapper.h"
#include "util/files/InputFile.h"
#include "util/files/IOWrapper.h"
#include "util/signals/Mutex.h"

namespace {

constexpr char kSwitchFile[] = "bg_switch";
constexpr char kFile[] = "d3kil";
constexpr char kEndTime[] = "endtime=";

// What was asked for in one folder.
struct Asked {
  SwitchRun run = SwitchRun::kNone;
  JobId job = JobId::kNone;
  std::string folder;
  OutputNames names;
  bool hasEnded = false;                    // under the lock of all
  Mutex writing;                            // the folder's files: others do not wait for its disk
  std::string text KR_GUARDED_BY(writing);  // may lie there still
  std::vector<std::string> files KR_GUARDED_BY(writing);  // it was written to
};

// The runs that go on, by folder.
struct AllRuns {
  Mutex mutex;
  std::map<std::string, std::shared_ptr<Asked>> runs KR_GUARDED_BY(mutex);
  std::uint64_t last KR_GUARDED_BY(mutex) = 0;
};

AllRuns& All() {
  static AllRuns all;
  return all;
}

std::shared_ptr<Asked> RunIn(const std::string& folder) {
  const MutexLock lock(All().mutex);
  const auto found = All().runs.find(folder);
  return found == All().runs.end() ? nullptr : found->second;
}

bool HasEnded(const Asked& asked) {
  const MutexLock lock(All().mutex);
  return asked.hasEnded;
}

// As the solver reads it.
std::string TextOf(SolverSwitch what, double endTime) {
  if (what != SolverSwitch::kEndTime) return "sw" + std::to_string(static_cast<int>(what));
  char number[40];
  return kEndTime + std::string(number, std::to_chars(number, number + sizeof number, endTime).ptr);
}

std::string ContentOf(const std::string& path) {
  constexpr std::uint64_t kMost = 100;
  InputFile file;
  if (!file.Open(path) || file.Size() > kMost) return {};
  std::string text(static_cast<std::size_t>(file.Size()), '\0');
  const std::ptrdiff_t count = file.Read(text.data(), text.size());
  text.resize(static_cast<std::size_t>(std::max<std::ptrdiff_t>(count, 0)));
  return text;
}

// Where a request to the solver lies now.
std::vector<std::string> FilesNow(const std::string& folder, const OutputNames& names) {
  std::string newest;
  const auto isKept = [](const std::string& file) { return file.ends_with(kKeptEnding); };
  if (names.hasCases) newest = FindRunFiles(folder, isKept, names).output;
  return SwitchFiles(folder, names, newest);
}

std::int64_t WrittenAt(const std::string& file) {
  std::int64_t created = 0, accessed = 0, modified = 0, size = 0;
  IOWrapperTxt::FileStatInfo(file, created, accessed, modified, size);
  return modified;
}

// Of any case.
std::vector<std::string> FilesOfAllCases(const std::string& folder, const OutputNames& names) {
  if (!names.hasCases) return SwitchFiles(folder, names, {});
  std::vector<std::string> files, folders;
  FileDirWrapper::ListDir(folder, files, folders, false);
  std::erase_if(files, [&](const std::string& file) {
    const std::string name = FileDirWrapper::NameOf(file);
    const bool byCase = CaseLength(name) > 0 && name.substr(CaseLength(name)) == kFile;
    const std::optional<std::string> rest = BehindPrefix(name, names.prefix);
    return !byCase && (!rest || rest->substr(CaseLength(*rest)) != kFile);
  });
  return files;
}

bool RemoveWith(const std::string& file, const std::string& text) {
  return ContentOf(file) == text && FileDirWrapper::RemoveFile(file);
}

// True when all of it lay there still.
bool TakeBack(Asked& asked) KR_REQUIRES(asked.writing) {
  const std::string text = std::exchange(asked.text, {});
  bool isWhole = !text.empty();
  for (const std::string& file : std::exchange(asked.files, {}))
    isWhole = RemoveWith(file, text) && isWhole;
  return isWhole;
}

// The stage that runs, or the job itself.
const JobFile& Runner(const JobFile& job) {
  for (const std::shared_ptr<JobFile>& stage : job.stages) {
    if (stage->status == JobStatus::kRunning) return Runner(*stage);
  }
  return job;
}

}  // namespace

void BeginSwitches(const std::string& folder, JobId job, bool isNew, const OutputNames& names) {
  const auto asked = std::make_shared<Asked>();
  if (!isNew && SwitchRunOf(folder, job) != SwitchRun::kNone) return;  // it was new before
  asked->folder = folder;
  asked->names = names;
  for (const std::string& file : FilesOfAllCases(folder, names)) {
    const std::string left = ContentOf(file);
    if (!SwitchIn(left)) continue;
    if (isNew) {
      FileDirWrapper::RemoveFile(file);
      continue;
    }
    // Of this very run.
    const MutexLock lock(asked->writing);
    if (!asked->text.empty() && asked->text != left) continue;
    asked->text = left;
    asked->files.push_back(file);
  }
  const MutexLock lock(All().mutex);
  asked->run = static_cast<SwitchRun>(++All().last);
  asked->job = job;
  std::shared_ptr<Asked>& known = All().runs[folder];
  if (known) known->hasEnded = true;
  known = asked;
}

void EndSwitches(const std::string& folder) {
  const std::shared_ptr<Asked> asked = RunIn(folder);
  if (!asked) return;
  {
    const MutexLock lock(All().mutex);
    asked->hasEnded = true;
    All().runs.erase(folder);
  }
  const MutexLock lock(asked->writing);
  TakeBack(*asked);
}

SwitchRun SwitchRunOf(const std::string& folder, JobId job) {
  const std::shared_ptr<Asked> asked = RunIn(folder);
  return asked && asked->job == job ? asked->run : SwitchRun::kNone;
}

bool AskSolver(const std::string& folder, SwitchRun run, SolverSwitch what, double endTime) {
  const std::shared_ptr<Asked> asked = RunIn(folder);
  if (!asked || asked->run != run) return false;
  const MutexLock lock(asked->writing);
  if (HasEnded(*asked)) return false;
  TakeBack(*asked);
  asked->text = TextOf(what, endTime);
  asked->files = FilesNow(asked->folder, asked->names);
  bool written = true;
  for (const std::string& file : asked->files)
    written = FileDirWrapper::WriteOutputFile(file, asked->text) && written;
  if (!written) TakeBack(*asked);
  return written;
}

std::optional<LyingRequest> RequestIn(const std::string& folder, SwitchRun run) {
  const std::shared_ptr<Asked> asked = RunIn(folder);
  if (!asked || asked->run != run) return std::nullopt;
  const MutexLock lock(asked->writing);
  bool lies = true;
  for (const std::string& file : asked->files) lies = lies && ContentOf(file) == asked->text;
  if (!lies) TakeBack(*asked);  // the solver has taken one of them
  for (const std::string& file : FilesNow(asked->folder, asked->names)) {
    if (!FileDirWrapper::FileExists(file)) continue;
    return LyingRequest{ContentOf(file), WrittenAt(file)};
  }
  return std::nullopt;
}

bool WithdrawSwitch(const std::string& folder, SwitchRun run, const std::string& text) {
  const std::shared_ptr<Asked> asked = RunIn(folder);
  if (!asked || asked->run != run) return false;
  const MutexLock lock(asked->writing);
  if (asked->text == text && !text.empty()) return TakeBack(*asked);
  bool found = false;
  for (const std::string& file : FilesNow(asked->folder, asked->names))
    found = RemoveWith(file, text) || found;
  return found;
}

std::optional<AskedSwitch> SwitchIn(std::string_view text) {
  // This program ends no line.
  if (text.find_first_of("\r\n") != std::string_view::npos) return std::nullopt;
  if (text.starts_with(kEndTime))
    return AskedSwitch{SolverSwitch::kEndTime, std::string(text.substr(sizeof kEndTime - 1))};
  const bool isSwitch =
      text.size() == 3 && text.starts_with("sw") && text[2] >= '1' && text[2] <= '4';
  if (!isSwitch) return std::nullopt;
  return AskedSwitch{static_cast<SolverSwitch>(text[2] - '0')};
}

StopRequest SolverToStop(JobGroupManager& manager) {
  const std::shared_ptr<JobGroup> group = manager.CurrentGroup();
  StopRequest request;
  const auto read = [&](const JobFile& job) {
    const JobFile& runner = Runner(job);
    if (runner.jobFile.empty()) request.answer = SenseSwitch::kBadJob;
    request.folder = runner.Folder();
    request.names = OutputNamesOf(runner);
    request.run = SwitchRunOf(request.folder, job.id);
  };
  if (!group || !group->ReadActiveJob(read)) request.answer = SenseSwitch::kNoJob;
  return request;
}

SenseSwitch AskSolverToStop(const StopRequest& request) {
  if (request.answer != SenseSwitch::kAsked) return request.answer;
  if (request.folder.empty()) return SenseSwitch::kNoSwitch;
  const auto isThere = [](const std::string& file) {
    return FileDirWrapper::FileExists(file.substr(0, file.size() - sizeof kFile + 1) + kSwitchFile);
  };
  const std::vector<std::string> files = FilesNow(request.folder, request.names);
  const bool found = isThere(FileDirWrapper::Join(request.folder, kFile)) ||
                     std::any_of(files.begin(), files.end(), isThere);
  if (!found) return SenseSwitch::kNoSwitch;
  const bool asked = AskSolver(request.folder, request.run, SolverSwitch::kStop);
  return asked ? SenseSwitch::kAsked : SenseSwitch::kFailed;
}

void ReportStop(const StopRequest& request, SenseSwitch answer, AppLog& log) {
  switch (answer) {
    case SenseSwitch::kNoJob:
      return log.Report(Message(MessageId::kNoRunningJob));
    case SenseSwitch::kBadJob:
      return log.Report(Message(MessageId::kNoJobFile));
    case SenseSwitch::kNoSwitch:
      return log.Report(
          Message(MessageId::kNoSenseSwitch,
                  request.folder.empty() ? "" : FileDirWrapper::Join(request.folder, kSwitchFile)));
    case SenseSwitch::kFailed:
      return log.Report(Message(MessageId::kFileNotWritten,
                                SwitchFiles(request.folder, request.names, {}).front()));
    case SenseSwitch::kAsked:
      break;
  }
}
