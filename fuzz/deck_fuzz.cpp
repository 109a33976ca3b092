// The scan of a deck, its end time and its stages.
#include <cstdlib>

#include "jobs/DeckEndTime.h"
#include "jobs/DeckScan.h"
#include "jobs/StageDecks.h"
#include "MemoryFile.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static MemoryFile file;
  static JobFileDyna job{Settings()};
  file.Fill(data, size);
  job.jobFile = file.Path();
  job.firstStage = 0;
  job.caseRun = false;
  if (!ScanDeck(job, {}) || job.firstStage < 0) std::abort();
  ApplyDeckMemory(job, Settings());
  StageDecks(job, {});
  FindEndTime(job);
  return 0;
}
