// Where the records lie.
#ifndef KR_RECORD_RECORDFILES_H
#define KR_RECORD_RECORDFILES_H

#include <string>

inline constexpr char kQueueKind[] = "queue";
inline constexpr char kHistoryKind[] = "history";

struct RecordFiles {
  std::string queue;
  std::string history;
  std::string lock;  // held by who writes them
  std::string machine;
};

// In the folder, for this machine alone: machines may share a home.
RecordFiles RecordFilesIn(const std::string& folder);

#endif
