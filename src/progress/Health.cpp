#include "progress/Health.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <string>
#include <utility>

namespace {

constexpr double kPauseFactor = 5;    // so much longer than the longest pause is a silence
constexpr double kSleep = 60;         // seconds between two looks of a machine that was awake
constexpr double kNegligible = 1e-6;  // of the total energy: shares of less mean nothing

std::string Short(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.4g", value);
  return text;
}

}  // namespace

// What the checks read of a state. Null where the run does not have it.
struct Health::Columns {
  explicit Columns(const GlobalStates& states)
      : time(states.Find("time")),
        step(states.Find("time step")),
        ratio(states.Find("total energy / initial energy")),
        hourglass(states.Find("hourglass energy")),
        internal(states.Find("internal energy")),
        total(states.Find("total energy")),
        mass(states.Find("percentage increase")) {}

  // NaN where the row does not have it.
  static double At(const GlobalStates::Column* column, std::size_t row) {
    const bool has = column != nullptr && GlobalStates::Has(*column, row);
    return has ? column->values[row] : std::numeric_limits<double>::quiet_NaN();
  }

  const GlobalStates::Column* time;
  const GlobalStates::Column* step;
  const GlobalStates::Column* ratio;
  const GlobalStates::Column* hourglass;
  const GlobalStates::Column* internal;
  const GlobalStates::Column* total;
  const GlobalStates::Column* mass;
};

std::vector<HealthFinding> Health::Look(const GlobalStates& states, const MessageProgress& message,
                                        bool news, double now) {
  if (states.Rows() < rows_) rows_ = 0;
  const Columns columns(states);
  for (std::size_t row = rows_; row < states.Rows(); ++row) LookAtRow(columns, row);
  // The last may not be whole yet.
  rows_ = std::max<std::size_t>(states.Rows(), 1) - 1;
  const ProgressPoint* last = message.Last();
  if (last != nullptr && states.Rows() == 0) {
    LookAtStep(message.Points().front().step, message.Points().front().time);
    LookAtStep(last->step, last->time);
  }
  const std::string& notFinite =
      states.NotFinite() > 0 ? states.FirstNotFinite() : message.NotFinite();
  if (!notFinite.empty() && limits_.health_not_finite != 0) {
    const double none = std::numeric_limits<double>::quiet_NaN();
    Find(HealthCheck::kNotFinite, none, Message(MessageId::kHealthNotFinite, notFinite));
  }
  LookAtSilence(message, news, now);
  std::vector<HealthFinding> found;
  for (const HealthFinding& finding : findings_) {
    if (told_.insert(finding.check).second) found.push_back(finding);
  }
  return found;
}

void Health::Find(HealthCheck check, double time, Message message) {
  const bool known = std::any_of(findings_.begin(), findings_.end(),
                                 [&](const HealthFinding& old) { return old.check == check; });
  if (!known) findings_.push_back({check, time, std::move(message)});
}

void Health::Drop(HealthCheck check) {
  std::erase_if(findings_, [&](const HealthFinding& one) { return one.check == check; });
}

void Health::SetLimits(const Settings& limits) {
  const auto all = [](const Settings& of) {
    return std::array{of.health_silence_minutes,   of.health_step_percent, of.health_energy_percent,
                      of.health_hourglass_percent, of.health_mass_percent, of.health_not_finite,
                      of.health_disk_percent};
  };
  if (all(limits) == all(limits_)) return;
  limits_ = limits;
  findings_.clear();
  rows_ = 0;
}

void Health::LookAtDisk(double needed, double free) {
  constexpr double kGigabyte = 1024.0 * 1024 * 1024;
  if (limits_.health_disk_percent <= 0 || needed <= free * limits_.health_disk_percent / 100) {
    return Drop(HealthCheck::kDisk);
  }
  Find(HealthCheck::kDisk, std::numeric_limits<double>::quiet_NaN(),
       Message(MessageId::kHealthDisk, Short(free / kGigabyte), Short(needed / kGigabyte)));
}

void Health::LookAtRow(const Columns& columns, std::size_t row) {
  const double time = Columns::At(columns.time, row);
  LookAtStep(Columns::At(columns.step, row), time);

  // Comparisons with NaN, which stands for what is missing too, are false.
  const double ratio = Columns::At(columns.ratio, row);
  const int away = limits_.health_energy_percent;
  if (away > 0 && std::abs(ratio - 1) > away / 100.0) {
    Find(HealthCheck::kEnergyRatio, time,
         Message(MessageId::kHealthEnergyRatio, Short(ratio), Short(time)));
  }
  const double internal = Columns::At(columns.internal, row);
  const double hourglass = Columns::At(columns.hourglass, row);
  const double total = Columns::At(columns.total, row);
  const int share = limits_.health_hourglass_percent;
  const bool counts = internal > 0 && !(internal < kNegligible * std::abs(total));
  if (share > 0 && counts && hourglass > internal * share / 100.0) {
    Find(HealthCheck::kHourglass, time,
         Message(MessageId::kHealthHourglass, Short(100 * hourglass / internal), Short(time)));
  }
  const double mass = Columns::At(columns.mass, row);
  if (limits_.health_mass_percent > 0 && mass > limits_.health_mass_percent) {
    Find(HealthCheck::kAddedMass, time,
         Message(MessageId::kHealthAddedMass, Short(mass), Short(time)));
  }
}

// A step of 0 is none: the solver writes it at an end with an error.
void Health::LookAtStep(double step, double time) {
  if (!(step > 0) || !std::isfinite(step)) return;
  if (firstStep_ == 0) firstStep_ = step;
  const int share = limits_.health_step_percent;
  if (share <= 0 || step >= firstStep_ * share / 100.0) return;
  Find(HealthCheck::kTimeStep, time,
       Message(MessageId::kHealthTimeStep, Short(firstStep_), Short(step), Short(time)));
}

void Health::LookAtSilence(const MessageProgress& message, bool news, double now) {
  if (lastNews_ < 0) lastNews_ = lastLook_ = now;
  if (now - lastLook_ > kSleep) lastNews_ += now - lastLook_;
  lastLook_ = now;
  const double silent = now - lastNews_;
  if (news) {
    longestPause_ = std::max(longestPause_, silent);
    lastNews_ = now;
    Drop(HealthCheck::kSilence);
    return;
  }
  const double pause = std::max(longestPause_, message.LongestPause());
  const double limit = std::max(limits_.health_silence_minutes * 60.0, kPauseFactor * pause);
  if (limits_.health_silence_minutes <= 0 || silent <= limit) return;
  Find(HealthCheck::kSilence, std::numeric_limits<double>::quiet_NaN(),
       Message(MessageId::kHealthSilence, static_cast<int>(silent / 60)));
}
