// What a run that was cut off left to go on from.
#include <filesystem>

#include "runs/RunFixture.h"

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

class RestartDumpTest : public RunTest {
 protected:
  JobStatus RunWhole(JobFile& job) { return RunJob(job, setup_); }
};

TEST_F(RestartDumpTest, TheNewestWholeOneOfTheRunIsFound) {
  folder_.Write("d3dump07", std::string(4096, ' '));  // of an earlier run
  const auto job = DynaJobWith("$ standin: dumps 6\n$ standin: fail\n");
  EXPECT_EQ(RunWhole(*job), JobStatus::kAborted);
  EXPECT_EQ(job->RestartDump(), folder_ / "d3dump02");

  // It begins where that dump was written, and numbers its own behind it.
  const auto restart = DynaJob("");
  restart->restartFile = job->RestartDump();
  folder_.Write("d3dump02.standin", "$ standin: dumps 2\n$ standin: fail\n");
  EXPECT_EQ(RunWhole(*restart), JobStatus::kAborted);
  EXPECT_EQ(restart->RestartDump(), folder_ / "d3dump03");
  EXPECT_NE(TempFolder::Read(folder_ / "messag.krb").find("1 t 3.0000E-01"), std::string::npos)
      << TempFolder::Read(folder_ / "messag.krb");

  // Cut off while it wrote the last one.
  folder_.Write("d3dump07", "");
  fs::remove(folder_ / "d3dump01");
  const auto torn = DynaJobWith("$ standin: dumps 6\n$ standin: run 6\n");
  std::thread stopper([&] {
    EXPECT_TRUE(WaitUntil([&] { return Exists(folder_ / "d3dump01"); }));
    folder_.Write("d3dump02", "half of it");
    torn->abort = true;
  });
  EXPECT_EQ(RunWhole(*torn), JobStatus::kAborted);
  stopper.join();
  EXPECT_EQ(torn->RestartDump(), folder_ / "d3dump01");
}

TEST_F(RestartDumpTest, AGracefulStopLeavesOneButNotANormalEnd) {
  const auto job = DynaJobWith("");
  EXPECT_EQ(RunWhole(*job), JobStatus::kFinished);
  EXPECT_TRUE(Exists(folder_ / "d3dump01"));
  EXPECT_EQ(job->RestartDump(), "");

  const auto stopped = DynaJobWith("$ standin: run 60\n$ standin: running-dumps 50\n");
  std::thread stopper([&] {
    EXPECT_TRUE(WaitUntil([&] { return Exists(folder_ / "runrsf"); }, 1min));
    folder_.Write("d3kil", "sw1");
  });
  EXPECT_EQ(RunWhole(*stopped), JobStatus::kFinished);
  stopper.join();
  EXPECT_EQ(stopped->RestartDump(), folder_ / "d3dump01");
}

TEST_F(RestartDumpTest, AStageLeavesItsOwn) {
  auto job = DynaJob(folder_.Write("main.k", "*KEYWORD\n*END\n"));
  for (const char* commands : {"", "$ standin: dumps 6\n$ standin: fail\n"}) {
    const std::string name = "s" + std::to_string(job->stages.size());
    fs::create_directory(folder_ / name);
    job->stages.push_back(DynaJob(folder_.Write(name + "/s.k", Deck(commands))));
    job->stages.back()->pause = 0;
  }
  EXPECT_EQ(RunWhole(*job), JobStatus::kAborted);
  EXPECT_EQ(job->stages[0]->RestartDump(), "");
  EXPECT_EQ(job->stages[1]->RestartDump(), FileDirWrapper::Join(folder_ / "s1", "d3dump02"));
  EXPECT_EQ(job->RestartDump(), job->stages[1]->RestartDump());
}

}  // namespace
