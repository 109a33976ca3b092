// How long a job, or a group of them, will still take.
#ifndef KR_CORE_JOBTIMELEFT_H
#define KR_CORE_JOBTIMELEFT_H

#include <cstdint>
#include <functional>
#include <optional>

#include "core/JobGroup.h"
#include "core/RunWatch.h"
#include "jobs/JobFile.h"
#include "progress/RunWatcher.h"
#include "record/PastRuns.h"

using PastRunOf = std::function<std::optional<PastRun>(const JobFile& job)>;

// In seconds, with its pauses: of what runs by its estimate, else, as of what waits, by the past
// run. Nothing when that does not tell; 0 for a job that has ended. `state` is how its newest run
// stands, `now` in seconds since 1970. With the lock of the job's list held; asks no disk.
std::optional<double> JobTimeLeft(const JobFile& job, const std::optional<RunState>& state,
                                  const PastRunOf& past, std::int64_t now);

// Of all its jobs; one that does not tell counts as the mean of those that have finished, as the
// decks of a study are alike. Nothing when the group does not run, has no job to run, or fewer than
// three have finished to go by. Any thread, without the lock of the list; asks no disk.
std::optional<double> GroupTimeLeft(const JobGroup& group, const RunWatch& watch,
                                    const PastRunOf& past);

#endif
