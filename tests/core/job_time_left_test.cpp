#include <gtest/gtest.h>
#include "core/JobTimeLeft.h"

#include <map>

#include "util/text/DateTimeWrapper.h"

namespace {

TEST(JobTimeLeft, AddsWhatPastRunsTellToTheEstimate) {
  std::map<std::string, std::int64_t> took = {{"/a.k", 100}, {"/b.k", 40}};
  const PastRunOf past = [&](const JobFile& job) {
    const auto found = took.find(job.jobFile);
    return found == took.end() ? std::nullopt : std::optional(PastRun{1, found->second, 1});
  };
  const auto made = [](const char* deck) {
    auto job = std::make_shared<JobFileDyna>(Settings());
    job->jobFile = deck;
    job->pause = 2;
    return job;
  };
  const auto job = made("/a.k");
  const auto left = [&](const std::optional<RunState>& state = {}, std::int64_t now = 1000) {
    return JobTimeLeft(*job, state, past, now).value_or(-1);
  };
  EXPECT_EQ(left(), 102);
  job->status = JobStatus::kRunning;
  EXPECT_EQ(left(), -1) << "its solver is not looked at yet";
  RunState state;
  state.run.started = 970;
  EXPECT_EQ(left(state), 70);
  EXPECT_EQ(left(state, 2000), -1) << "it takes longer than before";
  state.news.secondsLeft = 500;
  EXPECT_EQ(left(state), 500);
  job->stages = {made("/a.k"), made("/b.k"), made("/b.k")};
  state.run.stage = 1;
  EXPECT_EQ(left(state), 542);
  state.running = false;
  EXPECT_EQ(left(state), -1);
  job->status = JobStatus::kQueued;
  EXPECT_EQ(left(), 186);
  job->firstStage = 2;
  EXPECT_EQ(left(), 42);
  took.erase("/b.k");
  EXPECT_EQ(left(), -1);
  job->status = JobStatus::kAborted;
  EXPECT_EQ(left(), 0);

  // Somebody sets the clock an hour back while it runs. Of one that was found ended the times tell.
  job->Enter(JobStatus::kRunning, DateTimeWrapper::CurrentTime() - 100);
  job->started += 3600;
  EXPECT_NEAR(static_cast<double>(job->RunSeconds()), 100, 5);
  job->Enter(JobStatus::kFinished, 0);
  EXPECT_LT(job->ended, job->started);
  EXPECT_NEAR(static_cast<double>(job->RunSeconds()), 100, 5);
  job->ResetForRun();
  EXPECT_EQ(job->RunSeconds(), -1);
  job->status = JobStatus::kFinished;
  job->started = 1000;
  job->ended = 1007;
  EXPECT_EQ(job->RunSeconds(), 7);
}

}  // namespace
