#include "util/files/WrittenFiles.h"

#include "util/files/FileDirWrapper.h"
#include "util/files/FileSystemCalls.h"

std::vector<WrittenFile> FilesWrittenSince(const std::string& folder, std::int64_t since,
                                           std::size_t most) {
  std::vector<WrittenFile> found;
  for (const file_system::Entry& entry : file_system::ReadFolder(folder)) {
    if (most-- == 0) break;
    if (entry.isFolder) continue;
    std::string path = FileDirWrapper::Join(folder, entry.name);
    file_system::FileState state;
    if (!file_system::StateOf(path, state)) continue;
    const std::int64_t written = file_system::SecondsOf(state.written);
    if (written >= since) found.push_back({std::move(path), state.size, written});
  }
  return found;
}
