// Which rank of a parallel run this process is, as the MPI launchers tell their processes through
// the environment. No MPI library is needed for that.
#ifndef STANDIN_LAUNCHER_H
#define STANDIN_LAUNCHER_H

struct Rank {
  bool parallel = false;  // started by a launcher, also as the only rank
  int number = 0;
  int size = 1;  // 1 when the launcher does not say

  bool First() const { return number == 0; }
};

Rank FindRank();

#endif
