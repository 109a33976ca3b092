// A run as a window shows it.
#include "progress/RunReader.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <cstdlib>

#include "support/TempFolder.h"
#include "support/WaitUntil.h"

namespace {

constexpr char kMessages[] =
    "       1 t 0.0000E+00 dt 1.00E-03 flush i/o buffers            08/14/24 12:00:00\n"
    "      10 t 1.0000E-02 dt 1.00E-03 write d3plot file            08/14/24 12:01:40\n"
    "      20 t 2.0000E-02 dt 1.00E-03 flush i/o buffers            08/14/24 12:03:20\n";

std::string State(int cycle, const std::string& time, const std::string& rest = {}) {
  return " dt of cycle " + std::to_string(cycle) +
         " is controlled by shell 7 of part 1\n\n time...........................   " + time +
         "\n" + rest + "\n\n";
}

class RunReaderTest : public testing::Test {
 protected:
  RunPicture Read(RunReader& reader, const RunToRead& run,
                  const std::function<bool(const RunPicture&)>& wanted = {}) {
    reader.Read(run);
    EXPECT_TRUE(WaitUntil([&] {
      const auto picture = reader.Picture();
      return picture && (!wanted || wanted(*picture));
    }));
    const auto picture = reader.Picture();
    return picture ? *picture : RunPicture();
  }

