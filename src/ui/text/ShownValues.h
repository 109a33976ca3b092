// Names, times and durations as all windows show them, in UTF-8.
#ifndef KR_UI_TEXT_SHOWNVALUES_H
#define KR_UI_TEXT_SHOWNVALUES_H

#include <cstdint>
#include <string>

#include "ui/text/TextTable.h"

// Any thread that has the texts for itself.

// A file's name without its folder.
std::string ShownName(const std::string& path);

// What a job is called: its deck's name, and that of the restart file as the solver is told.
std::string ShownJob(const std::string& jobFile, const std::string& restartFile);

// The paths of both, in lines.
std::string ShownPath(const std::string& jobFile, const std::string& restartFile,
                      const TextTable& texts);

// "2 h 13 min", "13 min", "1 min 13 s". With a spread (see TimeLeft::Estimate) it is rounded as it
// deserves, and "about 2 h" when that shows.
std::string ShownDuration(double seconds, const TextTable& texts, double spread = 1);

// "2015-03-07 09:05", of seconds since 1970.
std::string ShownMinute(std::int64_t moment);
// "06:40", "Sun 06:40" on another day, the same with the date beyond six days.
std::string ShownMoment(std::int64_t moment, const TextTable& texts);

#endif
