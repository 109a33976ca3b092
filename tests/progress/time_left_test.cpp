#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <vector>

#include "progress/TimeLeft.h"

namespace {

struct Replay {
  double worst = 0;   // of |estimate - truth| / duration in the part that was asked for
  double inside = 0;  // share of the moments whose truth lay within the spread
  int estimates = 0;
};

// A run of a thousand steps; `cost` gives the seconds that a step takes.
Replay ReplayRun(const std::function<double(int step)>& cost, int fromStep, int toStep = 1000) {
  constexpr int kSteps = 1000;
  std::vector<double> clock = {0};
  for (int i = 0; i < kSteps; ++i) clock.push_back(clock.back() + cost(i));
  Replay replay;
  TimeLeft left;
  for (int i = 0; i <= kSteps; ++i) {
    left.Add(clock[static_cast<std::size_t>(i)], i);
    const double now = clock[static_cast<std::size_t>(i)];
    const auto estimate = left.At(now, kSteps);
    if (!estimate || i < fromStep || i > toStep) continue;
    const double truth = clock.back() - now;
    ++replay.estimates;
    replay.worst = std::max(replay.worst, std::abs(estimate->seconds - truth) / clock.back());
    replay.inside += truth <= estimate->seconds * estimate->spread &&
                             truth >= estimate->seconds / estimate->spread
                         ? 1
                         : 0;
  }
  replay.inside /= replay.estimates;
  return replay;
}

TEST(TimeLeftTest, SteadySpeed) {
  const Replay replay = ReplayRun([](int) { return 2; }, 0);
  EXPECT_EQ(replay.estimates, 981);
  EXPECT_LT(replay.worst, 0.001);
}

TEST(TimeLeftTest, FollowsAChangeOfTheSpeed) {
  // The time step falls to a third: soon the new speed counts alone.
  EXPECT_LT(ReplayRun([](int step) { return step < 300 ? 1 : 3; }, 400).worst, 0.03);
  EXPECT_LT(ReplayRun([](int step) { return step < 500 ? 2 : 1; }, 600).worst, 0.06);
}

TEST(TimeLeftTest, AveragesWhatJumps) {
  const auto bursts = [](int step) { return step / 20 % 4 == 0 ? 8.0 : 0.5; };
  const Replay replay = ReplayRun(bursts, 300);
  EXPECT_LT(replay.worst, 0.12);
  EXPECT_GT(replay.inside, 0.7);
  // Slow output now and then.
  EXPECT_LT(ReplayRun([](int step) { return step % 50 == 49 ? 40 : 1; }, 300).worst, 0.08);
}

TEST(TimeLeftTest, ASleepingMachineDoesNotCount) {
  const Replay replay = ReplayRun([](int step) { return step == 400 ? 8000 : 2; }, 402);
  EXPECT_LT(replay.worst, 0.001);
}

TEST(TimeLeftTest, NothingTooEarlyAndNothingAfterARestartBegan) {
  TimeLeft left;
  EXPECT_FALSE(left.At(0, 1));
  left.Add(0, 0);
  left.Add(29, 0.5);
  EXPECT_FALSE(left.At(29, 1));  // too short
  left.Add(100, 0.6);
  EXPECT_FALSE(left.At(100, 100));  // too little of the way
  ASSERT_TRUE(left.At(100, 1));
  left.Add(200, 0.3);
  EXPECT_FALSE(left.At(200, 1));
  left.Add(300, 0.4);
  EXPECT_NEAR(left.At(300, 1)->seconds, 600, 1);
}

TEST(TimeLeftTest, ClocksThatGoBackAndSilence) {
  TimeLeft left;
  for (int i = 0; i <= 100; ++i) left.Add(i * 10 - (i > 50 ? 3600 : 0), i * 0.001);
  const double now = 1000 - 3600;
  EXPECT_NEAR(left.At(now, 0.2)->seconds, 1000, 25);
  EXPECT_NEAR(left.At(now + 5, 0.2)->seconds, left.At(now, 0.2)->seconds - 5, 1e-6);
  // Longer than any pause so far: nothing is gained.
  EXPECT_EQ(left.At(now + 100, 0.2)->seconds, left.At(now + 5000, 0.2)->seconds);
  left.Add(now + 1, 0.2);
  EXPECT_EQ(left.At(now + 1, 0.2)->seconds, 0);
}

}  // namespace
