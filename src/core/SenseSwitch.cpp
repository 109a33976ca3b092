#include "core/SenseSwitch.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <memory>
#include <utility>

#include "jobs/OutputPrefix.h"
#include "util/files/FileDirWrapper.h"
#include "util/files/InputFile.h"
#include "util/signals/Mutex.h"

namespace {

constexpr char kSwitchFile[] = "bg_switch";
constexpr char kFile[] = "d3kil";

// What was asked for in one folder.
struct Asked {
  SwitchRun run = SwitchRun::kNone;
  JobId job = JobId::kNone;
  std::string file;                         // where the switch lies
  bool hasEnded = false;                    // under the lock of all
  Mutex writing;                            // the folder's file: others do not wait for its disk
  std::string text KR_GUARDED_BY(writing);  // may lie there still
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
  return "endtime=" +
         std::string(number, std::to_chars(number, number + sizeof number, endTime).ptr);
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

// Written by this program, which ends no line.
bool IsOurs(const std::string& text) {
  if (text.starts_with("endtime=")) return text.find_first_of("\r\n") == std::string::npos;
  return text.size() == 3 && text.starts_with("sw") && text[2] >= '1' && text[2] <= '4';
}

bool TakeBack(Asked& asked) KR_REQUIRES(asked.writing) {
  const std::string text = std::exchange(asked.text, {});
  return !text.empty() && ContentOf(asked.file) == text && FileDirWrapper::RemoveFile(asked.file);
}

// The stage that runs, or the job itself.
const JobFile& Runner(const JobFile& job) {
  for (const std::shared_ptr<JobFile>& stage : job.stages) {
    if (stage->status == JobStatus::kRunning) return Runner(*stage);
  }
  return job;
}

}  // namespace

std::string SwitchFileIn(const std::string& folder, const std::string& prefix) {
  return FileDirWrapper::Join(folder, prefix + kFile);
}

void BeginSwitches(const std::string& folder, JobId job, bool isNew, const std::string& prefix) {
  const auto asked = std::make_shared<Asked>();
  if (!isNew && SwitchRunOf(folder, job) != SwitchRun::kNone) return;  // it was new before
  asked->file = SwitchFileIn(folder, prefix);
  const std::string left = ContentOf(asked->file);
  if (IsOurs(left)) {
    const MutexLock lock(asked->writing);
    asked->text = left;  // of this very run, when it is not new
    if (isNew) TakeBack(*asked);
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
  asked->text = TextOf(what, endTime);
  return FileDirWrapper::WriteOutputFile(asked->file, asked->text);
}

bool WithdrawSwitch(const std::string& folder, SwitchRun run) {
  const std::shared_ptr<Asked> asked = RunIn(folder);
  if (!asked || asked->run != run) return false;
  const MutexLock lock(asked->writing);
  return TakeBack(*asked);
}

StopRequest SolverToStop(JobGroupManager& manager) {
  const std::shared_ptr<JobGroup> group = manager.CurrentGroup();
  StopRequest request;
  const auto read = [&](const JobFile& job) {
    const JobFile& runner = Runner(job);
    if (runner.jobFile.empty()) request.answer = SenseSwitch::kBadJob;
    request.folder = runner.Folder();
    request.prefix = OutputPrefix(runner);
    request.run = SwitchRunOf(request.folder, job.id);
  };
  if (!group || !group->ReadActiveJob(read)) request.answer = SenseSwitch::kNoJob;
  return request;
}

SenseSwitch AskSolverToStop(const StopRequest& request) {
  if (request.answer != SenseSwitch::kAsked) return request.answer;
  const auto isThere = [&](const std::string& prefix) {
    return FileDirWrapper::FileExists(FileDirWrapper::Join(request.folder, prefix + kSwitchFile));
  };
  if (request.folder.empty() || (!isThere("") && !isThere(request.prefix)))
    return SenseSwitch::kNoSwitch;
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
      return log.Report(
          Message(MessageId::kFileNotWritten, SwitchFileIn(request.folder, request.prefix)));
    case SenseSwitch::kAsked:
      break;
  }
}
