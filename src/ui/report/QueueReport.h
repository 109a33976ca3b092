// What became of jobs, for people and other programs: a page, a table, lines.
#ifndef KR_UI_REPORT_QUEUEREPORT_H
#define KR_UI_REPORT_QUEUEREPORT_H

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "core/JobGroup.h"
#include "progress/RunReader.h"

enum class ReportForm {
  kPage,   // HTML, with everything inside
  kTable,  // CSV
  kLines,  // fields between tabs
};
// By its ending: .html, .htm; .csv; all others.
ReportForm FormOfReport(const std::string& path);

// A job or a stage at one moment. Texts are byte strings in the system's code page.
struct ReportedJob : RunResult {
  std::string jobFile;
  std::string restartFile;
  std::string folder;
  std::string options;
  SolverKind solver = SolverKind::kLsDynaSingle;
  JobStatus status = JobStatus::kQueued;
  std::int64_t started = 0;  // seconds since 1970
  std::int64_t ended = 0;
  int cpus = 0;              // below 1: the settings' number
  std::uint64_t memory = 0;  // megabytes; 0: not given
  RunToRead run = {};        // its files; no path: it has not run
  std::vector<ReportedJob> stages = {};

  const std::string& MainFile() const { return jobFile.empty() ? restartFile : jobFile; }
};

struct ReportedGroup {
  std::string name;
  std::optional<GroupPause> pause;
  std::vector<ReportedJob> jobs;
};

// All its jobs, or those of them alone, as they are now. Any thread; reads no files.
ReportedGroup ReportOf(const JobGroup& group, const std::vector<JobId>* only = nullptr);

// What is said of a job behind its status, in English: "solver error 40509", "stopped at 38% of the
// end time"; empty for others.
Message HowItEnded(const ReportedJob& job);

// One line a job: file, status word, solver name, the message file or, of an aborted job, the
// reason, of a queued one of a group that pauses why that does, when it started and ended in local
// time, and the seconds between; between tabs. A job that did not run has no times. One that
// stopped before its end time, or failed, has the words for that behind.
std::string ReportLines(const ReportedGroup& group);

// A line of titles, then one a job, as the history has it.
std::string ReportTable(const std::vector<ReportedGroup>& groups);

#endif
