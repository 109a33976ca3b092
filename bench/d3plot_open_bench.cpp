// How long opening and counting a result database takes, compared with nothing but the opens that
// finding its files needs: the base file, 499 numbers and 676 letter pairs. Arguments: a d3plot
// file; without one, a small one is made.
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <vector>

#include "d3plot/ptkPostD3plotManager.h"
#include "d3plot/ResultFile.h"
#include "Measure.h"

namespace {

constexpr int kNodes = 10000;

// Nodes only, in the machine's byte order.
bool WriteDatabase(const std::string& path) {
  std::vector<std::int32_t> words(64 + 3 * kNodes);
  const float version = 960;
  std::memcpy(&words[14], &version, sizeof version);
  words[15] = 4;
  words[16] = kNodes;
  words[17] = 6;
  std::FILE* const file = std::fopen(path.c_str(), "wb");
  if (file == nullptr) return false;
  const bool written = std::fwrite(words.data(), 4, words.size(), file) == words.size();
  return std::fclose(file) == 0 && written;
}

std::vector<std::string> FamilyNames(const std::string& base) {
  std::vector<std::string> names = {base};
  for (int number = 1; number <= 499; ++number) {
    names.push_back(base + (number < 10 ? "0" : "") + std::to_string(number));
  }
  for (char x = 'a'; x <= 'z'; ++x) {
    for (char y = 'a'; y <= 'z'; ++y) names.push_back(base + x + y);
  }
  return names;
}

}  // namespace

int main(int argc, char** argv) {
  constexpr int kRounds = 200;
  const TemporaryFolder folder;
  const std::string path = argc > 1 ? argv[1] : folder.File("d3plot");
  if (argc == 1 && !WriteDatabase(path)) {
    std::fprintf(stderr, "cannot write %s\n", path.c_str());
    return 1;
  }

  const std::vector<std::string> names = FamilyNames(path);
  std::size_t opened = 0;
  const double opens = BestSeconds(kRounds, [&] {
    opened = 0;
    for (const std::string& name : names) {
      ResultFile file;
      opened += file.Open(name.c_str());
    }
  });
  bool good = opened > 0;
  const double count = BestSeconds(kRounds, [&] {
    ptkPostD3plotManager manager;
    ptkUnstructuredGridManager grids;
    good = manager.Open(path, grids) && grids.Grid().NumberOfPoints() > 0 && good;
  });
  std::printf("d3plot open and count %.3f ms, %zu opens %.3f ms, ratio %.2f\n", count * 1e3,
              names.size(), opens * 1e3, count / opens);
  return good ? 0 : 1;
}
