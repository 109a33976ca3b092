#include "core/SenseSwitch.h"

#include "util/files/FileDirWrapper.h"

namespace {

constexpr char kSwitchFile[] = "bg_switch";
constexpr char kStopFile[] = "d3kil";
constexpr char kStopWithRestartFile[] = "sw1";

// The stage that runs, or the job itself.
const JobFile& Runner(const JobFile& job) {
  for (const std::shared_ptr<JobFile>& stage : job.stages) {
    if (stage->status == JobStatus::kRunning) return Runner(*stage);
  }
  return job;
}

}  // namespace

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
  const std::string stopFile = FileDirWrapper::Join(folder, kStopFile);
  if (FileDirWrapper::WriteOutputFile(stopFile, kStopWithRestartFile)) return SenseSwitch::kAsked;
  log.Report(Message(MessageId::kFileNotWritten, stopFile));
  return SenseSwitch::kFailed;
}
