// The small files that a run leaves beside its message file and its results.
#ifndef STANDIN_SIDEFILES_H
#define STANDIN_SIDEFILES_H

#include <optional>
#include <string>

#include "Deck.h"
#include "Options.h"

// Where a run stood when it wrote a restart dump.
struct RestartState {
  double time = 0;
  double endTime = 0;
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

// "d3dump01" and on. The number counts from 1.
bool WriteDump(int number, const RestartState& state);
// Nothing when the file is not a dump of ours.
std::optional<RestartState> ReadDump(const std::string& path);

// "dynain": the nodes and shells of the parts that the deck wants handed on, as they were.
bool WriteFormedResult(const Deck& deck);

// "adapt01.adaptdmp" and on.
bool WriteAdaptDump(int number);

// Looks for a sense switch: the file "d3kil" holding "sw1" to "sw4". 0 for none.
int ReadSenseSwitch();
void RemoveSenseSwitch();

#endif
