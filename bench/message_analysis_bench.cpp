// How long the analysis of a big message file takes, compared with counting its lines with wc. Both
// read the file from the system's cache. Arguments: the file's size in megabytes (1000).
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "Measure.h"
#include "solvers/OutputAnalysis.h"

namespace {

// A long run: progress lines, now and then a warning, memory lines, a few errors at the end.
void WriteMessageFile(std::FILE* file, std::uint64_t bytes) {
  int cycle = 0;
  while (IsShorter(file, bytes)) {
    ++cycle;
    std::fprintf(file, "%8d t %.4E dt 1.38E-07 flush i/o buffers            12/21/25 20:15:16\n",
                 cycle, cycle * 1.38e-7);
    if (cycle % 1000 == 0) {
      std::fprintf(file,
                   " *** Warning 40540 (SOL+540)\n     contact interface %d is soft\n"
                   " expanding   memory to      127121 d     4181400\n\n",
                   cycle);
    }
  }
  std::fprintf(file, "\n *** Error 40509 (SOL+509)\n     negative volume\n\n");
  std::fprintf(file,
               " Total CPU time     =      7200 seconds (   2 hours  0 minutes  0 seconds)\n");
}

}  // namespace

int main(int argc, char** argv) {
  return CompareWithWc(
      argc, argv, "message analysis", 5, WriteMessageFile, [](const std::string& path) {
        const AnalysisReport report = AnalyseMessageFile(path);
        return report.errors == 1 && report.warnings > 20 && !report.cpuTime.empty();
      });
}
