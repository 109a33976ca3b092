// What there is to know about one run of one solver process: enough to go on with it in another
// copy of the program, and to remember it afterwards.
#ifndef KR_RUNS_RUNRECORD_H
#define KR_RUNS_RUNRECORD_H

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "jobs/JobFile.h"
#include "jobs/JobRequest.h"
#include "messages/Message.h"
#include "util/process/ProcessIdentity.h"

// A plain value: who keeps records writes the fields as they are. Texts are byte strings in the
// system's code page, but for those said to be ASCII. It holds no secret: the settings' access
// token is masked in the command line and in the reason.
struct RunRecord : RunResult {
  // Known before the process is started, but for the process.
  std::int64_t started = 0;  // seconds since 1970
  int stage = -1;            // index into JobFile::stages; -1: the job itself
  SolverKind solver = SolverKind::kLsDynaSingle;
  std::string jobFile;      // of the stage; empty for a restart job without one
  std::string restartFile;  // empty: none
  std::string program;      // path of the executable; empty: the command line's first word
  std::string commandLine;  // empty: the run ended before its solver was asked for
  std::string folder;       // its current folder
  // What its environment had beyond ours, but for the token.
  std::vector<std::pair<std::string, std::string>> variables;
  int cpus = 0;  // that the command line asks for, all hosts together; 0: it does not say
  std::uint64_t memory = 0;  // megabytes; 0: the solver's choice
  // What else the job was told, for another run of it.
  std::string extraOptions;
  int ncpu = 0;
  int pause = 0;  // seconds
  bool useSFile = false;
  bool dump = true;
  std::string outputName;   // DynaFields::outputName
  std::string machine;      // MachineName() of where it runs
  ProcessIdentity process;  // its mark is ASCII; id 0: not known yet
  std::string token;        // PTWrapperProcess::Token(); ASCII
  std::string filesBefore;  // FolderSnapshot::Text() of what lay in the folder; ASCII
  std::optional<std::int64_t> dumpsBefore;  // JobFile::dumpsBefore

  // Known at its end, as its result. A run that has not ended is Running.
  std::int64_t ended = 0;       // seconds since 1970
  std::optional<int> exitCode;  // none: not known
  JobStatus verdict = JobStatus::kRunning;

  bool operator==(const RunRecord&) const = default;
};

// A request for a job that runs what this one ran, with what that was told.
inline JobRequest RequestToRunAgain(const RunRecord& run) {
  JobRequest request;
  request.kind = run.solver;
  request.pause = run.pause;
  request.memory = run.memory;
  request.sGiven = run.useSFile;
  request.dump = run.dump;
  request.ncpu = run.ncpu;
  request.restartFile = run.restartFile;
  request.jobFile = run.jobFile;
  request.extraOptions = run.extraOptions;
  request.outputName = run.outputName;
  return request;
}

#endif
