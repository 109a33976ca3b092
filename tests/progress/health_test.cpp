#include <gtest/gtest.h>

#include <string>

#include "progress/Health.h"

namespace {

class HealthTest : public testing::Test {
 protected:
  // A block of a file; what is not given is healthy.
  void State(const std::string& lines) {
    const std::string cycle = std::to_string(++cycle_);
    states_.TakeLines(" dt of cycle " + cycle + " is controlled by load curve\n time.... " + cycle +
                      ".0E+00\n" + lines);
  }
  // What is new, in English, each followed by a semicolon.
  std::string Look(bool news = true) {
    std::string texts;
    now_ += 1;
    for (const HealthFinding& finding : health_.Look(states_, message_, news, now_)) {
      texts += finding.message.English() + ";";
    }
    return texts;
  }

  GlobalStates states_;
  MessageProgress message_;
  Health health_{Settings()};
  double now_ = 0;
  int cycle_ = 0;
};

TEST_F(HealthTest, TellsEachSicknessOnceWhenItIsThere) {
  State(
      " time step..... 1.0E-06\n internal energy.... 2.0E-20\n hourglass energy ..... 1.0E-20\n"
      " total energy.... 1.0E+03\n total energy / initial energy.. 1.0E+00\n");
  State(" time step..... 1.1E-08\n total energy / initial energy.. 1.09E+00\n");
  EXPECT_EQ(Look(), "");
  State(" time step..... 0.9E-08\n");
  State(" time step..... 0.8E-08\n total energy / initial energy.. 0.89E+00\n");
  EXPECT_EQ(Look(),
            "The time step fell from 1e-06 to 9e-09 at time 3;"
            "Total energy / initial energy is 0.89 at time 4;");
  State(" internal energy.... 1.0E+02\n hourglass energy ..... 1.2E+01\n");
  State(" percentage increase...... 5.1E+00\n kinetic energy...... NaN\n");
  EXPECT_EQ(Look(),
            "The hourglass energy is 12 percent of the internal energy at time 5;"
            "5.1 percent of mass were added at time 6;"
            "Values of [kinetic energy] are not a number or infinite;");
  State(" percentage increase...... 9.0E+00\n");
  EXPECT_EQ(Look(), "");
  EXPECT_EQ(health_.Findings().size(), 5u);
}

TEST_F(HealthTest, LimitsAreTheUsers) {
  Settings settings;
  settings.health_step_percent = settings.health_not_finite = 0;
  settings.health_energy_percent = 50;
  State(" time step..... 1.0E-06\n");
  State(" time step..... 1.0E-12\n total energy / initial energy.. 1.4E+00\n value... NaN\n");
  Health health(settings);
  message_.TakeLines(
      "       1 t 0.0000E+00 dt NaN flush i/o buffers            08/14/24 12:00:00\n");
  EXPECT_TRUE(health.Look(states_, message_, true, 0).empty());
  settings.health_energy_percent = 30;  // while the run goes on
  health.SetLimits(settings);
  EXPECT_EQ(health.Look(states_, message_, true, 1).size(), 1u);
  settings.health_energy_percent = 50;
  health.SetLimits(settings);
  EXPECT_TRUE(health.Findings().empty());
}

TEST_F(HealthTest, ADiskThatFillsIsToldOnce) {
  constexpr double kGigabyte = 1 << 30;
  State(" kinetic energy...... NaN\n");
  health_.LookAtDisk(2 * kGigabyte, 1.5 * kGigabyte);
  EXPECT_EQ(Look(),
            "The disk has 1.5 GB free, and the run will write about 2 GB more;"
            "Values of [kinetic energy] are not a number or infinite;");
  health_.LookAtDisk(2 * kGigabyte, kGigabyte);
  EXPECT_EQ(Look(), "");
  EXPECT_EQ(health_.Findings().size(), 2u);
  health_.LookAtDisk(kGigabyte, kGigabyte);
  EXPECT_EQ(health_.Findings().size(), 1u);
  EXPECT_EQ(Look(), "");
  health_.LookAtDisk(2 * kGigabyte, kGigabyte);
  EXPECT_EQ(Look(), "") << "again, and told already";
  EXPECT_EQ(health_.Findings().size(), 2u);
}

TEST_F(HealthTest, ALastRowThatIsNotWholeYetIsLookedAtAgain) {
  State("");
  EXPECT_EQ(Look(), "");
  states_.TakeLines(" total energy / initial energy.. 2.0E+00\n");
  EXPECT_NE(Look(), "");
}

TEST_F(HealthTest, SilenceEndsWithTheNextNews) {
  // A pause of two minutes and 24 seconds: five times that is twelve minutes.
  message_.TakeLines(
      "       1 t 0.0000E+00 dt 1.00E-06 flush i/o buffers            08/14/24 12:00:00\n"
      "    5000 t 1.0000E-01 dt 1.00E-06 flush i/o buffers            08/14/24 12:02:24\n");
  EXPECT_EQ(Look(), "");
  std::string said;
  int second = 0;
  for (; said.empty() && second < 10000; ++second) said = Look(false);
  EXPECT_NEAR(second, 720, 2);
  EXPECT_EQ(said, "No progress for 12 minutes;");
  EXPECT_EQ(Look(false), "");
  EXPECT_EQ(health_.Findings().size(), 1u);
  EXPECT_EQ(Look(true), "");
  EXPECT_TRUE(health_.Findings().empty());
  now_ += 100000;  // the machine slept
  EXPECT_EQ(Look(false), "");
}

TEST_F(HealthTest, WithoutStatesTheProgressLinesTellTheTimeStep) {
  message_.TakeLines(
      "       1 t 0.0000E+00 dt 1.00E-06 flush i/o buffers            08/14/24 12:00:00\n"
      "    5000 t 1.0000E-01 dt 0.00E+00 write d3plot file            08/14/24 12:00:24\n");
  EXPECT_EQ(Look(), "");
  message_.TakeLines(
      "    9000 t 2.0000E-01 dt 1.00E-09 flush i/o buffers            08/14/24 12:01:24\n");
  EXPECT_EQ(Look(), "The time step fell from 1e-06 to 1e-09 at time 0.2;");
  message_.TakeLines(" internal energy................  NaN\n");
  EXPECT_EQ(Look(), "Values of [internal energy] are not a number or infinite;");
}

}  // namespace
