// What files were like at one moment, to tell later which of them have been written since.
#ifndef KR_UTIL_FILES_FOLDERSNAPSHOT_H
#define KR_UTIL_FILES_FOLDERSNAPSHOT_H

#include <cstdint>
#include <map>
#include <string>
#include <vector>

// Identity, size and time of writing of each file. One thread at a time.
class FolderSnapshot {
 public:
  // Those of the files that are there. Replaces what was taken before. One that is there but cannot
  // be looked at is held as unknown.
  void Take(const std::vector<std::string>& files);
  // Forgets those that had been written at that second or later (of 1970) when they were taken.
  void ForgetWrittenSince(std::int64_t seconds);

  // Whether the file was there and is still the same, under its name or that of another one that
  // was taken: nobody has written it since. So is an unknown one, whatever has become of it. A path
  // as it was given to Take.
  bool HoldsUnchanged(const std::string& path) const;
  bool IsUnknown(const std::string& path) const;

  // The same as text: a line of ASCII for each file; empty for none. A snapshot that was read tells
  // the same, in another process and after a restart of the machine too.
  std::string Text() const;
  // Replaces what was taken before. False for what Text() did not write; nothing is held then.
  bool Read(const std::string& text);

 private:
  // Without the number of its file system, which a start of the machine may change.
  struct State {
    std::uint64_t id = 0;
    std::uint64_t size = 0;
    std::int64_t written = 0;
    bool isKnown = true;
    friend bool operator==(const State&, const State&) = default;
  };
  static bool StateOf(const std::string& path, State& state);

  std::map<std::string, State> files_;
};

#endif
