// How long the scan of a big deck takes, compared with counting its lines with wc. Both read the
// file from the system's cache. Arguments: the deck's size in megabytes (1000).
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "jobs/DeckScan.h"
#include "Measure.h"

namespace {

// Nodes and shell elements as a pre-processor writes them, a head of columns every 100 lines.
void WriteDeck(std::FILE* file, std::uint64_t bytes) {
  std::fprintf(file, "*KEYWORD 200M\n*TITLE\nbenchmark\n$ CALC-METHOD: EXPLICIT\n");
  int id = 0;
  while (IsShorter(file, bytes)) {
    ++id;
    const bool node = id % 200000 < 100000;
    if (id % 100000 == 1) std::fprintf(file, node ? "*NODE\n" : "*ELEMENT_SHELL\n");
    if (id % 100 == 1) {
      std::fprintf(file, "$#   nid               x               y               z\n");
    }
    if (node) {
      std::fprintf(file, "%8d%16.7f%16.7f%16.7f\n", id, id * 0.001, -id * 0.002, 3.5);
    } else {
      std::fprintf(file, "%8d%8d%8d%8d%8d%8d\n", id, 1, id, id + 1, id + 2, id + 3);
    }
  }
  std::fprintf(file, "*INCLUDE\nparts.k\n*END\n");
}

}  // namespace

int main(int argc, char** argv) {
  return CompareWithWc(argc, argv, "deck scan", 10, WriteDeck, [](const std::string& path) {
    JobFileDyna job{Settings()};
    job.jobFile = path;
    return ScanDeck(job, {}) && job.deckMemory == 200 && job.includes.size() == 1;
  });
}
