// The settings with the files that keep them, and the paths of the work folder.
#ifndef KR_CORE_SETTINGSANDPATHS_H
#define KR_CORE_SETTINGSANDPATHS_H

#include <string>
#include <utility>
#include <vector>

#include "core/AppLog.h"
#include "core/HandOverPlace.h"
#include "jobs/Settings.h"
#include "util/process/PTWrapper.h"
#include "util/signals/Mutex.h"

// One object, owned by the application; the interface thread's, except Snapshot() and Log().
class SettingsAndPaths {
 public:
  using GroupEntry = std::pair<std::string, std::string>;  // name, group text

  // Makes the work folder of a program with this title, sets paths and defaults and opens the
  // hand-over event. An unwritable folder is reported; work goes on.
  explicit SettingsAndPaths(const std::string& title);

  // The work folder of a program with this title, which need not be there.
  static std::string WorkFolderOf(const std::string& title);
  static constexpr char kTitle[] = "Kestrun 2016 R1";

  const Settings& Get() const { return settings_; }

  // A copy for another thread. Any thread.
  Settings Snapshot() const;

  // Changes settings and marks them changed (dirty).
  template <typename Change>
  void Edit(Change change) {
    change(settings_);
    dirty_ = true;
    Publish();
  }
  // Stores a value when it differs; only then the settings become dirty. True when it differed.
  template <typename T>
  bool Set(T Settings::*field, const T& value) {
    if (settings_.*field == value) return false;
    Edit([&](Settings& s) { s.*field = value; });
    return true;
  }
  void SetSolverPath(SolverKind kind, const std::string& path);
  bool Dirty() const { return dirty_; }

  // A missing file leaves the defaults; afterwards the settings are not dirty. A number or switch
  // that is missing keeps its value, but for memory_size and memory2, which become 0.
  void ReadSettings();
  // True when written or when nothing had to be: the settings are not dirty and the file is there.
  // Keys and lines that the program does not know stay. False, with the file as it was and the
  // settings still dirty: "Directory [%s] is not writable", "Write settings file [%s] failed".
  // Values of more than 4,095 bytes are written whole, but only so much of them is ever read.
  bool WriteSettings();

  void ReadHostFile();   // "Read host file [%s] failed" keeps the lines
  void WriteHostFile();  // only when the file is missing
  enum class HostChange { kDone, kFailed, kFileIsNewer };
  // Stores other host lines in the host file, whose comments stay, and takes them. Otherwise
  // nothing changes: when the file fails (as above, or "Write host file [%s] failed"), and when
  // somebody has changed its host lines since they were read.
  HostChange ChangeHosts(const std::vector<std::string>& hosts);
  void ReadGroupFile();  // into groupEntries; a missing file has none
  // No groups: the file stays. A file that could not be read stays too. What the format cannot hold
  // is replaced, see JobGroupManager::RefusalOfName. "Write group file [%s] failed" leaves the old
  // file.
  void WriteGroupFile(const std::vector<GroupEntry>& groups);

  // What killed processes left when they were storing one of these files: it may hold the access
  // key of the settings.
  void RemoveLeftFiles() const;

  AppLog& Log() { return log_; }

  const std::string workFolder;
  const std::string settingsFile;
  const std::vector<HandOverPlace> handOverPlaces;
  const std::string handOverFile;  // in the first of them
  static std::string HandOverFileIn(const HandOverPlace& place);
  const std::string hostFile;
  const std::string groupFile;
  std::vector<GroupEntry> groupEntries;
  PTWrapperSignal handOverEvent;

 private:
  bool HasWorkFolder() const;  // makes it when it is missing; true when it can be written to
  bool StoreHostFile(const std::string& text);

  void Publish();

  Settings settings_;
  mutable Mutex mutex_;
  Settings published_ KR_GUARDED_BY(mutex_);  // the same, for other threads
  bool dirty_ = false;
  bool groupFileKept_ = false;  // it is there but could not be read
  AppLog log_;
};

#endif
