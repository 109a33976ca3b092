// Opens result databases and counts their models.
#ifndef KR_D3PLOT_PTKPOSTD3PLOTMANAGER_H
#define KR_D3PLOT_PTKPOSTD3PLOTMANAGER_H

#include <memory>
#include <string>

#include "d3plot/ptkPostD3plotReader.h"
#include "d3plot/ptkUnstructuredGrid.h"

// Owns the reader of the open database. An object belongs to one thread at a time; several may work
// at once.
class ptkPostD3plotManager {
 public:
  ptkPostD3plotManager();
  ~ptkPostD3plotManager();

  // Opens the database and fills the manager's grid. On failure the grid is empty and the reason
  // is in Reader().Error().
  bool Open(const std::string& fileName, ptkUnstructuredGridManager& grids);

  // The one of the last Open.
  const ptkPostD3plotReader& Reader() const { return *reader_; }

 private:
  std::unique_ptr<ptkPostD3plotReader> reader_;
};

// One set of objects for the process, for one thread at a time: Create, Open, the counts, Destroy,
// in this order. Without Create, Open fails; without a successful Open the counts are 0.
void ptkCreate();
int ptkOpen(const std::string& fileName);  // not 0 on success
int ptkElementCount();
int ptkNodeCount();
void ptkDestroy();

#endif
