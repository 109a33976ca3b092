// The reader of control words and geometry.
#ifndef KR_D3PLOT_PTKPOSTD3PLOTREADER10_H
#define KR_D3PLOT_PTKPOSTD3PLOTREADER10_H

#include "d3plot/ptkPostD3plotReader.h"

// Reads the control words and the geometry section of the published d3plot description: how many
// nodes and elements there are, and whether the files are long enough to hold them.
class ptkPostD3plotReader10 : public ptkPostD3plotReader {
 public:
  bool ReadGrid(ptkUnstructuredGrid& grid) override;

 private:
  struct Control;
  struct Block;

  bool ReadControl(Control& control);
  bool CheckCounts(const Control& control);
  bool FindNodes(const Control& control, std::int64_t& start, bool& exact);
  bool CheckContinuation(const Control& control, std::int64_t nodes);
  bool CheckBlock(const Block& block, std::int64_t nodeCount);
};

#endif
