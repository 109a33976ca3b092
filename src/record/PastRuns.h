// What runs of a deck took, for who wants to know before the next one.
#ifndef KR_RECORD_PASTRUNS_H
#define KR_RECORD_PASTRUNS_H

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>

#include "jobs/JobFile.h"
#include "runs/RunRecord.h"
#include "util/signals/Mutex.h"

struct PastRun {
  std::int64_t started = 0;  // seconds since 1970
  std::int64_t seconds = 0;  // from its start to its end
  int cpus = 0;              // all hosts together
};

// The newest run of each deck, or of each restart of it, that ended normally while it was watched.
// Decks are told apart by their paths as they are written; no file is looked at. Any thread.
class PastRuns {
 public:
  void Add(const RunRecord& run);

  // Of a job with stages: of those together that a run of it would run, when all of them have run
  // before, with the newest start and the most processors. With the lock of the job's list held.
  std::optional<PastRun> Of(const JobFile& job) const;

 private:
  std::optional<PastRun> Find(const JobFile& stage) const;

  mutable Mutex mutex_;
  std::unordered_map<std::string, PastRun> runs_ KR_GUARDED_BY(mutex_);
};

#endif
