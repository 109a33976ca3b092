// Jobs of a group that fail one after another as if nothing could run.
#ifndef KR_CORE_FAILURESTREAK_H
#define KR_CORE_FAILURESTREAK_H

#include "jobs/JobFile.h"

// Counts jobs in a row that fail within a minute each and for the same reason: a licence that is
// away, a missing solver, a full disk. One that ends in another way begins anew. One thread at a
// time.
class FailureStreak {
 public:
  // A job that has ended, with its list locked.
  void Take(const JobFile& job);

  int Count() const { return count_; }
  // Of the last one; of a job that could not start what is missing.
  const Message& Reason() const { return reason_; }

 private:
  Failure failure_;
  int count_ = 0;
  Message reason_;
};

#endif
