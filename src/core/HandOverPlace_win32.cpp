#include "core/HandOverPlace.h"

#include "util/files/FileDirWrapper.h"

std::string HandOverFolder() {
  std::string folder;
  FileDirWrapper::TempDir(folder);
  return folder;
}

std::string FirstCopyLock(const std::string& workFolder) {
  return FileDirWrapper::Join(workFolder, "kr_running.lock");
}
