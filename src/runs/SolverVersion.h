// Which version an LS-DYNA executable says it is.
#ifndef KR_RUNS_SOLVERVERSION_H
#define KR_RUNS_SOLVERVERSION_H

#include <atomic>
#include <string>

#include "messages/Message.h"

struct VersionQuery {
  MessageSink report;                        // for the application log; may be empty
  const std::atomic<bool>* abort = nullptr;  // ends the query early; may be null
};

// Starts the solver with "info" in its own folder, unseen, gives it two seconds to leave its report
// "lstc.log" there, and ends it. A report that was there before counts only when the time passes
// without a new one. True when the report names both numbers. "Read output information file [%s]
// failed" when there is none.
//
// Queries take turns, since a folder has one report. Any thread but the interface's.
bool ReadSolverVersion(const std::string& solverPath, int& major, int& revision,
                       const VersionQuery& query = {});

#endif
