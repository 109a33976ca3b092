// What a run has written so far, as curves.
#ifndef KR_PROGRESS_RUNCURVES_H
#define KR_PROGRESS_RUNCURVES_H

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "progress/GlobalStates.h"
#include "progress/MessageProgress.h"

// Of the states that a run writes.
enum class Quantity {
  kTimeStep,
  kKineticEnergy,
  kInternalEnergy,
  kHourglassEnergy,
  kSlidingEnergy,
  kTotalEnergy,
  kEnergyRatio,  // total / initial
  kAddedMass,    // percent
};
inline constexpr std::size_t kQuantities = 8;

// Problem times are in the deck's unit, clocks in seconds since the run's first line. What is not
// known is NaN. Can be copied; the values are shared.
struct RunCurves {
  using Values = std::shared_ptr<const std::vector<double>>;

  // The states: of "glstat", or where that is not written, of the message file, which has the time
  // step alone. All have as many values; null: no state has the quantity.
  std::vector<std::int64_t> cycles;
  Values time, clock;
  std::array<Values, kQuantities> values;

  // The lines of the message file.
  Values pointTime, pointClock;

  // Bytes of the run's files.
  Values diskClock, diskTime, diskBytes;
};

RunCurves MakeCurves(const GlobalStates& states, const MessageProgress& message);

// How many bytes a run had on the disk at which clock: seconds, as progress/SolverClock.h has them.
// One thread at a time.
class DiskUse {
 public:
  struct File {
    std::int64_t written;  // last, in the same seconds as the clocks
    std::uint64_t bytes;
  };
  // What the files tell of the time before the first sample: one was whole when it was written
  // last, those that were written at the very end have grown all the time. Only files that were
  // written between these clocks.
  void BeginWith(std::vector<File> files, std::int64_t from, std::int64_t to);
  void Sample(std::int64_t clock, std::uint64_t bytes);
  bool Empty() const { return clocks_.empty(); }

  // Into `curves`, whose points tell the problem time; `start` is the clock of the run's begin.
  void PutInto(RunCurves& curves, std::int64_t start) const;

 private:
  static constexpr std::size_t kMostSamples = 20000;
  std::vector<std::int64_t> clocks_;
  std::vector<double> bytes_;
};

// A line a state: cycle, time, seconds since the begin, each quantity, and the bytes on disk at
// that clock. What is not known is empty. Numbers have a point and all their digits.
std::string CurvesAsCsv(const RunCurves& curves);

#endif
