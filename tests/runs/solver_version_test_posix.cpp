// Solvers that do not do as they should when asked for their version.

#include <filesystem>

#include "runs/SolverVersion.h"
#include "support/SolverFixture.h"
#include "util/process/ProcessTable_posix.h"

namespace {

using Clock = std::chrono::steady_clock;

class SolverVersionTest : public SolverTest {
 protected:
  bool Ask(const std::string& script) {
    const std::string solver = folder_.WriteProgram("solver", "#!/bin/sh\n" + script);
    VersionQuery query;
    query.report = context_.report;
    query.abort = &abort_;
    return ReadSolverVersion(solver, major_, revision_, query);
  }

  bool SaysReadFailed() const {
    return Has(log_, "Read output information file [" + folder_ / "lstc.log" + "] failed");
  }

  // One whose host has ended too is collected by whoever has that duty here, sooner or later.
  bool SolverRuns() const {
    const auto solver = ReadProcess(std::stoi(ReadLines(folder_ / "pid").front()));
    return solver && solver->IsAlive();
  }

  int major_ = -1;
  int revision_ = -1;
  std::atomic<bool> abort_{false};
};

TEST_F(SolverVersionTest, WhatReportsMaySay) {
  const struct {
    const char* report;
    bool read;
    int major;
    int revision;
  } cases[] = {
      {"Version Number : ls-dyna_smp_s_R6.1.1\\nrevision :  78769 (double)\\n", true, 6, 78769},
      {"version number: ls971 r11\\r\\nREVISION:129956\\r\\n", true, 11, 129956},
      {"| Version : mpp d R13.1 |\\n| Revision: R13.1-138-gf8429c8a10 |\\n", false, 0, 0},
      {":\\n:|\\nConversion: R5\\nRevision: 7\\nVersion number\\nREVISION\\n\\0\\377:", false, 0,
       0},
  };
  for (const auto& c : cases) {
    major_ = revision_ = 0;
    EXPECT_EQ(Ask(std::string("printf '") + c.report + "' > lstc.log"), c.read) << c.report;
    EXPECT_EQ(major_, c.major) << c.report;
    EXPECT_EQ(revision_, c.revision) << c.report;
  }
  EXPECT_TRUE(log_.empty());
}

TEST_F(SolverVersionTest, AnOlderReportCountsWhenNoNewOneComes) {
  folder_.Write("lstc.log", "Version number: R6.0\nRevision: 100\n");
  EXPECT_TRUE(Ask("exit 1\n"));
  EXPECT_EQ(major_, 6);
  // Written by a process that the solver leaves behind, after it has ended itself.
  EXPECT_TRUE(Ask("(sleep 0.5; printf 'Version number: R9.1\nRevision: 7\n' > lstc.log) &\n"));
  EXPECT_EQ(major_, 9);
}

TEST_F(SolverVersionTest, ASolverThatStaysIsEnded) {
  auto begin = Clock::now();
  EXPECT_TRUE(
      Ask("printf 'Version number: R8\\nRevision: 5\\n' > lstc.log; echo $$ > pid\n"
          "trap '' TERM HUP INT; while :; do sleep 1; done\n"));
  EXPECT_EQ(major_, 8);
  EXPECT_LT(Clock::now() - begin, std::chrono::seconds(15));
  EXPECT_FALSE(SolverRuns());

  std::filesystem::remove(folder_ / "lstc.log");
  std::filesystem::remove(folder_ / "pid");
  std::thread stopper([this, &begin] {
    EXPECT_TRUE(WaitUntil([this] { return !ReadLines(folder_ / "pid").empty(); }));
    begin = Clock::now();
    abort_ = true;
  });
  EXPECT_FALSE(Ask("echo $$ > pid; exec sleep 100\n"));
  stopper.join();
  EXPECT_LT(Clock::now() - begin, std::chrono::seconds(10));
  EXPECT_FALSE(SolverRuns());
  EXPECT_FALSE(SaysReadFailed());
}

}  // namespace
