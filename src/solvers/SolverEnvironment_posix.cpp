#include <cstdlib>

#include "solvers/SolverEnvironment.h"

bool SetSolverVariable(const std::string& name, const std::string& value) {
  return setenv(name.c_str(), value.c_str(), 1) == 0;
}
