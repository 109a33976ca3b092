// How the files are called that a job's solver writes: with jobid=NAME on its line "NAME." stands
// in front of all names ("NAME.messag", "NAME.d3plot", "NAME.d3kil"), so that decks that share a
// folder keep their results apart. Any thread that may read the job.
#ifndef KR_JOBS_OUTPUTPREFIX_H
#define KR_JOBS_OUTPUTPREFIX_H

#include <optional>
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

// What stands behind the prefix in a name that has it: "CASE2.messag" of "NAME.CASE2.messag", and
// of "CASE2.NAME.messag", as some solvers put it; the whole name where the prefix is empty. Nothing
// for a name without the prefix. Where the system's file names do not tell small letters from big
// ones, neither does this.
std::optional<std::string> BehindPrefix(std::string_view name, std::string_view prefix);

// How many characters of the name are a case and its dot, "CASE12.messag"; 0: it begins with none.
std::size_t CaseLength(std::string_view name);

// How the files of one run are called.
struct OutputNames {
  std::string prefix;
  bool hasCases = false;  // some solvers then use the case alone, without the prefix
  bool operator==(const OutputNames&) const = default;
};
OutputNames OutputNamesOf(const JobFile& job);

// Whether these arguments tell the solver to run the cases of its deck.
bool AsksForCases(const std::string& arguments);

// The value of the last jobid= in the options; empty: there is none.
std::string TypedJobId(const std::string& extraOptions);

// A name for the results of the deck that a solver takes and that is none of `taken` (in small
// letters): the deck's own as far as it can be, at most 72 of "A-Z", "a-z", "0-9", "_" and "-";
// "job1", "job2" and on for names that have none of these.
std::string OutputNameFor(const std::string& deck, const std::set<std::string>& taken);

#endif
