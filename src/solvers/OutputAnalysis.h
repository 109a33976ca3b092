// Short reports made from what a solver left behind. Any thread.
#ifndef KR_SOLVERS_OUTPUTANALYSIS_H
#define KR_SOLVERS_OUTPUTANALYSIS_H

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "jobs/JobStatus.h"
#include "messages/Message.h"

struct AnalysisHooks {
  // Bytes read and the file's size, now and then. Returning false ends the analysis.
  std::function<bool(std::uint64_t done, std::uint64_t size)> progress;
  // Gives our own lines of the reports in the interface's language; empty: English.
  std::function<std::string(const Message& message)> say;
  // Gives lines of files, byte strings in the system's code page, in the encoding of those lines.
  std::function<std::string(const std::string& bytes)> decode;
};

struct AnalysisReport {
  enum class Outcome {
    kRead,
    kNotRead,  // no such file, or not to be read to its end
    kEnded,    // by the progress hook; there are no lines
  };
  Outcome outcome = Outcome::kNotRead;
  std::vector<std::string> lines;  // as they are shown

  // Of message files.
  std::int64_t errors = 0;
  std::int64_t warnings = 0;
  std::string cpuTime;  // "   0 hours  0 minutes  2 seconds"; empty before the run's end
};

// LS-DYNA and utility batch: counts, first 20 warnings and all errors with hints for known numbers.
// Reads a file of any size in small pieces. A list of messages that would grow beyond some
// megabytes is cut, and says so in its last line; the counts go on.
AnalysisReport AnalyseMessageFile(const std::string& messageFile, const AnalysisHooks& hooks = {});

// INC: the total time of a job that has finished. Vorel: the time between the first and the last
// date of the output, and its error lines. Without the file, only its name.
AnalysisReport AnalyseIncInfo(const std::string& jobFile, JobStatus status,
                              const AnalysisHooks& hooks = {});
AnalysisReport AnalyseVorelOut(const std::string& jobFile, const AnalysisHooks& hooks = {});

// What stands for the report of a file that the run has not written.
AnalysisReport NameOfOutput(const std::string& path, const AnalysisHooks& hooks);

// The files that these two read: beside the job file, by its name.
std::string IncInfoFile(const std::string& jobFile);
std::string VorelOutFile(const std::string& jobFile);

// The same for an output file itself.
AnalysisReport AnalyseIncInfoFile(const std::string& infoFile, const AnalysisHooks& hooks = {});
AnalysisReport AnalyseVorelOutFile(const std::string& outFile, const AnalysisHooks& hooks = {});

// " 23 Hours 30 Minutes 0 Seconds". Dates are MM/DD/YY, times HH:MM:SS with "pm" or not. Every
// month counts 30 days, so the result is right only within one.
Message ElapsedText(const std::string& startDate, const std::string& startTime,
                    const std::string& endDate, const std::string& endTime);

#endif
