#include "util/process/ProcessIdentity.h"

bool Runs(const ProcessIdentity& process) {
  return !process.mark.empty() && IdentityOfProcess(process.id).mark == process.mark;
}
