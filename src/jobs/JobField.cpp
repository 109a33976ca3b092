#include "jobs/JobField.h"

#include <type_traits>

namespace {

// Calls `use` with the field; false when the job has none. `Job` is const to read.
template <typename Job, typename Use>
bool WithField(Job& job, JobField field, Use use) {
  using Dyna = std::conditional_t<std::is_const_v<Job>, const JobFileDyna, JobFileDyna>;
  auto* const dyna = dynamic_cast<Dyna*>(&job);
  switch (field) {
    case JobField::kMemory:
      return use(job.memory);
    case JobField::kCpus:
      return use(job.ncpu);
    case JobField::kPause:
      return use(job.pause);
    case JobField::kPrecision:
      return dyna != nullptr && use(dyna->solverType);
    case JobField::kForce:
      return dyna != nullptr && use(dyna->useSFile);
    case JobField::kDump:
      return dyna != nullptr && use(dyna->dump);
    case JobField::kOptions:
      return job.stages.empty() && use(job.extraOptions);
    case JobField::kOutputName:
      return dyna != nullptr && job.stages.empty() && use(dyna->outputName);
  }
  return false;
}

}  // namespace

std::optional<FieldValue> ValueOf(const JobFile& job, JobField field) {
  std::optional<FieldValue> value;
  WithField(job, field, [&value](const auto& found) {
    value = found;
    return true;
  });
  return value;
}

bool CanChange(const JobFile& job, JobField field) {
  if (field != JobField::kOutputName) return job.status != JobStatus::kRunning;
  return job.status == JobStatus::kQueued || job.status == JobStatus::kWaiting;
}

bool SetValue(JobFile& job, JobField field, const FieldValue& value) {
  return WithField(job, field, [&value](auto& found) {
    const auto* const given = std::get_if<std::decay_t<decltype(found)>>(&value);
    if (given != nullptr) found = *given;
    return given != nullptr;
  });
}
