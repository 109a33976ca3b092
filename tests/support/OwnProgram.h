// This test program, started once more: what a variable of its environment says makes it a child.
#ifndef KR_TESTS_OWNPROGRAM_H
#define KR_TESTS_OWNPROGRAM_H

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

#endif
