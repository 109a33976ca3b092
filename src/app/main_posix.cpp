#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include "app/Program.h"

namespace {

// Who started us may have closed them. What is printed would land in the first file that we open,
// which other processes may share.
void FillStandardDescriptors() {
  int file = 0;
  do {
    file = open("/dev/null", O_RDWR);
  } while (file >= 0 && file <= STDERR_FILENO);
  if (file > STDERR_FILENO) close(file);
}

}  // namespace

int main(int argc, char** argv) {
  FillStandardDescriptors();
  // Who reads what we print may have gone, and the queue goes on. Children get the usual answer.
  signal(SIGPIPE, SIG_IGN);
  return RunProgram(std::vector<std::string>(argv, argv + argc));
}
