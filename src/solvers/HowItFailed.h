// How a run failed, as a value: what people count and sort by.
#ifndef KR_SOLVERS_HOWITFAILED_H
#define KR_SOLVERS_HOWITFAILED_H

#include <optional>
#include <string>
#include <string_view>

#include "jobs/JobFile.h"

// An error of a message file begins with it.
inline constexpr std::string_view kErrorLine = "*** Error";

// What the words of an error say: a full disk, a licence, the time step, else its number.
Failure FailureInError(std::string_view words);

// What the last lines of a message file say beside its errors; kNone: nothing. A solver that ends
// for want of time step, disk or licence says so there.
Failure FailureInEnd(const std::string& messageFile);

// Of a run that was aborted, when its solver has ended. Begins with what the driver found in the
// solver's files, and goes on with what it printed, how it ended and how much space is left.
// `stepFell`: its time step had collapsed. During the run, on its thread.
Failure HowItFailed(const JobFile& job, std::optional<int> exitCode, bool stepFell);

#endif
