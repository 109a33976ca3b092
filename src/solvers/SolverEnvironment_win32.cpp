#include <windows.h>

#include "solvers/SolverEnvironment.h"

// The library's own functions remove a variable that is set to nothing.
bool SetSolverVariable(const std::string& name, const std::string& value) {
  return SetEnvironmentVariableA(name.c_str(), value.c_str()) != 0;
}
