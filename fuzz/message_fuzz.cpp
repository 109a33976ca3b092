#include <cstdlib>

#include "MemoryFile.h"
#include "solvers/OutputAnalysis.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static MemoryFile file;
  file.Fill(data, size);
  const AnalysisReport report = AnalyseMessageFile(file.Path());
  if (report.outcome != AnalysisReport::Outcome::kRead) std::abort();
  if (report.lines.size() < 8 || report.lines[0].size() != 63) std::abort();
  if (report.errors < 0 || report.warnings < 0 || report.cpuTime.size() > size) std::abort();
  return 0;
}
