// Variables that solvers inherit from this process.
#ifndef KR_SOLVERS_SOLVERENVIRONMENT_H
#define KR_SOLVERS_SOLVERENVIRONMENT_H

#include <string>

// Sets a variable of this process, also to an empty text. Only while SolverStartMutex is held.
bool SetSolverVariable(const std::string& name, const std::string& value);

#endif
