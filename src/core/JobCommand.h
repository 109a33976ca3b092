// What the solver of a job will be started with, to be read by the user.
#ifndef KR_CORE_JOBCOMMAND_H
#define KR_CORE_JOBCOMMAND_H

#include <string>
#include <utility>
#include <vector>

#include "core/JobGroup.h"
#include "record/JobImage.h"

// A job with what else decides on its command line, as it is at one moment.
struct CommandRequest {
  JobImage job;
  Settings settings;
  std::string groupText;
};

// Of jobs of the group, those that are there; quick, any thread.
std::vector<CommandRequest> CommandRequestsOf(const JobGroup& group, const JobList::Jobs& jobs,
                                              const Settings& settings);

// The settings' access token is masked.
struct JobCommand {
  std::string name;  // the deck's or restart file's path
  SolverKind kind = SolverKind::kLsDynaSingle;
  int stage = -1;  // from 0; -1: the job has no stages
  int stages = 0;
  bool isSkipped = false;   // the job begins with a later stage
  std::string commandLine;  // empty: there is none
  std::string folder;
  std::vector<std::pair<std::string, std::string>> variables;  // beyond Kestrun's own

  // What the solver is told of memory, as "memory=250m", and how many megabytes that is in its
  // precision.
  struct Memory {
    std::string argument;
    std::uint64_t megabytes = 0;
  };
  std::vector<Memory> memory;

  Message trouble;  // what keeps it from being started as things are; empty: nothing
};

// Of the job, or of each of its stages, from the code that starts it. Starts and writes nothing;
// reads the disk, so not for the interface thread.
std::vector<JobCommand> CommandsOf(const CommandRequest& request);

#endif
