// How a run is to go: what the comments "$ standin: ..." of a deck ask for. README.md lists them.
#ifndef STANDIN_BEHAVIOUR_H
#define STANDIN_BEHAVIOUR_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Deck.h"
#include "Version.h"

// `count` warning or error blocks with one message number.
struct Notices {
  int count = 0;
  int number = 0;
};

// What goes wrong in the second half of a run's numbers.
struct Sickness {
  double stepShare = 1;         // of the first time step, at the end
  double energyRatio = 1;       // total energy / initial energy, at the end
  double hourglassPercent = 0;  // of the internal energy, at the end
  double addedMassPercent = 0;  // at the end
  bool nan = false;
};

struct Behaviour {
  double runSeconds = 0;  // wall time
  int lines = 0;          // of progress; 0: by the wall time
  int cycles = 0;         // of the whole run; 0: one a line
  bool implicit = false;
  bool diskFull = false;
  Sickness sickness;
  std::vector<Notices> warnings;
  std::vector<Notices> errors;
  bool warningsWithoutBlank = false;  // memory lines follow a block directly
  std::optional<int> fail;            // the number of the error
  std::optional<int> failingRank;     // the only one that fails, has errors, crashes or is killed
  bool crash = false;
  std::optional<int> killSignal;
  bool noLicence = false;
  bool windowSize = false;
  int chatter = 0;  // lines on the console
  bool hang = false;
  bool noMessage = false;
  bool noResult = false;     // of Vorel
  bool emptyResult = false;  // of Vorel
  bool ignoreTerm = false;
  bool child = false;
  bool echo = false;
  bool crlf = false;
  std::string caseNames;  // "ALONE" or "FIRST"; see README.md
  int adaptDumps = 0;
  int dumps = 0;         // restart dumps on the way
  int runningDumps = 0;  // of them into one file
  std::optional<int> exitCode;
  std::optional<Version> version;
  std::vector<std::string> refused;  // commands that were not understood

  // Takes one line of a deck; lines that are not for the stand-in change nothing.
  void Read(std::string_view line);
  // What is for another rank goes.
  void KeepFor(int rank);
};

// Reads the commands in the first thousand lines of the file; none when it cannot be read. Those
// between the lines of a load case count for that case alone; `loadCase` null: none is run.
Behaviour ReadBehaviour(const std::string& path, const LoadCase* loadCase = nullptr);

#endif
