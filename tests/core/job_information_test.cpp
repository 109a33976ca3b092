// The lines of the information window, and the file for the post-processor.

#include <gtest/gtest.h>

#include "core/JobInformation.h"
#include "d3plot/D3plotImage.h"
#include "solvers/PostResult.h"
#include "support/TempFolder.h"

namespace {

class Information : public ::testing::Test {
 protected:
  Information() {
    output_.folder = folder_.Path();
    output_.status = JobStatus::kFinished;
    output_.messageFile = folder_ / "messag.krb";
    folder_.Write("messag.krb",
                  " Total CPU time     =         2 seconds (   0 hours  0 minutes )\n");
    D3plotModel model;
    model.shells = 7;
    folder_.Write("d3plot", D3plotImage(4, false, model).Bytes());
  }

  std::string LastLine(int back = 0) const {
    const auto lines = JobInformation(output_);
    const std::size_t need = static_cast<std::size_t>(back) + 1;
    return lines.size() < need ? std::string() : lines[lines.size() - need];
  }

  TempFolder folder_;
  JobOutput output_;
};

TEST_F(Information, EndsWithTheModelOfAFinishedRun) {
  EXPECT_EQ(LastLine(1), "  Element Number is 7");
  EXPECT_EQ(LastLine(), "  Node Number is 12");
  output_.status = JobStatus::kAborted;
  EXPECT_EQ(LastLine(1), "Found 0 warnings");
  output_.status = JobStatus::kFinished;
  folder_.Write("d3plot", "no database");
  EXPECT_EQ(LastLine().rfind("  d3plot: ", 0), 0U) << LastLine();
  std::filesystem::remove(folder_ / "d3plot");
  EXPECT_EQ(LastLine(1), "Found 0 warnings");

  output_.status = JobStatus::kAborted;
  // Of a deck with cases all are told of, the one first by which the run was judged.
  output_.messageFile = folder_.Write("CASE2.messag.krb", " *** Error 10305 (KEY+305)\n\n");
  folder_.Write("CASE1.messag.krb", " *** Warning 20006 (KEY+6)\n\n");
  output_.names.hasCases = true;
  const auto all = JobInformation(output_);
  const auto place = [&](const std::string& line) {
    return std::find(all.begin(), all.end(), line) - all.begin();
  };
  EXPECT_LT(place("Found 1 errors"), place("Found 1 warnings"));
  EXPECT_LT(place("Found 1 warnings"), static_cast<std::ptrdiff_t>(all.size()));
  output_.names.hasCases = false;

  output_.failure = {FailureKind::kOldOutput};
  output_.reason = Message(MessageId::kOldOutput, "x.lin");
  const auto lines = JobInformation(output_);
  EXPECT_EQ(lines[0], "only old output");
  EXPECT_EQ(lines[1], output_.reason.English());
}

// The file that a post-processor opens.
TEST(PostResult, FollowsTheLastStageThatEndedAndItsKind) {
  const Settings settings;
  const auto stage = [&](const char* deck, const char* simulation, JobStatus status) {
    auto made = std::make_shared<JobFileDyna>(settings);
    made->jobFile = deck;
    made->simulationType = simulation;
    made->status = status;
    return made;
  };
  const auto absolute = &FileDirWrapper::AbsolutePath;
  JobFileDyna job(settings);
  job.jobFile = "/decks/main.dyn";
  job.status = JobStatus::kFinished;
  EXPECT_EQ(PostResults(PostSourceOf(job)).front(), absolute("/decks/d3plot"));
  job.stages = {stage("/s1/gravity.dyn", "Gravity loading", JobStatus::kFinished),
                stage("/s2/trim.dyn", "TRIMMING", JobStatus::kQueued)};
  EXPECT_EQ(PostResults(PostSourceOf(job)).front(), absolute("/s1/d3drlf"));
  job.stages[1]->status = JobStatus::kAborted;
  EXPECT_EQ(PostResults(PostSourceOf(job)).front(), absolute("/s2/dynain"));
  EXPECT_FALSE(IsCompensation(PostSourceOf(job)));
  job.stages.push_back(stage("/s3/scp.dyn", "Springback Compensation", JobStatus::kFinished));
  EXPECT_TRUE(IsCompensation(PostSourceOf(job)));
}

}  // namespace
