#include "core/HandOverPlace.h"

#include "util/files/FileDirWrapper.h"

std::vector<HandOverPlace> HandOverPlaces(const std::string& workFolder) {
  std::string folder;
  FileDirWrapper::TempDir(folder);
  return {{folder, FileDirWrapper::Join(workFolder, "kr_running.lock")}};
}
