// Telling a solver that runs what to do, through the file "d3kil" in its folder. The solver looks
// for it now and then, obeys, and removes it. Operations write files: any thread.
#ifndef KR_CORE_SENSESWITCH_H
#define KR_CORE_SENSESWITCH_H

#include <string>

#include "core/JobGroupManager.h"

enum class SolverSwitch {
  kStop = 1,   // writes a restart dump and ends
  kTellTime,   // writes a line of its progress
  kDump,       // writes a restart dump and goes on
  kPlotState,  // writes a state of its results
  kEndTime,    // runs to another end time
};

// Puts the switch into the folder in which a solver runs, in the place of one that is there.
// `endTime` in the deck's unit, for kEndTime. False when it cannot be written.
bool AskSolver(const std::string& folder, SolverSwitch what, double endTime = 0);

// Where the switch lies.
std::string SwitchFileIn(const std::string& folder);

// Takes back what AskSolver has put there and no solver has taken yet: the next run would obey it.
// Leaves alone what others have written. For the end of each run.
void WithdrawSwitch(const std::string& folder);

enum class SenseSwitch {
  kNoJob,     // "Not find running job, stop running job failed"
  kBadJob,    // "Job data error or job file is empty"
  kNoSwitch,  // "BG_SWITCH file [%s] does not exist"
  kFailed,    // "Write file [%s] failed"
  kAsked
};

// Tells the solver of the current group's active job, or of its stage that runs now, to write a
// restart file and end (kStop). A distributed solver looks for it when its folder has a file
// "bg_switch". All but kAsked leave a line in the log.
SenseSwitch AskSolverToStop(JobGroupManager& manager);

#endif
