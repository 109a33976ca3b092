// A set of node numbers.
#ifndef KR_SOLVERS_NODESET_H
#define KR_SOLVERS_NODESET_H

#include <cstdint>
#include <vector>

// Kept as ranges: models number their nodes in long runs, so millions take little memory.
class NodeSet {
 public:
  void Add(std::uint64_t node);
  bool Contains(std::uint64_t node);
  bool Empty() const { return ranges_.empty(); }

 private:
  struct Range {
    std::uint64_t first;
    std::uint64_t last;
  };

  void Merge();

  std::vector<Range> ranges_;
  std::size_t mergeAt_ = 1 << 16;  // the number of ranges at which to look for neighbours
  bool merged_ = true;
};

#endif
