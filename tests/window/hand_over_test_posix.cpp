// Many copies of the program at once, as scripts start them.
#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <sstream>
#include <string>

#include "window/ProgramFixture.h"

namespace {

class HandOverByPrograms : public ProgramTest {
 protected:
  static int Number(const char* variable, int otherwise) {
    const char* text = std::getenv(variable);
    return text ? std::atoi(text) : otherwise;
  }
};

// KR_HAND_OVER_COPIES=2000 KR_HAND_OVER_BURST=200 takes some minutes.
TEST_F(HandOverByPrograms, EachJobArrivesOnce) {
  const int copies = Number("KR_HAND_OVER_COPIES", 40);
  const int burst = Number("KR_HAND_OVER_BURST", 20);
  const std::string gate = Deck("gate", "run 3600");
  const std::string report = scratch_ / "report.txt";
  const Copy running = StartCopy("--submit --report=" + report + " " + gate);
  ASSERT_TRUE(WaitUntil([&] { return SolverRuns("gate.k"); }));
  std::map<std::string, int> times;
  for (int first = 0; first < copies; first += burst) {
    std::vector<Copy> started;
    for (int i = first; i < std::min(first + burst, copies); ++i) {
      const std::string job = "/job" + std::to_string(i) + ".dat";
      times[job] = 0;
      // As cron has it, or a batch system.
      const char* bare = "env -u HOME -u DISPLAY -u XDG_RUNTIME_DIR TMPDIR=/nowhere";
      started.push_back(StartCopy(job, "home", i % 2 == 0 ? bare : ""));
    }
    for (const Copy& copy : started)
      EXPECT_EQ(WaitExit(copy, std::chrono::seconds(60)), 0) << TempFolder::Read(copy.output);
  }
  kill(running.pid, SIGTERM);
  EXPECT_EQ(WaitExit(running, std::chrono::seconds(30)), 4);
  std::istringstream lines(TempFolder::Read(report));
  for (std::string line; std::getline(lines, line);) ++times[line.substr(0, line.find('\t'))];
  EXPECT_EQ(times.size(), static_cast<std::size_t>(copies) + 1);
  for (const auto& [job, count] : times) EXPECT_EQ(count, 1) << job;
}

}  // namespace
