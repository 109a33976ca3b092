// Whether a run is in good health, by what it writes.
#ifndef KR_PROGRESS_HEALTH_H
#define KR_PROGRESS_HEALTH_H

#include <cstddef>
#include <limits>
#include <set>
#include <vector>

#include "jobs/Settings.h"
#include "messages/Message.h"
#include "progress/GlobalStates.h"
#include "progress/MessageProgress.h"

enum class HealthCheck {
  kSilence,      // a hang, a licence that went away
  kTimeStep,     // below a part of the first one
  kEnergyRatio,  // total energy / initial energy away from 1
  kHourglass,    // against the internal energy
  kAddedMass,
  kNotFinite,  // NaN or infinite values
  kDisk,       // will be full before the run ends
};

struct HealthFinding {
  HealthCheck check;
  double time;  // problem time at which it was first seen; NaN where it has none
  Message message;
};

// Looks at one run again and again. The limits are the health_... fields of the settings; one that
// is 0 switches its check off. A finding stays, but for the silence, which ends with the next
// news, and the disk. One thread at a time.
class Health {
 public:
  explicit Health(const Settings& limits) : limits_(limits) {}

  // Other limits from now on; what was found by the old ones is looked for again.
  void SetLimits(const Settings& limits);

  // Another case of the deck begins, with a time step and states of its own. What was found stays.
  void BeginCase() { rows_ = 0, firstStep_ = 0; }

  // `news`: whether the run has written anything since the last look; `now`: seconds on a clock
  // that does not go back. Returns what was never found before, so each check speaks once. Between
  // two looks that lie far apart the machine slept: no silence of the run.
  std::vector<HealthFinding> Look(const GlobalStates& states, const MessageProgress& message,
                                  bool news, double now);

  // What the run will still write and what it may, in bytes. A finding ends when there is room.
  void LookAtDisk(double needed, double free);

  // What is wrong now, each check once.
  const std::vector<HealthFinding>& Findings() const { return findings_; }

 private:
  struct Columns;
  void Find(HealthCheck check, double time, Message message);
  void Drop(HealthCheck check);
  void LookAtRow(const Columns& columns, std::size_t row);
  void LookAtStep(double step, double time);
  void LookAtSilence(const MessageProgress& message, bool news, double now);

  Settings limits_;
  std::vector<HealthFinding> findings_;
  std::set<HealthCheck> told_;
  std::size_t rows_ = 0;  // that were looked at
  double firstStep_ = 0;
  double lastNews_ = -1;  // -1: no look yet
  double lastLook_ = 0;
  double longestPause_ = 0;
};

#endif
