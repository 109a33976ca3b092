#include "Launcher.h"

#include <cstdlib>

#include "Text.h"

namespace {

struct RankVariables {
  const char* rank;
  const char* size;
};

// Open MPI and MVAPICH also set PMI or PMIX variables, so their own names come first.
constexpr RankVariables kLaunchers[] = {
    {"OMPI_COMM_WORLD_RANK", "OMPI_COMM_WORLD_SIZE"},
    {"MV2_COMM_WORLD_RANK", "MV2_COMM_WORLD_SIZE"},
    {"PMI_RANK", "PMI_SIZE"},
    {"PMIX_RANK", "PMIX_SIZE"},
    {"MPI_RANKID", "MPI_NRANKS"},
    {"MP_CHILD", "MP_PROCS"},
};
constexpr int kMostRanks = 1'000'000;

bool ReadVariable(const char* name, int low, int& out) {
  const char* text = std::getenv(name);
  const auto value = text != nullptr ? ToInteger(text) : std::nullopt;
  if (!value || *value < low || *value >= kMostRanks) return false;
  out = static_cast<int>(*value);
  return true;
}

}  // namespace

Rank FindRank() {
  Rank rank;
  for (const RankVariables& names : kLaunchers) {
    if (!ReadVariable(names.rank, 0, rank.number)) continue;
    rank.parallel = true;
    ReadVariable(names.size, 1, rank.size);
    return rank;
  }
  // A batch script runs with SLURM_PROCID=0 too; only a step of several tasks is a parallel run.
  int tasks = 1;
  if (ReadVariable("SLURM_STEP_NUM_TASKS", 2, tasks) &&
      ReadVariable("SLURM_PROCID", 0, rank.number)) {
    rank.parallel = true;
    rank.size = tasks;
  }
  return rank;
}
