#include <sys/wait.h>
#include <unistd.h>

#include <vector>

#include "core/SystemServices.h"
#include "util/files/FileDirWrapper.h"
#include "util/process/ChildStart_posix.h"
#include "util/text/DateTimeWrapper.h"
#include "util/text/StrWrapper.h"

bool ProgramExists(const std::string& commandLine) {
  std::vector<std::string> words;
  StrWrapperTxt::SplitCommandLine(commandLine, words);
  const std::string program = words.empty() ? std::string() : FindProgram(words.front());
  return access(program.c_str(), X_OK) == 0 && !FileDirWrapper::IsFolder(program);
}

// The opener answers soon when nothing can open the file; else it may stay as long as the program.
bool OpenWithDesktop(const std::string& path) {
  constexpr int kLooks = 40;
  constexpr unsigned kLookMs = 50;
  const std::string opener = FindProgram("xdg-open");
  if (opener.empty()) return false;
  ChildStart start;
  start.program = opener;
  start.args = {opener, path};
  start.environment = CurrentEnvironment();
  pid_t pid = 0;
  if (StartChild(start, pid) != 0) return false;
  for (int look = 0; look < kLooks; ++look) {
    int status = 0;
    if (waitpid(pid, &status, WNOHANG) == pid) return ExitCodeOf(status) == 0;
    DateTimeWrapper::SleepMSec(kLookMs);
  }
  LetChildGo(pid);
  return true;
}

void LeaveProcess(int exitCode) {
  _exit(exitCode);
}
