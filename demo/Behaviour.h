// How a run is to go: what the comments "$ standin: ..." of a deck ask for. README.md lists them.
#ifndef STANDIN_BEHAVIOUR_H
#define STANDIN_BEHAVIOUR_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Version.h"

// `count` warning or error blocks with one message number.
struct Notices {
  int count = 0;
  int number = 0;
};

struct Behaviour {
  double runSeconds = 0;  // wall time
  std::vector<Notices> warnings;
  std::vector<Notices> errors;
  bool warningsWithoutBlank = false;  // memory lines follow a block directly
  std::optional<int> fail;            // the number of the error
  bool crash = false;
  bool hang = false;
  bool noMessage = false;
  bool noResult = false;     // of Vorel
  bool emptyResult = false;  // of Vorel
  bool ignoreTerm = false;
  bool child = false;
  bool echo = false;
  bool crlf = false;
  int adaptDumps = 0;
  std::optional<int> exitCode;
  std::optional<Version> version;
  std::vector<std::string> refused;  // commands that were not understood

  // Takes one line of a deck; lines that are not for the stand-in change nothing.
  void Read(std::string_view line);
};

// Reads the commands in the first thousand lines of the file; none when it cannot be read.
Behaviour ReadBehaviour(const std::string& path);

#endif
