// How long a run still takes, by how fast it went.
#ifndef KR_PROGRESS_TIMELEFT_H
#define KR_PROGRESS_TIMELEFT_H

#include <optional>
#include <vector>

// Is fed with what a run has reached and when. The speed of the rest is taken from the last part of
// the run. How long that part should be, the run's own past tells: each of several lengths is asked
// at many moments of the past how long it would have been until now, and the one that erred least
// decides. So a change of the speed is followed at once where the speed is steady otherwise, and a
// long stretch is averaged where it jumps. A pause that dwarfs all others (a machine that slept)
// does not count. Memory is bounded. One thread at a time.
class TimeLeft {
 public:
  // Nothing is estimated before so much of the way, and before so many seconds.
  static constexpr double kLeastShare = 0.02;
  static constexpr double kLeastSeconds = 30;

  // `clock` in seconds on any clock; when it goes back, no time has passed. When `time` goes back,
  // a restart begins, and all before is forgotten.
  void Add(double clock, double time);

  struct Estimate {
    double seconds = 0;  // from `now` on
    // How sure it is: by the run's past, the time is between seconds / spread and seconds * spread
    // most of the time. At least 1.
    double spread = 1;
  };
  // `now` on the same clock, not before the last sample.
  std::optional<Estimate> At(double now, double endTime) const;

 private:
  struct Sample {
    double clock;
    double time;
  };
  // What At finds out about the speed once for all questions until the next sample.
  struct Speed {
    double value = 0;  // problem time a second
    double spread = 1;
    double longestGap = 0;  // between two samples, seconds
  };
  static constexpr std::size_t kMostSamples = 4096;

  Speed FindSpeed() const;
  static std::vector<Sample> WithoutPauses(const std::vector<Sample>& samples);
  static double LongestGap(const std::vector<Sample>& samples);

  std::vector<Sample> samples_;  // strictly rising clock
  double clockShift_ = 0;        // what the clock went back so far
  double lastClock_ = 0;         // as it was given
  mutable std::optional<Speed> speed_;
};

#endif
