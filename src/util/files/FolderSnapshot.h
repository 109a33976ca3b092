// What lay in a folder at one moment, to tell later which files have been written since.
#ifndef KR_UTIL_FILES_FOLDERSNAPSHOT_H
#define KR_UTIL_FILES_FOLDERSNAPSHOT_H

#include <cstdint>
#include <map>
#include <string>
#include <utility>

// Identity, size and time of writing of each file. One thread at a time.
class FolderSnapshot {
 public:
  // The files that lie in the folder itself. Replaces what was taken before; a folder that cannot
  // be read has none.
  void Take(const std::string& folder);

  // Whether the file was there and is still the same: nobody has written it since. A path in the
  // folder, as FileDirWrapper::ListDir and Join give it.
  bool HoldsUnchanged(const std::string& path) const;

 private:
  struct State {
    std::pair<std::uint64_t, std::uint64_t> id;
    std::uint64_t size = 0;
    std::int64_t written = 0;
    friend bool operator==(const State&, const State&) = default;
  };
  static bool StateOf(const std::string& path, State& state);

  std::map<std::string, State> files_;
};

#endif
