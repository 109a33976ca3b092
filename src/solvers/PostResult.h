// The file of a job that has ended which a post-processor opens.
#ifndef KR_SOLVERS_POSTRESULT_H
#define KR_SOLVERS_POSTRESULT_H

#include <string>
#include <vector>

#include "jobs/JobFile.h"

struct PostSource {
  JobStatus status = JobStatus::kQueued;  // of the job
  // Of the job, or of the last stage that has ended.
  SolverKind solverType = SolverKind::kLsDynaSingle;
  std::string jobFile;
  std::string folder;
  std::string simulationType;
  std::string prefix;  // jobs/OutputPrefix.h
  std::string caseName =
      {};  // of a deck with cases, in front of the names of its message file's case
  std::string deckIdentifier;  // in front of the names of the deck's output files; may be empty
};

// With the job's list locked.
PostSource PostSourceOf(const JobFile& job);

// A springback compensation stage: its result is geometry, for another program.
bool IsCompensation(const PostSource& source);

// The paths at which the result may be, the likeliest first. Empty for a solver kind without any.
std::vector<std::string> PostResults(const PostSource& source);

// The same of what LS-DYNA makes of a deck.
std::vector<std::string> DeckResults(const PostSource& source);

#endif
