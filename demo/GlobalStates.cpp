#include "GlobalStates.h"

#include <algorithm>
#include <cmath>

#include "Text.h"

namespace {

std::string Value(const char* name, double value) {
  return std::isnan(value) ? Format(" %s           NaN\n", name)
                           : Format(" %s%14.5E\n", name, value);
}

std::string Seconds(const char* label, double seconds) {
  const auto whole = static_cast<long long>(seconds + 0.5);
  return Format(" %-33s =%10lld sec (%8lld hrs %2lld mins)", label, whole, whole / 3600,
                whole / 60 % 60);
}

// All energies of a run that is loaded up to a half of its time and swings from there.
std::string Energies(const GlobalState& state, const Sickness& sickness) {
  constexpr double kFull = 1.0e3;
  const double load = std::min(2 * state.share, 1.0);
  const double kinetic = 0.2 * kFull * load * (1 - 0.5 * load);
  const double internal = 0.75 * kFull * load * load;
  // What is wrong with a run shows in its second half.
  const double late = std::max(2 * state.share - 1, 0.0);
  const double hourglass =
      internal * (0.01 + std::max(sickness.hourglassPercent / 100 - 0.01, 0.0) * late);
  const double sliding = 0.02 * kFull * load;
  const double initial = 0.1 * kFull;
  const double sum = initial + kinetic + internal + hourglass + sliding;
  const double ratio = 1 + (sickness.energyRatio - 1) * late;
  const double nan = std::nan("");
  std::string text;
  text += Value("time...........................", state.time);
  text += Value("time step......................", state.step);
  text += Value("kinetic energy.................", initial + kinetic);
  text += Value("internal energy................", internal);
  text += Value("spring and damper energy.......", 1e-20);
  text += Value("hourglass energy ..............", hourglass);
  text += Value("system damping energy..........", 0);
  text += Value("sliding interface energy.......", sickness.nan && late > 0 ? nan : sliding);
  text += Value("external work..................", sum - initial);
  text += Value("eroded kinetic energy..........", 0);
  text += Value("eroded internal energy.........", 0);
  text += Value("eroded hourglass energy........", 0);
  text += Value("total energy...................", sum * ratio);
  text += Value("total energy / initial energy..", ratio);
  text += Value("energy ratio w/o eroded energy.", ratio);
  text += Value("global x velocity..............", 0);
  text += Value("global y velocity..............", 0);
  text += Value("global z velocity..............", -1.5 * load);
  text += " time per zone cycle.(nanosec)..            12\n\n\n";
  text += " number of shell elements that  \n reached the minimum time step..    0\n\n\n";
  text += Value("added mass.....................", 1e-3 * sickness.addedMassPercent * late);
  text += Value("percentage increase............", sickness.addedMassPercent * late);
  return text;
}

}  // namespace

GlobalStates::~GlobalStates() {
  if (file_ != nullptr) std::fclose(file_);
}

bool GlobalStates::Begin(const std::string& path, const std::string& title,
                         const std::string& solver) {
  file_ = std::fopen(path.c_str(), "wb");
  if (file_ == nullptr) return false;
  const std::string head =
      Format(" %-72s\n                    %s\n\n\n", title.c_str(), solver.c_str());
  return std::fputs(head.c_str(), file_) >= 0 && std::fflush(file_) == 0;
}

bool GlobalStates::Write(const GlobalState& state, const Sickness& sickness) {
  if (file_ == nullptr) return true;
  const std::string text = Format(" dt of cycle %7d is controlled by ", state.cycle) +
                           state.controlled + "\n\n" + Energies(state, sickness) + "\n\n";
  return std::fwrite(text.data(), 1, text.size(), file_) == text.size() && std::fflush(file_) == 0;
}

void GlobalStates::BreakOff() {
  if (file_ == nullptr) return;
  std::fputs(" dt of cycle  999999 is controlled by load curve\n\n time.........................",
             file_);
  std::fclose(file_);
  file_ = nullptr;
}

std::vector<std::string> EstimateLines(double endTime, double elapsed, double total) {
  const double left = std::max(total - elapsed, 0.0);
  return {Format(" termination time                  = %.3E", endTime),
          Seconds("estimated total cpu time", total),
          Seconds("estimated cpu time to complete", left),
          Seconds("estimated total clock time", total),
          Seconds("estimated clock time to complete", left)};
}