  TempFolder folder_;
};

TEST_F(RunReaderTest, CurvesOverBothAxesAndAsATable) {
  folder_.Write("messag", kMessages);
  folder_.Write("glstat", State(1, "0.0", " kinetic energy.................   1.0E+00\n") +
                              State(15, "1.5E-02", " total energy / initial energy..   NaN\n"));
  RunReader reader{Settings()};
  const RunPicture picture = Read(reader, {.path = folder_.Path(), .folder = folder_.Path()});
  EXPECT_TRUE(picture.isWhole);
  EXPECT_TRUE(picture.isRunning) << "it was written just now";
  EXPECT_EQ(picture.tail.back().substr(0, 10), "      20 t");
  const RunCurves& curves = *picture.curves;
  EXPECT_EQ(*curves.clock, (std::vector{0.0, 150.0}));
  EXPECT_FALSE(curves.values[static_cast<std::size_t>(Quantity::kAddedMass)]);
  EXPECT_EQ(CurvesAsCsv(curves),
            "cycle,time,elapsed_seconds,time_step,kinetic_energy,internal_energy,hourglass_energy,"
            "sliding_interface_energy,total_energy,total_energy_/_initial_energy,"
            "percentage_increase,disk_bytes\n"
            "1,0,0,,1,,,,,,,\n15,0.015,150,,,,,,,,,\n");
}

TEST_F(RunReaderTest, FollowsARunToItsEndAndKeepsEarlierOnesOut) {
  const auto request = [](const RunToRead& of) -> std::optional<LyingRequest> {
    const std::string text = TempFolder::Read(of.folder + "/d3kil");
    return text.empty() ? std::nullopt : std::optional(LyingRequest{text});
  };
  RunReader reader{Settings(), request};
  RunToRead run{.path = folder_.Path(),
                .folder = folder_.Path(),
                .since = 1'000'000'000'000,
                .isRunning = true};
  folder_.Write("messag", kMessages);
  EXPECT_EQ(Read(reader, run).files.kind, RunFiles::Kind::kNone) << "an earlier run's";

  run.since = 1;
  std::string text = kMessages;
  RunPicture picture = Read(reader, run);
  EXPECT_EQ(picture.news.cycle, 20);
  EXPECT_FALSE(picture.request);
  folder_.Write("d3kil", "sw2");
  text += "      30 t 3.0000E-02 dt 1.00E-03 flush i/o buffers            08/14/24 12:05:00\n";
  folder_.Write("messag", text);
  picture = Read(reader, run,
                 [](const RunPicture& next) { return next.news.cycle == 30 && next.request; });
  EXPECT_EQ(picture.request->text, "sw2");
  EXPECT_EQ(picture.curves->pointTime->size(), 4u);

  text +=
      " *** termination time reached ***\n N o r m a l    t e r m i n a t i o n  "
      "        08/14/24 12:05:01";
  folder_.Write("messag.krb", text);
  std::filesystem::remove(folder_ / "messag");
  run.path = folder_ / "messag.krb";
  run.isRunning = run.mayGrow = false;
  picture =
      Read(reader, run, [](const RunPicture& next) { return next.news.ended == RunEnd::kNormal; });
  EXPECT_EQ(picture.news.percent, 100);

  RunReader another{Settings()};
  run.until = 1000;
  EXPECT_EQ(Read(another, run).files.output, "") << "a later run's";

  // Of a deck with cases each can be looked at; without a choice the newest is shown.
  for (const char* kept : {"CASE1.messag.krb", "CASE2.messag.krb"}) folder_.Write(kept, text);
  folder_.Write("CASE1.messag.krb", kMessages);
  run.path = folder_ / "CASE1.messag.krb";
  run.until = 0;
  RunReader cases{Settings()};
  picture = Read(cases, run, [](const RunPicture& next) { return !next.cases.empty(); });
  EXPECT_EQ(picture.cases, (std::vector<int>{1, 2}));
  EXPECT_EQ(picture.shown.cycle, 30);
  run.caseShown = 1;
  picture = Read(cases, run, [](const RunPicture& next) { return next.shown.cycle == 20; });
  EXPECT_EQ(picture.files.output, folder_ / "CASE1.messag.krb");
  EXPECT_EQ(picture.curves->pointTime->size(), 3u);
  EXPECT_EQ(picture.news.cycle, 30) << "of the whole run";

  std::atomic<bool> done{false};
  reader.Do([&] { done = true; });
  EXPECT_TRUE(WaitUntil([&] { return done.load(); }));

  // Cases with names of their own are counted in the order in which they were written.
  std::filesystem::create_directory(folder_ / "named");
  folder_.Write("named/late.messag.krb", kMessages);
  folder_.Write("named/early.messag.krb", text);
  std::filesystem::last_write_time(
      folder_ / "named/late.messag.krb",
      std::filesystem::file_time_type::clock::now() - std::chrono::seconds(2));
  run.path = run.folder = folder_ / "named";
  run.names.hasCases = true;
  RunReader named{Settings()};
  picture = Read(named, run, [](const RunPicture& next) { return next.shown.cycle == 20; });
  EXPECT_EQ(picture.cases, (std::vector<int>{1, 2}));
  EXPECT_EQ(picture.news.cycle, 30);
}

TEST_F(RunReaderTest, ShowsWhatARealRunWrote) {
  const char* data = std::getenv("KESTRUN_TEST_DATA");
  if (data == nullptr) GTEST_SKIP() << "KESTRUN_TEST_DATA is not set";
  const std::string folder = std::string(data) + "/runs/bent_plate";
  RunReader reader{Settings()};
  const RunPicture picture = Read(reader, {.path = folder, .folder = folder});
  EXPECT_EQ(picture.news.ended, RunEnd::kError);
  EXPECT_FALSE(picture.tail.empty());
  EXPECT_TRUE(picture.curves->values[static_cast<std::size_t>(Quantity::kKineticEnergy)]);
  EXPECT_TRUE(picture.curves->diskBytes->empty()) << "copied files tell no times";
}

TEST(DiskUseTest, GrowsWithTheFilesThatWereWritten) {
  DiskUse disk;
  disk.BeginWith({{1000, 500}, {150, 200}, {1000, 300}, {5000, 9}, {20, 9}}, 100, 1000);
  disk.Sample(1010, 1200);
  RunCurves curves = MakeCurves(GlobalStates(), MessageProgress());
  disk.PutInto(curves, 100);
  EXPECT_EQ(*curves.diskClock, (std::vector{0.0, 50.0, 900.0, 910.0}));
  EXPECT_NEAR((*curves.diskBytes)[1], 200 + 800.0 * 50 / 900, 1e-9);
  EXPECT_EQ((*curves.diskBytes)[2], 1000);
  EXPECT_EQ(curves.diskBytes->back(), 1200);
}

}  // namespace
