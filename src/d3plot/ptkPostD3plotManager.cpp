#include "d3plot/ptkPostD3plotManager.h"

#include "d3plot/ptkPostD3plotReader10.h"

namespace {

struct Model {
  ptkUnstructuredGridManager grids;
  ptkPostD3plotManager database;
};

std::unique_ptr<Model> processModel;

}  // namespace

ptkPostD3plotManager::ptkPostD3plotManager() : reader_(new ptkPostD3plotReader10) {}
ptkPostD3plotManager::~ptkPostD3plotManager() = default;

bool ptkPostD3plotManager::Open(const std::string& fileName, ptkUnstructuredGridManager& grids) {
  ptkUnstructuredGrid grid;
  const bool read = reader_->Open(fileName) && reader_->ReadGrid(grid);
  grids.SetGrid(grid);
  return read;
}

void ptkCreate() {
  processModel = std::make_unique<Model>();
}

int ptkOpen(const std::string& fileName) {
  return processModel && processModel->database.Open(fileName, processModel->grids) ? 1 : 0;
}

int ptkElementCount() {
  return processModel ? processModel->grids.Grid().NumberOfCells() : 0;
}

int ptkNodeCount() {
  return processModel ? processModel->grids.Grid().NumberOfPoints() : 0;
}

void ptkDestroy() {
  processModel.reset();
}
