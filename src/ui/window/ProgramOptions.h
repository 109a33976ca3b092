// The program's own command line options.
#ifndef KR_UI_WINDOW_PROGRAMOPTIONS_H
#define KR_UI_WINDOW_PROGRAMOPTIONS_H

#include <string>
#include <vector>

struct ProgramOptions {
  bool submit = false;  // --submit: run the current group once the command line's jobs are in it
  std::string report;   // --report=FILE: how the submitted jobs ended; absolute
  bool quitWhenDone = false;  // --quit-when-done: end the program then
  bool restore = false;       // --restore: bring back what the last session left
  bool help = false;          // --help
  bool version = false;       // --version

  // What only the copy that has the window can do.
  bool IsForOwnRun() const { return submit || restore; }
  // A report and an end belong to a run that is begun here; a user begins and ends others.
  bool LackSubmit() const { return !submit && (quitWhenDone || !report.empty()); }
};

// Takes the options out of the arguments; the rest, the program's name first, goes on as it is.
ProgramOptions TakeOptions(std::vector<std::string>& arguments);

// What --help prints.
std::string UsageText(const std::string& title);

#endif
