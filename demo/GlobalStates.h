// The file "glstat": the energies of the made-up run, a block a state, and "status.out". Laid out
// as keyword solvers do.
#ifndef STANDIN_GLOBALSTATES_H
#define STANDIN_GLOBALSTATES_H

#include <cstdio>
#include <string>
#include <vector>

#include "Behaviour.h"

struct GlobalState {
  int cycle = 0;
  double time = 0;
  double step = 0;
  double share = 0;        // of the run, 0 to 1
  std::string controlled;  // "shell       7 of part         1"
};

class GlobalStates {
 public:
  GlobalStates() = default;
  ~GlobalStates();
  GlobalStates(const GlobalStates&) = delete;
  GlobalStates& operator=(const GlobalStates&) = delete;

  // Writes the head.
  bool Begin(const std::string& path, const std::string& title, const std::string& solver);
  // On the disk when it returns. False when it could not be written.
  bool Write(const GlobalState& state, const Sickness& sickness);
  // The disk is full: the file ends in the middle of a block.
  void BreakOff();

 private:
  std::FILE* file_ = nullptr;
};

// What a run believes of its own end, for "status.out" and the message file. Seconds.
std::vector<std::string> EstimateLines(double endTime, double elapsed, double total);

#endif
