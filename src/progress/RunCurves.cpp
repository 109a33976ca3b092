#include "progress/RunCurves.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <span>

namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

constexpr double kVeryEnd = 0.02;  // of the time until then

// In the order of Quantity: the name in "glstat".
constexpr const char* kNames[kQuantities] = {
    "time step",
    "kinetic energy",
    "internal energy",
    "hourglass energy",
    "sliding interface energy",
    "total energy",
    "total energy / initial energy",
    "percentage increase",
};

RunCurves::Values Share(std::vector<double> values) {
  return std::make_shared<const std::vector<double>>(std::move(values));
}

// From one axis to another along points whose `from` rises. A restart steps back: only what follows
// the last step back counts.
class Way {
 public:
  Way(std::span<const double> from, std::span<const double> to) {
    std::size_t begin = 0;
    for (std::size_t i = 1; i < from.size(); ++i) {
      if (from[i] < from[i - 1]) begin = i;
    }
    from_ = from.subspan(begin);
    to_ = to.subspan(begin);
  }

  double At(double value) const {
    if (from_.empty() || !(value >= from_.front())) return kNone;
    const auto behind = std::upper_bound(from_.begin(), from_.end(), value);
    if (behind == from_.end()) return to_.back();
    const auto at = static_cast<std::size_t>(behind - from_.begin());
    const double share = (value - from_[at - 1]) / (from_[at] - from_[at - 1]);
    return to_[at - 1] + share * (to_[at] - to_[at - 1]);
  }

  std::vector<double> AtAll(const std::vector<double>& values) const {
    std::vector<double> result(values.size());
    std::transform(values.begin(), values.end(), result.begin(),
                   [&](double value) { return At(value); });
    return result;
  }

 private:
  std::span<const double> from_, to_;
};

RunCurves::Values ColumnOf(const GlobalStates& states, const char* name) {
  const GlobalStates::Column* column = states.Find(name);
  if (column == nullptr) return nullptr;
  std::vector<double> values = column->values;
  values.resize(states.Rows(), kNone);
  return Share(std::move(values));
}

void TakeStates(const GlobalStates& states, RunCurves& curves) {
  for (std::size_t row = 0; row < states.Rows(); ++row) curves.cycles.push_back(states.Cycle(row));
  curves.time = ColumnOf(states, "time");
  if (!curves.time) curves.time = Share(std::vector<double>(states.Rows(), kNone));
  for (std::size_t i = 0; i < kQuantities; ++i) curves.values[i] = ColumnOf(states, kNames[i]);
}

void TakePoints(const MessageProgress& message, RunCurves& curves) {
  std::vector<double> steps;
  for (const ProgressPoint& point : message.Points()) {
    curves.cycles.push_back(point.cycle);
    steps.push_back(point.step > 0 ? point.step : kNone);
  }
  curves.time = curves.pointTime;
  if (!steps.empty()) curves.values[0] = Share(std::move(steps));
}

void AddNumber(double value, std::string& line) {
  line += ',';
  if (std::isnan(value)) return;
  char text[40];
  const auto end = std::to_chars(text, text + sizeof text, value).ptr;
  line.append(text, end);
}

}  // namespace

RunCurves MakeCurves(const GlobalStates& states, const MessageProgress& message) {
  RunCurves curves;
  std::vector<double> times, clocks;
  const std::vector<ProgressPoint>& points = message.Points();
  for (const ProgressPoint& point : points) {
    times.push_back(point.time);
    clocks.push_back(static_cast<double>(point.clock - points.front().clock));
  }
  const Way toClock(times, clocks);
  curves.pointTime = Share(times);
  curves.pointClock = Share(clocks);
  if (states.Rows() > 0) {
    TakeStates(states, curves);
    curves.clock = Share(toClock.AtAll(*curves.time));
  } else {
    TakePoints(message, curves);
    curves.clock = curves.pointClock;
  }
  curves.diskClock = curves.diskTime = curves.diskBytes = Share({});
  return curves;
}

void DiskUse::BeginWith(std::vector<File> files, std::int64_t from, std::int64_t to) {
  std::erase_if(files, [&](const File& file) { return file.written < from || file.written > to; });
  clocks_.clear();
  bytes_.clear();
  if (files.empty()) return;
  std::sort(files.begin(), files.end(),
            [](const File& one, const File& other) { return one.written < other.written; });
  const std::int64_t last = files.back().written;
  const auto late = static_cast<std::int64_t>(kVeryEnd * static_cast<double>(last - from));
  double growing = 0;
  while (!files.empty() && files.back().written >= last - late) {
    growing += static_cast<double>(files.back().bytes);
    files.pop_back();
  }
  double whole = 0;
  const auto put = [&](std::int64_t clock) {
    const double share =
        last > from ? static_cast<double>(clock - from) / static_cast<double>(last - from) : 1;
    const double sum = whole + growing * share;
    if (!clocks_.empty() && clocks_.back() == clock) {
      bytes_.back() = sum;
    } else {
      clocks_.push_back(clock);
      bytes_.push_back(sum);
    }
  };
  put(from);
  for (const File& file : files) {
    whole += static_cast<double>(file.bytes);
    put(file.written);
  }
  put(last);
}

void DiskUse::Sample(std::int64_t clock, std::uint64_t bytes) {
  if (!clocks_.empty() && clock <= clocks_.back()) return;
  if (clocks_.size() >= kMostSamples) {
    std::size_t kept = 0;
    for (std::size_t i = 0; i < clocks_.size(); i += 2, ++kept) {
      clocks_[kept] = clocks_[i];
      bytes_[kept] = bytes_[i];
    }
    clocks_.resize(kept);
    bytes_.resize(kept);
  }
  clocks_.push_back(clock);
  bytes_.push_back(static_cast<double>(bytes));
}

void DiskUse::PutInto(RunCurves& curves, std::int64_t start) const {
  std::vector<double> clocks;
  for (const std::int64_t clock : clocks_) clocks.push_back(static_cast<double>(clock - start));
  const Way toTime(*curves.pointClock, *curves.pointTime);
  curves.diskTime = Share(toTime.AtAll(clocks));
  curves.diskClock = Share(std::move(clocks));
  curves.diskBytes = Share(bytes_);
}

std::string CurvesAsCsv(const RunCurves& curves) {
  std::string text = "cycle,time,elapsed_seconds";
  for (const std::string name : kNames) {
    text += ',';
    for (const char c : name) text += c == ' ' ? '_' : c;
  }
  text += ",disk_bytes\n";
  for (std::size_t row = 0; row < curves.cycles.size(); ++row) {
    text += std::to_string(curves.cycles[row]);
    const double clock = (*curves.clock)[row];
    AddNumber((*curves.time)[row], text);
    AddNumber(clock, text);
    for (const RunCurves::Values& values : curves.values)
      AddNumber(values ? (*values)[row] : kNone, text);
    const auto behind = std::upper_bound(curves.diskClock->begin(), curves.diskClock->end(), clock);
    const bool isKnown = !std::isnan(clock) && behind != curves.diskClock->begin();
    const auto sample = behind - curves.diskClock->begin() - 1;
    AddNumber(isKnown ? (*curves.diskBytes)[static_cast<std::size_t>(sample)] : kNone, text);
    text += '\n';
  }
  return text;
}
