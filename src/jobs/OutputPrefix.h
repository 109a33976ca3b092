// How the files are called that a job's solver writes: with jobid=NAME on its line "NAME." stands
// in front of all names ("NAME.messag", "NAME.d3plot", "NAME.d3kil"), so that decks that share a
// folder keep their results apart. Any thread that may read the job.
#ifndef KR_JOBS_OUTPUTPREFIX_H
#define KR_JOBS_OUTPUTPREFIX_H

#include <set>
#include <string>
#include <string_view>

#include "jobs/JobFile.h"

// Whether the solver of the kind takes jobid=NAME.
bool TakesJobId(SolverKind kind);

// "NAME.", or nothing for the usual names. A name that the user has typed into the extra options
// counts, else the job's own one. What a deck calls itself (*KEYWORD_ID) is not looked at.
std::string OutputPrefix(const JobFile& job);
std::string OutputPrefix(SolverKind kind, const std::string& outputName,
                         const std::string& extraOptions);

// Whether the file's name begins with the prefix; always with an empty one. Where the system's file
// names do not tell small letters from big ones, neither does this.
bool HasPrefix(std::string_view name, std::string_view prefix);

// The value of the last jobid= in the options; empty: there is none.
std::string TypedJobId(const std::string& extraOptions);

// A name for the results of the deck that a solver takes and that is none of `taken` (in small
// letters): the deck's own as far as it can be, at most 72 of "A-Z", "a-z", "0-9", "_" and "-".
std::string OutputNameFor(const std::string& deck, const std::set<std::string>& taken);

#endif
