// A result database of two files. The first two bytes say how many bytes the first file has.
#include <cstdlib>

#include "d3plot/ptkPostD3plotReader10.h"
#include "MemoryFile.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static MemoryFile base;
  static MemoryFile next;
  if (size < 2) return 0;
  const std::size_t wanted = data[0] + std::size_t{256} * data[1];
  data += 2;
  size -= 2;
  const std::size_t first = wanted < size ? wanted : size;
  base.Fill(data, first);
  next.Fill(data + first, size - first);

  ptkPostD3plotReader10 reader;
  ptkUnstructuredGrid grid;
  const FileFamily family{{{base.Path(), first}, {next.Path(), size - first}}};
  if (!reader.Open({family}) || !reader.ReadGrid(grid)) return 0;
  const ptkUnstructuredGrid::Cells& cells = grid.CellsByKind();
  for (const int count : {cells.solids, cells.thickShells, cells.beams, cells.shells}) {
    if (count < 0 || count > grid.NumberOfCells()) std::abort();
  }
  // Each node and each element takes some words.
  const auto words = static_cast<std::int64_t>(size / 4);
  if (grid.NumberOfPoints() > words || grid.NumberOfCells() > words) std::abort();
  return 0;
}
