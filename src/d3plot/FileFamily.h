// The files of a result database, found by trying to open them.
#ifndef KR_D3PLOT_FILEFAMILY_H
#define KR_D3PLOT_FILEFAMILY_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// A first file and its numbered continuation files, in number order.
struct FileFamily {
  struct Member {
    std::string name;
    std::uint64_t size = 0;  // bytes
  };
  std::vector<Member> members;
};

// Names of this length or more are refused.
constexpr std::size_t kLongestBaseName = 1024;

// The family of `base` (d3plot, d3plot01 ... d3plot499), then those of its two-letter continuations
// (d3plotaa, d3plotaa01 ...) in letter order. Every name is tried: gaps end nothing. Empty when the
// base file does not open.
std::vector<FileFamily> FindFamilies(const std::string& base);

#endif
