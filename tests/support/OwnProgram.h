// This test program, started once more: what a variable of its environment says makes it a child.
#ifndef KR_TESTS_OWNPROGRAM_H
#define KR_TESTS_OWNPROGRAM_H

#include <cstdlib>
#include <string>

#include "util/files/FileDirWrapper.h"
#include "util/process/PTWrapper.h"

inline PTWrapperProcessStart OwnProgram(const std::string& variable, const std::string& value) {
  PTWrapperProcessStart start;
  start.program = FileDirWrapper::ProgramPath();
  FileDirWrapper::QuotePath(start.program, start.commandLine);
  start.showWindow = false;
  start.variables = {{variable, value}};
  return start;
}

// Static, so that it comes before the tests' own main: in a process with this variable, does what
// its value says instead of the tests and ends with that code.
class OwnProgramChild {
 public:
  OwnProgramChild(const char* variable, int (*behave)(const std::string& value)) {
    const char* value = std::getenv(variable);
    if (value != nullptr && *value != '\0') std::_Exit(behave(value));
  }
};

#endif
