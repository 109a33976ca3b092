#include "record/RecordFiles.h"

#include "util/files/FileDirWrapper.h"
#include "util/process/ProcessIdentity.h"

RecordFiles RecordFilesIn(const std::string& folder) {
  std::string machine = MachineName();
  for (char& c : machine) {
    const bool isPlain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                         (c >= '0' && c <= '9') || c == '-' || c == '.';
    if (!isPlain) c = '_';
  }
  const auto path = [&](const char* name) {
    return FileDirWrapper::Join(folder, name + machine + ".kr");
  };
  return {path("kr_queue_"), path("kr_history_"), path("kr_record_") + ".lock", machine};
}
