// Jobs of the queue that share a folder: whose results would be written over each other's, and
// keeping them apart by names of their own (jobs/OutputPrefix.h). Any thread.
#ifndef KR_CORE_SHAREDFOLDERS_H
#define KR_CORE_SHAREDFOLDERS_H

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "core/JobGroupManager.h"

struct SharedResults {
  int jobs = 0;                      // that write over each other's results
  std::vector<std::string> folders;  // where
  std::vector<JobId> separable;      // those of them that can still be kept apart; may be none
};

// Of the folders in which one of these jobs lies. Jobs that run decks and have no name for their
// results write over each other's; kept apart can be queued LS-DYNA jobs, but no restarts, which go
// on with the files of another run, and no jobs with stages, which read what the one before wrote.
SharedResults FindSharedResults(const JobGroupManager& manager, const std::set<JobId>& jobs);

// What separate_results of the settings says.
enum SeparateResults : int { kNeverApart = 0, kAskApart, kAlwaysApart };

// For a job that is in no list yet: gives it a name for its results when another job that runs
// decks is in its folder, and those there that can still be kept apart too.
void KeepNewJobApart(JobGroupManager& manager, JobFile& job);

struct GroupFields {
  std::shared_ptr<JobGroup> group;
  std::vector<FieldBefore> fields;
};

// Gives each of them a name for its results that no other job in its folder has. How many took it:
// one that has begun to run meanwhile does not. `before` gets their JobField::kOutputName.
int KeepResultsApart(JobGroupManager& manager, const std::vector<JobId>& jobs,
                     std::vector<GroupFields>* before = nullptr);

// For jobs that come into a list with a name of ours for their results, or are about to run: when
// several jobs of a folder have one name, one keeps it. That is the one that has run, else one that
// was there before these; the others that have not begun to run get a free name, which the log
// tells. Restarts go on with the files of another run and keep theirs. With no list locked.
void TakeFreeNames(JobGroupManager& manager, const std::vector<JobId>& jobs);

// Whether it is queued and of those that can be kept apart, or is kept so already.
bool CanKeepApart(const JobFile& job);

// The prefixes of the files of all other jobs in this one's folders.
std::vector<std::string> PrefixesBeside(const JobGroupManager& manager, const JobFile& job);

#endif
