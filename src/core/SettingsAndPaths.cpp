#include "core/SettingsAndPaths.h"

#include "util/files/FileDirWrapper.h"

namespace {

// The year in this name is older than the version and known to other programs.
constexpr char kHandOverFile[] = "~kestrun_tmp_2014 R1.txt";

constexpr char kHandOverEvent[] = "Global\\KESTRUN_TEMP_FILE_READWRITE";
constexpr int kCreatedNew = 1;

// Signalled means that the file is free, so the process that makes the event sets it.
void OpenOrMakeEvent(PTWrapperSignal& signal) {
  if (signal.OpenEventSignal(kHandOverEvent)) return;
  if (signal.CreateEventSignal(kHandOverEvent) == kCreatedNew) signal.SetEventSignal();
}

}  // namespace

SettingsAndPaths::SettingsAndPaths(const std::string& title)
    : workFolder(WorkFolderOf(title)),
      settingsFile(FileDirWrapper::Join(workFolder, "kr_init.config")),
      handOverPlaces(HandOverPlaces()),
      handOverFile(HandOverFileIn(handOverPlaces.front())),
      hostFile(FileDirWrapper::Join(workFolder, "kr_host.txt")),
      groupFile(FileDirWrapper::Join(workFolder, "kr_groups.txt")),
      log_(FileDirWrapper::Join(workFolder, "kr.log")) {
  if (!HasWorkFolder()) log_.Report(Message(MessageId::kFolderNotWritable, workFolder));
  FileDirWrapper::DocumentsDir(settings_.last_path);
  Publish();
  OpenOrMakeEvent(handOverEvent);
}

std::string SettingsAndPaths::WorkFolderOf(const std::string& title) {
  std::string folder;
  FileDirWrapper::AppDataDir(folder);
  folder = FileDirWrapper::Join(FileDirWrapper::Join(folder, "orla"), title);
  return FileDirWrapper::AbsolutePath(folder);
}

std::string SettingsAndPaths::HandOverFileIn(const HandOverPlace& place) {
  return FileDirWrapper::Join(place.folder, kHandOverFile);
}

// Somebody may have removed the folder while the program runs.
bool SettingsAndPaths::HasWorkFolder() const {
  FileDirWrapper::CreateDirTree(workFolder);
  return FileDirWrapper::IsDirWritable(workFolder);
}

void SettingsAndPaths::RemoveLeftFiles() const {
  for (const std::string& path : {settingsFile, hostFile, groupFile}) {
    FileDirWrapper::RemoveLeftTempFiles(path);
  }
}

Settings SettingsAndPaths::Snapshot() const {
  const MutexLock lock(mutex_);
  return published_;
}

void SettingsAndPaths::Publish() {
  const MutexLock lock(mutex_);
  published_ = settings_;
}

void SettingsAndPaths::SetSolverPath(SolverKind kind, const std::string& path) {
  if (settings_.SolverPath(kind) == path) return;
  Edit([&](Settings& settings) { settings.SolverPath(kind) = path; });
}
