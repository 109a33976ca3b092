#include "solvers/NodeSet.h"

#include <algorithm>

void NodeSet::Add(std::uint64_t node) {
  if (!ranges_.empty()) {
    Range& last = ranges_.back();
    if (node >= last.first && node <= last.last) return;
    if (node > last.last && node - last.last == 1) {
      last.last = node;
      merged_ = false;
      return;
    }
  }
  ranges_.push_back({node, node});
  merged_ = false;
  if (ranges_.size() >= mergeAt_) {
    Merge();
    mergeAt_ = std::max(mergeAt_, ranges_.size() * 2);
  }
}

bool NodeSet::Contains(std::uint64_t node) {
  if (!merged_) Merge();
  const auto behind =
      std::upper_bound(ranges_.begin(), ranges_.end(), node,
                       [](std::uint64_t value, const Range& range) { return value < range.first; });
  return behind != ranges_.begin() && node <= std::prev(behind)->last;
}

void NodeSet::Merge() {
  std::sort(ranges_.begin(), ranges_.end(),
            [](const Range& a, const Range& b) { return a.first < b.first; });
  std::size_t kept = 0;
  for (const Range& range : ranges_) {
    Range* const last = kept > 0 ? &ranges_[kept - 1] : nullptr;
    const bool joins =
        last != nullptr && (range.first <= last->last || range.first - last->last == 1);
    if (joins) {
      last->last = std::max(last->last, range.last);
    } else {
      ranges_[kept++] = range;
    }
  }
  ranges_.resize(kept);
  merged_ = true;
}
