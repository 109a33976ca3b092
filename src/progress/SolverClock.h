// Dates and times as solvers write them.
#ifndef KR_PROGRESS_SOLVERCLOCK_H
#define KR_PROGRESS_SOLVERCLOCK_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// Seconds from the beginning of 1970 on the solver's own clock: only differences mean anything.
// "05/15/26" (month, day, year) and "13:26:09". Nothing for other texts.
std::optional<std::int64_t> ClockSeconds(std::string_view date, std::string_view time);

// The date and time that a line ends in; `before` is then what stands before them, trimmed.
std::optional<std::int64_t> ClockAtEnd(std::string_view line, std::string_view& before);

// "2024-08-14T12:23:37" to the same seconds.
std::optional<std::int64_t> IsoClock(std::string_view text);

// What this computer's clock shows now, in the same seconds.
std::int64_t LocalClockNow();

#endif
