// The few system calls under FileDirWrapper's rules. Inside util/ only; any thread.
#ifndef KR_UTIL_FILES_FILESYSTEMCALLS_H
#define KR_UTIL_FILES_FILESYSTEMCALLS_H

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace file_system {

enum class Kind { kMissing, kFile, kFolder, kPipe, kOther };

struct Entry {
  std::string name;
  bool isFolder = false;  // links to folders too
};

// Tells two files or folders apart, however they are reached.
using FileId = std::pair<std::uint64_t, std::uint64_t>;

// Links are followed.
Kind KindOf(const std::string& path);

// The form of a path that system calls take.
std::string ForSystem(const std::string& path);

// The entries in the system's order without "." and ".."; none when the folder cannot be read.
std::vector<Entry> ReadFolder(const std::string& folder);

struct FileState {
  FileId id;
  std::uint64_t size = 0;    // bytes
  std::int64_t written = 0;  // in the finest unit that the system keeps
};
// Links are followed. Also of a file that somebody has open for himself alone.
bool StateOf(const std::string& path, FileState& state);
// The system says that nothing has this name; false also when it cannot tell.
bool IsMissing(const std::string& path);
inline bool IdOf(const std::string& path, FileId& id) {
  FileState state;
  if (!StateOf(path, state)) return false;
  id = state.id;
  return true;
}

// FileState::written in seconds since 1970.
std::int64_t SecondsOf(std::int64_t written);

// One level. True also when another process was faster.
bool MakeFolder(const std::string& path);

// Opens the file for writing, making it when it is missing, and removes it. Never through a link.
bool MakeAndRemoveFile(const std::string& path);

// The number of bytes at the start of a path that name its root, which cannot be created: "/",
// "C:\", "\\server\share".
std::size_t RootLength(const std::string& path);

}  // namespace file_system

#endif
