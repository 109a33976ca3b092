// The hand-over file: what other programs ask for, and what we write ourselves.
#include <cstdlib>

#include "core/HandOverFormat.h"
#include "core/SmallTextFile.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  const HandOverOrder order = ReadHandOverText(text, Settings());
  for (const JobRequest& job : order.jobs) {
    if (job.kind == SolverKind::kUtilityBatch || job.groupId != 0) std::abort();
  }
  std::vector<Message> remarks;
  const std::string own = MakeHandOverText(LinesOf(text), remarks);
  if (ReadHandOverText(own, Settings()).remarks.size() > own.size()) std::abort();
  return 0;
}
