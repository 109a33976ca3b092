#include <unistd.h>

#include <cstdlib>
#include <vector>

#include "core/ApplicationSystem.h"
#include "util/ChildStart_posix.h"
#include "util/StrWrapper.h"

void ReserveEnvironment() {
  setenv("LSTC_MEMORY", "", 0);
}

bool ProgramExists(const std::string& commandLine) {
  std::vector<std::string> words;
  StrWrapperTxt::SplitCommandLine(commandLine, words);
  return !words.empty() && !FindProgram(words.front()).empty();
}

void LeaveProcess(int exitCode) {
  _exit(exitCode);
}
