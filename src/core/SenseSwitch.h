// Asking a distributed run to stop by itself.
#ifndef KR_CORE_SENSESWITCH_H
#define KR_CORE_SENSESWITCH_H

#include "core/JobGroupManager.h"

enum class SenseSwitch {
  kNoJob,     // "Not find running job, stop running job failed"
  kBadJob,    // "Job data error or job file is empty"
  kNoSwitch,  // "BG_SWITCH file [%s] does not exist"
  kFailed,    // "Write file [%s] failed"
  kAsked
};

// Tells the solver of the current group's active job to write a restart file and end, through the
// file "d3kil" in the folder of the job, or of its stage that runs now. The solver looks for it
// when its folder has a file "bg_switch". All but kAsked leave a line in the log.
SenseSwitch AskSolverToStop(JobGroupManager& manager);

#endif
