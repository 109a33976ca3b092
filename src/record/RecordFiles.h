// Where the records lie.
#ifndef KR_RECORD_RECORDFILES_H
#define KR_RECORD_RECORDFILES_H

#include <string>

#include "messages/Message.h"

inline constexpr char kQueueKind[] = "queue";
inline constexpr char kHistoryKind[] = "history";

struct RecordFiles {
  std::string queue;
  std::string history;
  std::string lock;  // held by who writes them
  std::string machine;
  std::string machineId;  // MachineId()
};

// In the folder, for this machine alone: machines may share a home.
RecordFiles RecordFilesIn(const std::string& folder);

// A machine that has got another name goes on with what it wrote under its old one: where it has no
// file of its own and just one other has its id, that one is renamed, unless a copy of the program
// holds it. `note` hears of a new name, of a holder, and of files among which it cannot choose.
// Changes nothing where the id is not known.
void TakeFilesOfOldName(const RecordFiles& files, const MessageSink& note);

// For who only reads: the machine's history, or the one that it would go on with.
std::string HistoryToRead(const RecordFiles& files);

#endif
