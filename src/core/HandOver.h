// The hand-over file: how jobs reach the running copy from outside.
//
// A text file of key=value lines in the user's temporary folder; the help describes the keys. The
// event "Global\KESTRUN_TEMP_FILE_READWRITE" guards it between processes. A process that died while
// holding the event must not stop the others: waits are bounded, and an event that nobody gives
// back for ten seconds is taken over, which the log says.
#ifndef KR_CORE_HANDOVER_H
#define KR_CORE_HANDOVER_H

#include <string>
#include <vector>

class Application;
class SettingsAndPaths;

namespace hand_over_file {
struct Contents;
}

// Writes the arguments from the second on, relative paths made absolute. Waits up to ten seconds
// while another process is at the file or, when `readerRuns`, while a file that the running copy
// has not read yet is there; then writes behind what is there. Any process. False when the file
// could not be written: "Write tmp file [%s] failed", or nobody could read it for want of the
// event: "EVENT handle is null".
bool WriteHandOver(SettingsAndPaths& settings, int argc, const char* const* argv,
                   bool readerRuns = true);

// One look at the file on the interface thread; never blocks for longer than a few milliseconds.
// Applies settings lines, gives the jobs to the application's intake and deletes the file. A file
// that belongs to another user, that others may write, or that is a link is refused and reported
// once. Returns false when the event is missing ("EVENT handle is null").
class HandOverReader {
 public:
  explicit HandOverReader(Application& application) : application_(application) {}
  bool Poll();

 private:
  bool TakeEvent();
  void Apply(const hand_over_file::Contents& contents);
  void RemoveHandled();
  void RemoveFile();
  void ReportOnce(const std::string& message);

  Application& application_;
  int missedTicks_ = 0;   // polls in a row that found the event taken
  std::string handled_;   // the file whose jobs were added, until it is removed
  std::string reported_;  // the last complaint about the file
};

#endif
