// The hand-over file: how jobs reach the running copy from outside.
//
// A text file of key=value lines in a folder of the user, of which there may be two
// (HandOverPlace.h); the help describes the keys. Processes are kept apart by the event
// "Global\KESTRUN_TEMP_FILE_READWRITE", which other programs know too, and by a lock beside the
// file, which is this user's alone and goes with its holder. An event that is not given back, or
// that somebody keeps from us, stops nobody: the log says so, and the lock is enough. A file that a
// reader has taken away is its alone and has a name that no other one had. It stays until its jobs
// are on the disk as the queue's; the queue's record names it. Should the reader die, the next one
// finds the file, and reads it when the record does not name it.
#ifndef KR_CORE_HANDOVER_H
#define KR_CORE_HANDOVER_H

#include <deque>
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
  // `files` outlives the object. `path`: the file, in one of their places.
  HandOverWriter(SettingsAndPaths& files, const std::string& path) : files_(files), path_(path) {}
  explicit HandOverWriter(SettingsAndPaths& files);  // in the first one

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
  const std::string path_;
  hand_over_file::Record record_;
  std::vector<Message> faults_;
};

// The running copy's reader.
class HandOverReader {
 public:
  // Whose the jobs become.
  struct Queue {
    // Puts an order into effect. `files`: the names of all files whose jobs it now has and that are
    // still there.
    std::function<void(HandOverOrder order, const std::vector<std::string>& files)> apply;
    // It has the jobs of this file from an earlier session.
    std::function<bool(const std::string& file)> has;
    // What was applied is safe from a crash, or is not to be kept.
    std::function<bool()> isSafe;
  };

  // Looks for files that a reader before has left. `files` outlives the object.
  HandOverReader(SettingsAndPaths& files, Queue queue);

  // One look at the file of each place, which never blocks for longer than some ten milliseconds,
  // but for half a second once a minute where somebody keeps the event from us. A file that belongs
  // to another user, that others may write, or that is a link is refused; that is reported once.
  void Poll();
  // Removes the files whose jobs are safe. A part of Poll.
  void RemoveApplied();

 private:
  // One of the files.
  struct Place {
    std::string path;
    int missed = 0;             // polls in a row that found the event or the lock taken
    int pollsWithoutEvent = 0;  // until the event is asked for again
    Message reported = {};      // the last complaint about the file
  };

  void TakeAway(Place& place);
  bool MayGoOn(Place& place, HandOverGuard& guard);
  void LookAtEvent(Place& place, HandOverGuard& guard);
  bool ReadTaken();
  bool Remove(const std::string& path);
  void ReportOnce(Message& reported, const Message& message);
  void ReportEvent(const Message& message);

  SettingsAndPaths& files_;
  const Queue queue_;
  std::vector<Place> places_;
  std::deque<std::string> taken_;     // to be read
  std::vector<std::string> applied_;  // read, and to be removed
  Message reportedTaken_;             // the last complaint about one of these
  Message reportedEvent_;             // and about the event
};

#endif
