// The same bytes as an INC and as a Vorel output.
#include <cstdlib>

#include "MemoryFile.h"
#include "solvers/OutputAnalysis.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static MemoryFile file;
  file.Fill(data, size);
  for (const AnalysisReport& report :
       {AnalyseIncInfoFile(file.Path()), AnalyseVorelOutFile(file.Path())}) {
    if (report.outcome != AnalysisReport::Outcome::kRead || report.lines.empty()) std::abort();
  }
  return 0;
}
