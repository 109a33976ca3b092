// The stand-in solver, and drivers that look at it more often than the program's do.
#ifndef KR_TESTS_STANDIN_H
#define KR_TESTS_STANDIN_H

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "solvers/JobSolver.h"

inline std::string StandinSolver() {
#ifdef _WIN32
  return std::string(KR_TEST_BIN_DIR) + "/standin_solver.exe";
#else
  return std::string(KR_TEST_BIN_DIR) + "/standin_solver";
#endif
}

inline std::vector<std::unique_ptr<JobSolver>> MakeQuickSolvers() {
  std::vector<std::unique_ptr<JobSolver>> solvers = MakeSolvers();
  for (const auto& solver : solvers) solver->pollTime = std::chrono::milliseconds(50);
  return solvers;
}

#endif
