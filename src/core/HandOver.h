// The hand-over file: how jobs reach the running copy from outside.
//
// A text file of key=value lines in a folder of the user (HandOverPlace.h); the help describes the
// keys. Processes are kept apart by the event "Global\KESTRUN_TEMP_FILE_READWRITE", which other
// programs know too, and by a lock beside the file, which is this user's alone and goes with its
// holder. An event that is not given back, or that somebody keeps from us, stops nobody: the log
// says so, and the lock is enough. A file that a reader has taken away is its alone; should it die
// before the jobs are in the queue, the next reader finds them.
#ifndef KR_CORE_HANDOVER_H
#define KR_CORE_HANDOVER_H

#include <functional>
#include <string>
#include <vector>

#include "core/HandOverFile.h"
#include "core/HandOverFormat.h"

class HandOverGuard;
class SettingsAndPaths;

// What one process hands over. One thread; what went wrong is in the log too.
class HandOverWriter {
 public:
  explicit HandOverWriter(SettingsAndPaths& files) : files_(files) {}  // outlives the object

  // Adds the arguments from the second on to the file, relative paths made absolute. Waits up to
  // some seconds for other processes. False when something will not arrive, see Faults: all of it
  // ("Write tmp file [%s] failed"), or single arguments that cannot be handed over.
  bool Write(int argc, const char* const* argv);

  // No reader has taken away yet what was written.
  bool Waits() const;
  // Ends the waiting. False when no reader has the jobs: they are taken back then, or it is said
  // that they could not be.
  bool StopWaiting();
  // Nobody will run the jobs. False when a reader has them, or may get them.
  bool TakeBack();

  const std::vector<Message>& Faults() const { return faults_; }

 private:
  bool Append(const std::string& text);
  bool Enter(HandOverGuard& guard, long lockMs);
  void Fault(const Message& fault);

  SettingsAndPaths& files_;
  hand_over_file::Record record_;
  std::vector<Message> faults_;
};

// The running copy's reader.
class HandOverReader {
 public:
  using Apply = std::function<void(HandOverOrder order)>;

  // `apply` puts an order into effect; when it returns, its jobs are the queue's. `files` outlives
  // the object.
  HandOverReader(SettingsAndPaths& files, Apply apply);

  // One look at the file, which never blocks for longer than some ten milliseconds, but for half a
  // second once a minute where somebody keeps the event from us. A file that belongs to another
  // user, that others may write, or that is a link is refused; that is reported once.
  void Poll();

 private:
  bool TakeAway();
  bool MayGoOn(HandOverGuard& guard);
  void LookAtEvent(HandOverGuard& guard);
  void ReadTaken();
  bool RemoveTaken();
  void ReportOnce(const Message& message);
  void ReportEvent(const Message& message);

  SettingsAndPaths& files_;
  const Apply apply_;
  const std::string taken_;    // the name of the file while it is read
  int missed_ = 0;             // polls in a row that found the event or the lock taken
  int pollsWithoutEvent_ = 0;  // until the event is asked for again
  bool isQueued_ = false;      // the jobs of the file that was taken away, which is still there
  Message reported_;           // the last complaint about the file
  Message reportedEvent_;      // and about the event
};

#endif
