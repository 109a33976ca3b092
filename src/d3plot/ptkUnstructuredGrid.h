// The model of a result database.
#ifndef KR_D3PLOT_PTKUNSTRUCTUREDGRID_H
#define KR_D3PLOT_PTKUNSTRUCTUREDGRID_H

// One point a node, one cell an element. Holds how many there are, not what they are.
class ptkUnstructuredGrid {
 public:
  struct Cells {
    int solids = 0;
    int thickShells = 0;
    int beams = 0;
    int shells = 0;
  };

  ptkUnstructuredGrid() = default;
  // The sum of the cells must fit an int.
  ptkUnstructuredGrid(int points, const Cells& cells) : points_(points), cells_(cells) {}

  int NumberOfPoints() const { return points_; }
  int NumberOfCells() const {
    return cells_.solids + cells_.thickShells + cells_.beams + cells_.shells;
  }
  const Cells& CellsByKind() const { return cells_; }

 private:
  int points_ = 0;
  Cells cells_;
};

// Owns the grid that the last opened database filled; an empty one before.
class ptkUnstructuredGridManager {
 public:
  const ptkUnstructuredGrid& Grid() const { return grid_; }
  void SetGrid(const ptkUnstructuredGrid& grid) { grid_ = grid; }

 private:
  ptkUnstructuredGrid grid_;
};

#endif
