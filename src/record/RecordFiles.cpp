#include "record/RecordFiles.h"

#include <algorithm>
#include <cstdio>
#include <vector>

#include "record/Journal.h"
#include "util/files/FileDirWrapper.h"
#include "util/files/FileLock.h"
#include "util/process/ProcessIdentity.h"

namespace {

constexpr std::string_view kEnding = ".kr";
constexpr std::string_view kQueueName = "kr_queue_";
constexpr std::string_view kHistoryName = "kr_history_";

RecordFiles FilesOf(const std::string& folder, const std::string& machine) {
  const auto path = [&](std::string_view name) {
    return FileDirWrapper::Join(folder, std::string(name) + machine + std::string(kEnding));
  };
  return {path(kQueueName), path(kHistoryName), path("kr_record_") + ".lock", machine, {}};
}

// The machines whose file of this name was written under the id.
std::vector<std::string> MachinesWithId(const std::string& folder, std::string_view name,
                                        const char* kind, const std::string& id) {
  std::vector<std::string> files;
  std::vector<std::string> folders;
  FileDirWrapper::ListDir(folder, files, folders, false);
  std::vector<std::string> machines;
  for (const std::string& path : files) {
    std::string file = FileDirWrapper::NameOf(path);
    if (!file.starts_with(name) || !file.ends_with(kEnding)) continue;
    if (MachineIdOfJournal(path, kind) != id) continue;
    file.erase(file.size() - kEnding.size());
    machines.push_back(file.substr(name.size()));
  }
  std::sort(machines.begin(), machines.end());
  return machines;
}

// `file`: which of them.
void TakeFile(const RecordFiles& files, std::string RecordFiles::*file, std::string_view name,
              const char* kind, const MessageSink& note) {
  const std::string& own = files.*file;
  if (FileDirWrapper::FileExists(own)) return;
  std::string folder;
  FileDirWrapper::DirOf(own, folder);
  const auto machines = MachinesWithId(folder, name, kind, files.machineId);
  if (machines.size() == 1) {
    const RecordFiles old = FilesOf(folder, machines.front());
    FileLock lock;
    const FileLock::Result taken = lock.Take(old.lock, 0);
    if (taken == FileLock::Result::kBusy) {
      note(Message(MessageId::kRecordOfOther, own, old.*file));
    } else if (taken == FileLock::Result::kTaken &&
               std::rename((old.*file).c_str(), own.c_str()) == 0) {
      note(Message(MessageId::kRecordOfOldName, old.*file, own));
    }
    return;
  }
  std::string all;
  for (const std::string& machine : machines) {
    all += (all.empty() ? "" : ", ") + FilesOf(folder, machine).*file;
  }
  if (!all.empty()) note(Message(MessageId::kRecordOfWhichName, own, all));
}

}  // namespace

RecordFiles RecordFilesIn(const std::string& folder) {
  std::string machine = MachineName();
  for (char& c : machine) {
    const bool isPlain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                         (c >= '0' && c <= '9') || c == '-' || c == '.';
    if (!isPlain) c = '_';
  }
  RecordFiles files = FilesOf(folder, machine);
  files.machineId = MachineId();
  return files;
}

std::string HistoryToRead(const RecordFiles& files) {
  std::string folder;
  FileDirWrapper::DirOf(files.history, folder);
  if (files.machineId.empty() || FileDirWrapper::FileExists(files.history)) return files.history;
  const auto machines = MachinesWithId(folder, kHistoryName, kHistoryKind, files.machineId);
  return machines.size() == 1 ? FilesOf(folder, machines.front()).history : files.history;
}

void TakeFilesOfOldName(const RecordFiles& files, const MessageSink& note) {
  if (files.machineId.empty()) return;
  TakeFile(files, &RecordFiles::queue, kQueueName, kQueueKind, note);
  TakeFile(files, &RecordFiles::history, kHistoryName, kHistoryKind, note);
}
