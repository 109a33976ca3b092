// The fields of a job that are set for several jobs at once.
#ifndef KR_JOBS_JOBFIELD_H
#define KR_JOBS_JOBFIELD_H

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "jobs/JobFile.h"

enum class JobField {
  kMemory,     // std::uint64_t, megabytes
  kCpus,       // int
  kPause,      // int, seconds
  kPrecision,  // SolverKind; LS-DYNA jobs
  kForce,      // bool, JobFileDyna::useSFile
  kDump,       // bool; LS-DYNA jobs
  kOptions,    // std::string; not of a job with stages, which have their own
  kOutputName  // std::string, DynaFields::outputName; not of a job with stages
};
using FieldValue = std::variant<std::uint64_t, int, SolverKind, bool, std::string>;

// None: the job has no such field. Like all fields of a job these are read and written while its
// list is locked.
std::optional<FieldValue> ValueOf(const JobFile& job, JobField field);
// Whether it may be changed now: the name of the results before the run that writes them alone.
bool CanChange(const JobFile& job, JobField field);
// Of the job alone. False when it has no such field, or the value is of another type.
bool SetValue(JobFile& job, JobField field, const FieldValue& value);

// What a field was before a change, of the stages too.
struct FieldBefore {
  JobId job = JobId::kNone;
  FieldValue value;
  std::vector<std::pair<JobId, FieldValue>> stages;

  bool operator==(const FieldBefore&) const = default;
};

#endif
