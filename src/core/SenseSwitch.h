// Telling a solver that runs what to do, through the file "d3kil" in its folder. The solver looks
// for it now and then, obeys, and removes it. Operations write files, unless they say that they do
// not: any thread.
#ifndef KR_CORE_SENSESWITCH_H
#define KR_CORE_SENSESWITCH_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "core/JobGroupManager.h"
#include "jobs/OutputPrefix.h"
#include "progress/RunReader.h"

enum class SolverSwitch {
  kStop = 1,   // writes a restart dump and ends
  kTellTime,   // writes a line of its progress
  kDump,       // writes a restart dump and goes on
  kPlotState,  // writes a state of its results
  kEndTime,    // runs to another end time
};

// A run that may be asked, as long as it goes on. No two runs are the same.
enum class SwitchRun : std::uint64_t { kNone = 0 };

// Around each run of a solver in a folder. Before it starts (`isNew`) a switch that this program
// has left there, in an earlier session even, is removed: the solver would obey it. After the end
// nothing is written for the run any more, and what no solver has taken is taken back; what others
// have written stays. The names are those of the job's files (jobs/OutputPrefix.h): its solver
// looks for "NAME.d3kil". While it runs cases it may look for that of the case, so there are two
// files then; once it has taken one the other means nothing any more.
void BeginSwitches(const std::string& folder, JobId job, bool isNew, const OutputNames& names = {});
void EndSwitches(const std::string& folder);

// The job's run that goes on in this folder; kNone when there is none. Touches no disk.
SwitchRun SwitchRunOf(const std::string& folder, JobId job);

// Puts the switch into the folder in which the run goes on, in the place of one that is there.
// `endTime` in the deck's unit, for kEndTime. False when it cannot be written, and when that run
// has ended.
bool AskSolver(const std::string& folder, SwitchRun run, SolverSwitch what, double endTime = 0);

// What lies there for the run's solver, whoever has written it. Nothing once it was taken.
std::optional<LyingRequest> RequestIn(const std::string& folder, SwitchRun run);

// Takes this request back, whoever has written it. False when the solver was faster.
bool WithdrawSwitch(const std::string& folder, SwitchRun run, const std::string& text);

// What a text in such a file asks for; nothing for one that this program does not write.
struct AskedSwitch {
  SolverSwitch what = SolverSwitch::kStop;
  std::string endTime = {};  // as it stands there, for kEndTime
};
std::optional<AskedSwitch> SwitchIn(std::string_view text);

enum class SenseSwitch {
  kNoJob,     // "Not find running job, stop running job failed"
  kBadJob,    // "Job data error or job file is empty"
  kNoSwitch,  // "BG_SWITCH file [%s] does not exist"
  kFailed,    // "Write file [%s] failed"
  kAsked
};

// The solver of the current group's active job, or of its stage that runs now, which is to write a
// restart file and end (kStop).
struct StopRequest {
  SenseSwitch answer = SenseSwitch::kAsked;  // already known, when it is another one
  std::string folder;
  OutputNames names = {};  // of the job's files
  SwitchRun run = SwitchRun::kNone;
};
// Touches no disk.
StopRequest SolverToStop(JobGroupManager& manager);
// Asks it. A distributed solver looks for the request when its folder has a file "bg_switch". The
// folder's file system may not answer: not on the interface thread.
SenseSwitch AskSolverToStop(const StopRequest& request);
// All answers but kAsked leave a line in the log.
void ReportStop(const StopRequest& request, SenseSwitch answer, AppLog& log);

#endif
