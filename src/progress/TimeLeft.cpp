#include "progress/TimeLeft.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>

namespace {

// Shares of the time since the start: the lengths of the last part that are tried.
constexpr std::array kLengths = {1.0, 0.7, 0.5, 0.35, 0.25, 0.17, 0.12, 0.08, 0.05};
constexpr double kShortest = 2;  // seconds; clocks of message files count whole ones

constexpr int kMoments = 24;          // of the past that are asked
constexpr double kFirstMoment = 0.1;  // of the time since the start
constexpr double kLastMoment = 0.98;  // of the same
constexpr double kForgetting = 2;     // moments of long ago count less
constexpr double kWorstError = 1.5;   // of a logarithm; worse is as bad
constexpr double kLeastError = 0.01;  // errors below are as good
constexpr double kDecisiveness = 16;  // how much more the better lengths count
constexpr double kSlowest = 0.02;     // of the mean speed

constexpr double kShortestPause = 300;  // seconds
constexpr double kPauseFactor = 8;      // so much longer than any other
constexpr std::size_t kMostPauses = 2;

constexpr double kTimeNoise = 1e-3;  // of what was reached: printed times are rounded

}  // namespace

void TimeLeft::Add(double clock, double time) {
  if (!std::isfinite(clock) || !std::isfinite(time)) return;
  speed_.reset();
  if (!samples_.empty()) {
    if (clock < lastClock_) clockShift_ += lastClock_ - clock;
    lastClock_ = clock;
    Sample& last = samples_.back();
    const double shifted = clock + clockShift_;
    if (time < last.time - kTimeNoise * std::abs(last.time)) {
      samples_.clear();
    } else if (shifted <= last.clock) {
      // What the first second reached belongs to the start.
      if (samples_.size() > 1) last.time = std::max(last.time, time);
      return;
    } else {
      samples_.push_back({shifted, std::max(last.time, time)});
    }
  }
  if (samples_.empty()) {
    lastClock_ = clock;
    clockShift_ = 0;
    samples_.push_back({clock, time});
  }
  if (samples_.size() < kMostSamples) return;
  // The first and the last stay.
  std::size_t kept = 0;
  for (std::size_t i = 0; i < samples_.size(); i += i + 3 == samples_.size() ? 1 : 2) {
    samples_[kept++] = samples_[i];
  }
  samples_.resize(kept);
}

std::optional<TimeLeft::Estimate> TimeLeft::At(double now, double endTime) const {
  if (samples_.size() < 2) return std::nullopt;
  const Sample& first = samples_.front();
  const Sample& last = samples_.back();
  const double way = last.time - first.time;
  if (last.clock - first.clock < kLeastSeconds || way <= 0) return std::nullopt;
  if (way < kLeastShare * (endTime - first.time)) return std::nullopt;
  if (!speed_) speed_ = FindSpeed();
  const double whole = std::max(endTime - last.time, 0.0) / speed_->value;
  // A run that is silent for longer than ever gains nothing meanwhile.
  const double since = std::clamp(now + clockShift_ - last.clock, 0.0, speed_->longestGap);
  return Estimate{std::max(whole - since, 0.0), speed_->spread};
}

TimeLeft::Speed TimeLeft::FindSpeed() const {
  const std::vector<Sample> samples = WithoutPauses(samples_);
  const double start = samples.front().clock;
  const double end = samples.back().clock;
  const double elapsed = end - start;
  const double reached = samples.back().time;
  const double slowest = kSlowest * (reached - samples.front().time) / elapsed;

  const auto timeAt = [&](double clock) {
    const auto behind =
        std::upper_bound(samples.begin(), samples.end(), clock,
                         [](double value, const Sample& sample) { return value < sample.clock; });
    if (behind == samples.begin()) return samples.front().time;
    if (behind == samples.end()) return reached;
    const Sample& before = *(behind - 1);
    const double share = (clock - before.clock) / (behind->clock - before.clock);
    return before.time + (behind->time - before.time) * share;
  };
  const auto speedBefore = [&](double clock, double length) {
    const double from = std::max(clock - std::max(length * (clock - start), kShortest), start);
    return std::max((timeAt(clock) - timeAt(from)) / (clock - from), slowest);
  };

  std::array<double, kLengths.size()> errors{};
  double counted = 0;
  for (int i = 0; i < kMoments; ++i) {
    const double share = kFirstMoment + (kLastMoment - kFirstMoment) * (i + 0.5) / kMoments;
    const double clock = start + elapsed * share;
    const double way = reached - timeAt(clock);
    if (way <= 0) continue;
    const double weight = std::exp(-kForgetting * (1 - share)) * std::sqrt(1 - share);
    counted += weight;
    for (std::size_t k = 0; k < kLengths.size(); ++k) {
      const double wouldHaveBeen = way / speedBefore(clock, kLengths[k]);
      const double error = std::abs(std::log(wouldHaveBeen / (end - clock)));
      errors[k] += weight * std::min(error, kWorstError);
    }
  }

  double logSpeed = 0;
  double weights = 0;
  double error = 0;
  for (std::size_t k = 0; k < kLengths.size(); ++k) {
    const double mean = counted > 0 ? errors[k] / counted : 0;
    const double best = *std::min_element(errors.begin(), errors.end());
    const double least = counted > 0 ? best / counted : 0;
    const double weight = std::pow((least + kLeastError) / (mean + kLeastError), kDecisiveness);
    logSpeed += weight * std::log(speedBefore(end, kLengths[k]));
    error += weight * mean;
    weights += weight;
  }
  return {std::exp(logSpeed / weights), std::exp(2 * error / weights + kLeastError),
          LongestGap(samples)};
}

std::vector<TimeLeft::Sample> TimeLeft::WithoutPauses(const std::vector<Sample>& samples) {
  std::vector<double> gaps;
  for (std::size_t i = 1; i < samples.size(); ++i) {
    gaps.push_back(samples[i].clock - samples[i - 1].clock);
  }
  const auto middle = gaps.begin() + static_cast<std::ptrdiff_t>(gaps.size() / 2);
  std::nth_element(gaps.begin(), middle, gaps.end());
  const double usual = *middle;
  const std::size_t top = std::min(gaps.size(), kMostPauses + 1);
  std::partial_sort(gaps.begin(), gaps.begin() + static_cast<std::ptrdiff_t>(top), gaps.end(),
                    std::greater<>());
  double limit = 0;  // gaps from here on are pauses
  for (std::size_t i = 0; i + 1 < top && gaps.size() > kMostPauses; ++i) {
    if (gaps[i] >= kShortestPause && gaps[i] > kPauseFactor * gaps[i + 1]) limit = gaps[i];
  }
  if (limit == 0) return samples;
  std::vector<Sample> kept = samples;
  double pauses = 0;
  for (std::size_t i = 1; i < samples.size(); ++i) {
    const double gap = samples[i].clock - samples[i - 1].clock;
    if (gap >= limit) pauses += gap - usual;
    kept[i].clock = samples[i].clock - pauses;
  }
  return kept;
}

double TimeLeft::LongestGap(const std::vector<Sample>& samples) {
  double longest = 0;
  for (std::size_t i = 1; i < samples.size(); ++i) {
    longest = std::max(longest, samples[i].clock - samples[i - 1].clock);
  }
  return longest;
}
