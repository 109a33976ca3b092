#include "util/files/FolderSnapshot.h"

#include <vector>

#include "util/files/FileDirWrapper.h"
#include "util/files/FileSystemCalls.h"

void FolderSnapshot::Take(const std::string& folder) {
  files_.clear();
  std::vector<std::string> files;
  std::vector<std::string> folders;
  FileDirWrapper::ListDir(folder, files, folders, false);
  for (const std::string& path : files) {
    State state;
    if (StateOf(path, state)) files_.emplace(path, state);
  }
}

bool FolderSnapshot::HoldsUnchanged(const std::string& path) const {
  const auto before = files_.find(path);
  State now;
  return before != files_.end() && StateOf(path, now) && now == before->second;
}

bool FolderSnapshot::StateOf(const std::string& path, State& state) {
  file_system::FileState found;
  if (!file_system::StateOf(file_system::ForSystem(path), found)) return false;
  state = {found.id, found.size, found.written};
  return true;
}
