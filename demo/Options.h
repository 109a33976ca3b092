// The keyword solver's command line: words of the form key=value, and a few single words.
#ifndef STANDIN_OPTIONS_H
#define STANDIN_OPTIONS_H

#include <string>
#include <vector>

struct Options {
  std::vector<std::string> words;  // the arguments as they came, the program's name left out

  std::string deck;              // i=
  std::string restart;           // r=
  long long memoryWords = 0;     // memory=: words, or millions of words with the suffix m
  long long memory2Words = 0;    // memory2=
  int cpus = 1;                  // ncpu=
  std::string prefix;            // jobid=NAME: "NAME.", in front of all files that are written
  bool noDump = false;           // d=nodump
  bool cases = false;            // CASE
  bool info = false;             // info
  bool doublePrecision = false;  // precision=double; also by the program's name, see main.cpp
  int sleepSeconds = 0;          // standin-sleep=: only sleep; how a child of our own is started

  std::string error;  // what is wrong with the first bad argument; empty when all are good
};

// Keys are compared without regard to case. Words that are not known are kept in `words` and
// otherwise let pass, as the real program does.
Options ParseOptions(const std::vector<std::string>& words);

#endif
