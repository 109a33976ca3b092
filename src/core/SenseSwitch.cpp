#include "core/SenseSwitch.h"

#include <charconv>
#include <map>

#include "util/files/FileDirWrapper.h"
#include "util/files/InputFile.h"
#include "util/signals/Mutex.h"

namespace {

constexpr char kSwitchFile[] = "bg_switch";
constexpr char kFile[] = "d3kil";

// What was asked for and may lie there still, by folder.
struct Asked {
  Mutex mutex;
  std::map<std::string, std::string> texts KR_GUARDED_BY(mutex);
};

Asked& AllAsked() {
  static Asked asked;
  return asked;
}

// As the solver reads it.
std::string TextOf(SolverSwitch what, double endTime) {
  if (what != SolverSwitch::kEndTime) return "sw" + std::to_string(static_cast<int>(what));
  char number[40];
  return "endtime=" +
         std::string(number, std::to_chars(number, number + sizeof number, endTime).ptr);
}

bool Holds(const std::string& path, const std::string& text) {
  InputFile file;
  if (!file.Open(path) || file.Size() != text.size()) return false;
  std::string held(text.size(), '\0');
  return file.Read(held.data(), held.size()) == static_cast<std::ptrdiff_t>(held.size()) &&
         held == text;
}

// The stage that runs, or the job itself.
const JobFile& Runner(const JobFile& job) {
  for (const std::shared_ptr<JobFile>& stage : job.stages) {
    if (stage->status == JobStatus::kRunning) return Runner(*stage);
  }
  return job;
}

}  // namespace

std::string SwitchFileIn(const std::string& folder) {
  return FileDirWrapper::Join(folder, kFile);
}

bool AskSolver(const std::string& folder, SolverSwitch what, double endTime) {
  const std::string text = TextOf(what, endTime);
  {
    const MutexLock lock(AllAsked().mutex);
    AllAsked().texts[folder] = text;
  }
  return FileDirWrapper::WriteOutputFile(SwitchFileIn(folder), text);
}

void WithdrawSwitch(const std::string& folder) {
  std::string text;
  {
    const MutexLock lock(AllAsked().mutex);
    const auto found = AllAsked().texts.find(folder);
    if (found == AllAsked().texts.end()) return;
    text = found->second;
    AllAsked().texts.erase(found);
  }
  const std::string path = SwitchFileIn(folder);
  if (Holds(path, text)) FileDirWrapper::RemoveFile(path);
}

SenseSwitch AskSolverToStop(JobGroupManager& manager) {
  AppLog& log = manager.Settings().Log();
  const std::shared_ptr<JobGroup> group = manager.CurrentGroup();
  std::string jobFile;
  std::string folder;
  const auto read = [&](const JobFile& job) {
    const JobFile& runner = Runner(job);
    jobFile = runner.jobFile;
    folder = runner.Folder();
  };
  if (!group || !group->ReadActiveJob(read)) {
    log.Report(Message(MessageId::kNoRunningJob));
    return SenseSwitch::kNoJob;
  }
  if (jobFile.empty()) {
    log.Report(Message(MessageId::kNoJobFile));
    return SenseSwitch::kBadJob;
  }
  const std::string switchFile =
      folder.empty() ? std::string() : FileDirWrapper::Join(folder, kSwitchFile);
  if (switchFile.empty() || !FileDirWrapper::FileExists(switchFile)) {
    log.Report(Message(MessageId::kNoSenseSwitch, switchFile));
    return SenseSwitch::kNoSwitch;
  }
  if (AskSolver(folder, SolverSwitch::kStop)) return SenseSwitch::kAsked;
  log.Report(Message(MessageId::kFileNotWritten, SwitchFileIn(folder)));
  return SenseSwitch::kFailed;
}
