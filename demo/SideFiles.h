// The small files that a run leaves beside its message file and its results.
#ifndef STANDIN_SIDEFILES_H
#define STANDIN_SIDEFILES_H

#include <optional>
#include <string>

#include "Deck.h"
#include "Launcher.h"
#include "Options.h"

// Where a run stood when it wrote a restart dump.
struct RestartState {
  double time = 0;
  double endTime = 0;
  int dumps = 0;  // that have been written so far, this one included
};

// The value, or "(not set)".
std::string EnvironmentText(const char* name);

// A file that can be read, no folder.
bool IsFile(const std::string& path);

bool WriteTextFile(const std::string& path, const std::string& text);

// The listing "d3hsp": arguments, environment and what was read.
bool WriteListing(const Options& options, const Deck& deck);

// "standin_echo.txt": one argument a line, then "cwd=" and "LSTC_MEMORY=".
bool WriteEcho(const Options& options);

// The rank's own file of a dump, "d3dump01.0002"; the name itself when nothing is parallel.
std::string RankFile(const std::string& dump, const Rank& rank);
bool WriteDump(const std::string& path, const RestartState& state);
// Nothing when the file is not a dump of ours, or not a whole one.
std::optional<RestartState> ReadDump(const std::string& path);

// "dynain": the nodes and shells of the parts that the deck wants handed on, as they were. The
// prefix is that of the options, here and below.
bool WriteFormedResult(const std::string& prefix, const Deck& deck);

// "adapt01.adaptdmp" and on.
bool WriteAdaptDump(const std::string& prefix, int number);

// A sense switch: the file "d3kil" holding "sw1" to "sw4", or "endtime=..." with a new end time.
struct SenseSwitch {
  int number = 0;  // 0: the end time
  double endTime = 0;
};
std::optional<SenseSwitch> ReadSenseSwitch(const std::string& prefix);
void RemoveSenseSwitch(const std::string& prefix);

#endif
