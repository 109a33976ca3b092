// The readers of what a solver writes, fed as the files grow.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>

#include "progress/GlobalStates.h"
#include "progress/MessageProgress.h"
#include "progress/RunProgress.h"
#include "progress/SolverClock.h"
#include "progress/TextOutput.h"
#include "support/TempFolder.h"

namespace {

TEST(MessageProgressTest, ExplicitRun) {
  const std::string file =
      " Command line options: i=/far/away/Deck.k\n                       memory=20m\n\n"
      "       1 t 0.0000E+00 dt 1.10E-07 flush i/o buffers            08/14/24 12:23:37\n"
      "    5000 t 1.2024E-02 dt 2.42E-06 write d3dump01 file          08/14/24 12:23:40\n"
      " *** Warning 40540 (SOL+540)\n     5000 things t are odd\n"
      " estimated total cpu time          =     33054 sec (       9 hrs 10 mins)\n"
      " estimated clock time to complete  =     33046 sec (       9 hrs 10 mins)\n"
      " termination time                  = 1.300E-01\n"
      "   10000 t 2.4106E-02 dt 2.42E-06 flush i/o buf";
  for (const std::string& text : {file, WithReturns(file)}) {
    MessageProgress run;
    run.TakeLines(text);
    ASSERT_EQ(run.Points().size(), 2u);
    EXPECT_EQ(run.Last()->cycle, 5000);
    EXPECT_DOUBLE_EQ(run.Last()->time, 1.2024e-2);
    EXPECT_DOUBLE_EQ(run.Last()->step, 2.42e-6);
    EXPECT_EQ(run.Last()->clock - run.Points()[0].clock, 3);
    EXPECT_EQ(run.LastEvent(), "write d3dump01 file");
    EXPECT_EQ(run.Estimate().clockLeft, 33046);
    EXPECT_EQ(run.Estimate().cpuTotal, 33054);
    EXPECT_FALSE(run.Estimate().clockTotal);
    EXPECT_EQ(run.Estimate().endTime, 0.13);
    EXPECT_EQ(run.DeckName(), "/far/away/Deck.k");
    EXPECT_EQ(run.End(), RunEnd::kRunning);
  }
}

TEST(MessageProgressTest, ImplicitRun) {
  MessageProgress run;
  run.TakeLines(
      "       1 t 0.0000E+00 dt 1.00E-01 write d3plot file            11/28/19 09:27:00\n"
      " BEGIN implicit statics  step      1 t= 1.0000E-01             11/28/19 09:27:10\n"
      " Iteration:   1     *|du|/|u| =  5.8743251E-02     *Ei/E0 =  1.0000000E+00\n"
      " Iteration:   2     *|du|/|u| =  5.8743251E-03     *Ei/E0 =  1.0000000E-01\n");
  EXPECT_EQ(run.Last()->time, 0);
  EXPECT_EQ(run.Iterations(), 2);
  run.TakeLines(
      " Equilibrium established after     2 iterations\n"
      " BEGIN implicit statics  step      2 t= 3.0000E-01             11/28/19 09:27:30\n");
  EXPECT_EQ(run.Last()->time, 0.1);
  EXPECT_EQ(run.Last()->clock - run.Points()[0].clock, 30);
  // Without equilibrium the step is tried again, smaller.
  run.TakeLines(
      " BEGIN implicit statics  step      2 t= 2.0000E-01             11/28/19 09:27:50\n");
  EXPECT_EQ(run.Last()->time, 0.1);
  run.TakeLines(
      " Equilibrium iterations summary step      2 t= 2.0000E-01      11/28/19 09:28:00\n");
  EXPECT_EQ(run.Last()->time, 0.2);
  EXPECT_NEAR(run.Last()->step, 0.1, 1e-12);
  EXPECT_EQ(run.ImplicitStep(), 2);
  // The end counts the step before it, and a pause before a restart is none of the run.
  run.TakeLines(
      " BEGIN implicit statics  step      3 t= 3.0000E-01             11/28/19 09:28:10\n"
      " Equilibrium established after     5 iterations\n"
      " N o r m a l    t e r m i n a t i o n                          11/28/19 09:28:20\n");
  EXPECT_EQ(run.Last()->time, 0.3);
  const double pause = run.LongestPause();
  run.TakeLines(
      " BEGIN implicit statics  step      4 t= 4.0000E-01             11/28/19 19:28:10\n"
      " Equilibrium iterations summary step      4 t= 4.0000E-01      11/28/19 19:28:20\n");
  EXPECT_EQ(run.End(), RunEnd::kRunning);
  EXPECT_EQ(run.LongestPause(), pause);
}

TEST(MessageProgressTest, HowItEnds) {
  const std::string line =
      "     100 t 5.0000E-01 dt 5.00E-03 write d3plot file            11/28/19 09:27:00\n";
  const std::string normal =
      " N o r m a l    t e r m i n a t i o n                          11/28/19 09:27:01\n";
  const auto end = [&](const std::string& text) {
    MessageProgress run;
    run.TakeLines(line + text);
    return run.End();
  };
  EXPECT_EQ(end(" *** termination time reached ***\n" + normal), RunEnd::kNormal);
  EXPECT_EQ(end(" *** termination due to sense switch: stop ***\n" + normal), RunEnd::kStopped);
  EXPECT_EQ(end(" *** termination due to sense switch: stop ***\n"
                " E r r o r   t e r m i n a t i o n\n Problem time       =    5.0000E-01\n"
                " E r r o r   t e r m i n a t i o n"),
            RunEnd::kError);
  EXPECT_EQ(end(normal + line), RunEnd::kRunning);  // a restart in the same file
}

TEST(MessageProgressTest, KeepsABoundedNumberOfPointsAndTheLast) {
  MessageProgress run;
  std::string block;
  constexpr int kLines = 150000;
  for (int i = 1; i <= kLines; ++i) {
    char line[100];
    std::snprintf(line, sizeof line,
                  "%8d t %.4E dt 1.00E-06 flush i/o buffers   08/14/24 12:%02d:%02d\n", i, i * 1e-6,
                  i / 6000, i / 100 % 60);
    block += line;
    if (i % 7 != 0 && i != kLines) continue;
    run.TakeLines(block);
    block.clear();
    ASSERT_EQ(run.Last()->cycle, i);
  }
  EXPECT_LE(run.Points().size(), MessageProgress::kMostPoints);
  EXPECT_GT(run.Points().size(), MessageProgress::kMostPoints / 4);
  for (std::size_t i = 1; i < run.Points().size(); ++i) {
    ASSERT_LT(run.Points()[i - 1].cycle, run.Points()[i].cycle);
  }
}

constexpr char kTwoStates[] =
    " a title with.....  3\n                    solver smp d date 12/12/2022\n\n"
    " dt of cycle       1 is controlled by solid   100449 of part    10\n\n"
    " time...........................   0.00000E+00\n"
    " time step......................   0.28468E-03\n"
    " hourglass energy ..............  -1.00000E+00\n"
    " stonewall energy... 1.25E+01 wall#    1\n"
    " stonewall energy... 2.50E+01 wall#    2\n"
    " total energy / initial energy..   1.00000E+00\n"
    " energy ratio w/o eroded energy.   1.50000E+00\n"
    " time per zone cycle.(nanosec)..            12\n\n\n"
    " number of shell elements that  \n reached the minimum time step..    7\n\n"
    " dt of cycle    5000 is controlled by load curve\n\n"
    " time...........................   1.00000E-01\n"
    " time step......................           NaN\n"
    " eroded kinetic energy..........   1.00000-101\n"
    " total energy / initial energy..   9.00000E-01\n"
    " added mass.....................   0.00000E+0";

TEST(GlobalStatesTest, NamesValuesAndWhatIsMissing) {
  for (const std::string& text : {std::string(kTwoStates), WithReturns(kTwoStates)}) {
    GlobalStates states;
    states.TakeLines(text);
    ASSERT_EQ(states.Rows(), 2u);
    EXPECT_EQ(states.Cycle(1), 5000);
    EXPECT_EQ(states.ControlledBy(0), "solid 100449 of part 10");
    EXPECT_EQ(states.ControlledBy(1), "load curve");
    const std::pair<const char*, double> first[] = {
        {"time", 0},
        {"time step", 0.28468e-3},
        {"hourglass energy", -1},
        {"stonewall energy wall# 1", 12.5},
        {"stonewall energy wall# 2", 25},
        {"total energy / initial energy", 1},
        {"energy ratio w/o eroded energy", 1.5},
        {"time per zone cycle.(nanosec)", 12},
        {"number of shell elements that reached the minimum time step", 7}};
    for (const auto& [name, value] : first) {
      const GlobalStates::Column* column = states.Find(name);
      ASSERT_NE(column, nullptr) << name;
      EXPECT_DOUBLE_EQ(column->values[0], value) << name;
    }
    EXPECT_EQ(states.Columns().size(), 10u);  // the line that was cut is not a value
    EXPECT_FALSE(GlobalStates::Has(*states.Find("hourglass energy"), 1));
    EXPECT_FALSE(GlobalStates::Has(*states.Find("eroded kinetic energy"), 0));
    EXPECT_DOUBLE_EQ(states.Find("eroded kinetic energy")->values[1], 1e-101);
    EXPECT_TRUE(GlobalStates::Has(*states.Find("time step"), 1));
    EXPECT_TRUE(std::isnan(states.Find("time step")->values[1]));
    EXPECT_EQ(states.NotFinite(), 1u);
    EXPECT_EQ(states.FirstNotFinite(), "time step");
  }
}

TEST(TextOutputTest, IncAndVorel) {
  TextOutput vorel;
  vorel.TakeLines(" D A T E (MM/DD/YY): 01/10/15\n TIME(HH:MM:SS:.01): 10:00:00:.12\n");
  EXPECT_EQ(vorel.End(), RunEnd::kRunning);
  vorel.TakeLines(" D A T E (MM/DD/YY): 01/11/15   TIME(HH:MM:SS:.01): 09:30:00:.12\n");
  EXPECT_EQ(vorel.End(), RunEnd::kNormal);
  EXPECT_EQ(*vorel.Ended() - *vorel.Started(), 23 * 3600 + 1800);
  TextOutput inc;
  inc.TakeLines(" STEP 1\n");
  EXPECT_EQ(inc.End(), RunEnd::kRunning);
  inc.TakeLines(" THE TOTAL TIME FOR THIS JOB IS ABOUT 3 S\n");
  EXPECT_EQ(inc.End(), RunEnd::kNormal);
}

class RunFolder : public testing::Test {
 protected:
  RunNews Look(const std::string& path) const {
    RunProgress run(FindRunFiles(path));
    run.Look();
    run.SetDeckEndTime(EndTimeOfDeck(folder_.Path(), run.Message().DeckName()).value);
    return run.News();
  }
  static std::string Line(int cycle, double time, const char* clock) {
    char line[100];
    std::snprintf(line, sizeof line, "%8d t %.4E dt 1.00E-02 flush i/o buffers   08/14/24 %s\n",
                  cycle, time, clock);
    return line;
  }
  const TempFolder folder_;
};

TEST_F(RunFolder, HowFarAndHowLong) {
  folder_.Write("deck.k", "*KEYWORD\n*CONTROL_TERMINATION\n2.0\n");
  folder_.Write("A.messag", " Command line options: I=C:\\jobs\\deck.k\n\n" +
                                Line(1, 0, "12:00:00") + Line(50, 0.5, "12:10:00"));
  folder_.Write("A.glstat", kTwoStates);
  folder_.Write("mes0001", Line(99, 1.9, "13:00:00"));  // not the first rank's
  for (const std::string& path : {folder_.Path(), folder_ / "A.messag", folder_ / "A.glstat"}) {
    const RunNews news = Look(path);
    EXPECT_EQ(news.cycle, 50);
    EXPECT_EQ(news.endTime, 2.0);
    EXPECT_EQ(news.percent, 25);
    EXPECT_EQ(news.controlledBy, "load curve");
    ASSERT_TRUE(news.secondsLeft);
    EXPECT_NEAR(*news.secondsLeft, 1800, 1);
    EXPECT_EQ(news.ended, RunEnd::kRunning);
  }
  // The solver's own word about its end goes before the deck.
  folder_.Write("A.status.out", " termination time                  = 1.000E+00\n");
  EXPECT_EQ(Look(folder_.Path()).percent, 50);
}

TEST_F(RunFolder, ANormalEndBeforeTheEndTimeIsAStop) {
  const auto end = [&](double time) {
    folder_.Write("messag.krb", " termination time = 1.0\n" + Line(1, 0, "12:00:00") +
                                    Line(50, time, "12:10:00") +
                                    " N o r m a l    t e r m i n a t i o n\n");
    return Look(folder_.Path());
  };
  EXPECT_EQ(end(0.38).ended, RunEnd::kStopped);
  EXPECT_NEAR(*end(0.38).percent, 38, 1e-9);
  EXPECT_EQ(end(0.99999).ended, RunEnd::kNormal);
  EXPECT_EQ(end(0.99999).percent, 100);
  EXPECT_EQ(end(0.5).secondsLeft, 0);
  EXPECT_EQ(StoppedAt(end(0)), kNotStopped) << "an analysis without a time";
  const std::string asked = " *** termination due to sense switch: stop ***\n";
  folder_.Write("messag.krb", " termination time = 1.0\n" + Line(1, 0, "12:00:00") + asked +
                                  " N o r m a l    t e r m i n a t i o n\n");
  EXPECT_EQ(StoppedAt(Look(folder_.Path())), 0);
}

TEST_F(RunFolder, WhatIsNoNumberIsNeitherAnEndNorAShare) {
  folder_.Write("glstat", " dt of cycle 9 is controlled by shell 1\n time......   NaN\n");
  folder_.Write("messag", " termination time = 1.0\n");
  EXPECT_FALSE(Look(folder_.Path()).percent);
  EXPECT_FALSE(Look(folder_.Path()).time);
  const std::string begin = Line(1, 0, "12:00:00") + Line(50, 0.3, "12:10:00");
  folder_.Write("messag", " termination time = -5\n" + begin);
  EXPECT_FALSE(Look(folder_.Path()).secondsLeft);
  for (const char* step : {"Infinity", "1.00E+99"}) {
    folder_.Write("messag", " termination time = 1.0\n" + begin + "  60 t 3.1E-01 dt " + step +
                                " flush i/o buffers   08/14/24 12:20:00\n" +
                                " N o r m a l    t e r m i n a t i o n\n");
    EXPECT_EQ(StoppedAt(Look(folder_.Path())), 31) << step;
  }
}

TEST_F(RunFolder, LateForeignAndMissingFiles) {
  EXPECT_EQ(FindRunFiles(folder_.Path()).kind, RunFiles::Kind::kNone);
  const std::string old = folder_.Write("messag", Line(1, 0, "12:00:00"));
  EXPECT_EQ(FindRunFiles(folder_.Path(), [&](const std::string& file) { return file == old; }).kind,
            RunFiles::Kind::kNone);
  RunProgress run(FindRunFiles(old));
  EXPECT_TRUE(run.Look());
  EXPECT_FALSE(run.Look());
  std::filesystem::remove(old);
  EXPECT_FALSE(run.Look());
  EXPECT_EQ(run.News().cycle, 1);
  folder_.Write("part_INFO.OUT", " THE TOTAL TIME IS ABOUT 1\n");
  EXPECT_EQ(FindRunFiles(folder_ / "part.fin").output, folder_ / "part_INFO.OUT");
  EXPECT_EQ(Look(folder_.Path()).ended, RunEnd::kNormal);
}

TEST(RealRuns, AFailedThermalRun) {
  const char* data = std::getenv("KESTRUN_TEST_DATA");
  if (data == nullptr) GTEST_SKIP() << "KESTRUN_TEST_DATA is not set";
  RunProgress run(FindRunFiles(std::string(data) + "/runs/bent_plate"));
  ASSERT_TRUE(run.Look());
  run.TakeOpenLines();
  const RunNews news = run.News();
  EXPECT_EQ(news.ended, RunEnd::kError);
  EXPECT_EQ(news.cycle, 9);
  EXPECT_DOUBLE_EQ(*news.time, 0.1);
  EXPECT_EQ(news.controlledBy, "load curve");
  EXPECT_EQ(*news.lastTold - *news.started, 8);
  EXPECT_EQ(news.implicitStep, 2);
  EXPECT_EQ(run.Message().Estimate().endTime, std::nullopt);
  ASSERT_EQ(run.States().Rows(), 1u);
  EXPECT_EQ(run.States().Columns().size(), 25u);
  EXPECT_EQ(run.States().Find("internal energy")->values[0], 2e-20);
}

}  // namespace
