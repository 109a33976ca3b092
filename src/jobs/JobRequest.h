// What is asked of the queue: a job that is to be made.
#ifndef KR_JOBS_JOBREQUEST_H
#define KR_JOBS_JOBREQUEST_H

#include <cstdint>
#include <optional>
#include <string>

#include "jobs/JobFile.h"

// A record of the hand-over file, or a file chosen in the window.
struct JobRequest {
  JobId id = JobId::kNone;         // what the job or stage will be called; the intake gives it
  std::optional<SolverKind> kind;  // none: by the file's ending, and a deck's own wish
  int pause = 0;                   // seconds
  std::uint64_t memory = 0;        // megabytes; 0: the deck's or the settings' value
  bool sGiven = false;
  bool dump = true;
  int ncpu = 0;
  std::string inputFile;    // the "i" value
  std::string restartFile;  // the "r" value
  std::string jobFile;      // the deck when there is no inputFile
  std::string extraOptions = {};
  std::string outputName = {};  // DynaFields::outputName
  int groupId = 0;              // 0: the group that is current when the request is added
  bool fromWindow = false;      // who adds it asks whether results in one folder are kept apart
  // The deck becomes the last stage of this job instead of a job of its own.
  JobId stageOf = JobId::kNone;

  bool operator==(const JobRequest&) const = default;
};

// A request with the settings' pause and CPU count.
inline JobRequest MakeJobRequest(const Settings& settings) {
  JobRequest request;
  request.pause = settings.pause_time;
  request.ncpu = settings.cpu_count;
  return request;
}

#endif
