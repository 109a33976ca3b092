#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "support/ProcessesWith_posix.h"
#include "support/ScopedVariable.h"
#include "support/TempFolder.h"
#include "support/VirtualDisplay_posix.h"
#include "support/WaitUntil.h"

namespace {

using Clock = std::chrono::steady_clock;

std::int64_t Milliseconds(Clock::time_point moment) {
  return std::chrono::duration_cast<std::chrono::milliseconds>(moment.time_since_epoch()).count();
}

// A '*' of the model is any status; so is that of a job that ran when it was restored, since its
// solver may end. Once the program is gone, nothing waits.
bool Matches(const std::string& is, const std::string& model) {
  if (is.size() != model.size()) return false;
  for (std::size_t i = 0; i < is.size(); ++i) {
    const bool isAny =
        model[i] == '*' || model.compare(i - std::min<std::size_t>(i, 1), 3, "|R}") == 0;
    if (is[i] != model[i] && !isAny) return false;
  }
  return true;
}

// Decks that second copies handed over: their jobs, once each.
struct Handed {
  std::set<std::string> must;  // the copy has ended, and the job was not removed
  std::set<std::string> may;

  void Hear(const std::string& line) {
    const std::string deck = line.substr(line.find(' ') + 1);
    if (line.starts_with("handed ")) {
      may.erase(deck);
      must.insert(deck);
    } else {
      must.erase(deck);
      may.insert(deck);
    }
  }

  // Takes them out of the queue and looks for each.
  static std::string Others(const std::string& queue) {
    static const std::regex handed(R"( \{[^{}|]*/h\d+\.k\|[^{}]*\})");
    return std::regex_replace(queue, handed, "");
  }
  std::string Missed(const std::string& queue) {
    std::string wrong;
    std::set<std::string> there;
    for (const auto* decks : {&must, &may}) {
      for (const std::string& deck : *decks) {
        const std::size_t first = queue.find(deck);
        const bool isThere = first != std::string::npos;
        if (isThere) there.insert(deck);
        if (!isThere && decks == &must) wrong += deck + " is lost\n";
        if (isThere && queue.find(deck, first + 1) != std::string::npos)
          wrong += deck + " is double\n";
      }
    }
    must = there;
    may.clear();
    return wrong;
  }
};

struct Round {
  std::string ready;  // the queue as it was restored; empty: killed before
  std::vector<std::pair<std::int64_t, std::string>> said;
  std::int64_t killed = 0;
  std::string wrong;
};

class KillTest : public testing::Test {
 protected:
  void SetUp() override { prctl(PR_SET_CHILD_SUBREAPER, 1); }
  void TearDown() override {
    for (const ProcessKey& left : ProcessesWith(folder_.Path())) kill(left.pid, SIGKILL);
    while (waitpid(-1, nullptr, WNOHANG) > 0) {
    }
  }

  // A copy of the user; its output goes into a file.
  static pid_t Start(std::vector<std::string> arguments, const std::string& output) {
    const pid_t user = fork();
    if (user != 0) return user;
    const int file = open(output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    dup2(file, STDOUT_FILENO);
    std::vector<char*> list;
    arguments.insert(arguments.begin(), "queue_user");
    for (std::string& argument : arguments) list.push_back(argument.data());
    list.push_back(nullptr);
    execv(KR_TEST_BIN_DIR "/queue_user", list.data());
    _exit(127);
  }

  std::string SolverDeck(const std::string& name, const std::string& commands) {
    std::filesystem::create_directory(folder_ / name);
    return folder_.Write(name + "/deck.k", "*KEYWORD\n" + commands + "*END\n");
  }
  // Starts these solvers and is killed.
  void RunSolversAndDie(const std::vector<std::string>& names) {
    std::vector<std::string> arguments = {"solvers", folder_.Path()};
    arguments.insert(arguments.end(), names.begin(), names.end());
    const std::string output = folder_ / "output";
    const pid_t user = Start(arguments, output);
    EXPECT_TRUE(WaitUntil([&] { return TempFolder::Read(output) == "all run\n"; }));
    kill(user, SIGKILL);
    waitpid(user, nullptr, 0);
  }
  // What the next one says of them.
  std::vector<std::string> WatchSolvers() {
    const std::string output = folder_ / "output";
    int status = -1;
    waitpid(Start({"solvers", folder_.Path()}, output), &status, 0);
    EXPECT_EQ(status, 0);
    return ReadLines(output);
  }

  Round Run(unsigned seed, std::chrono::milliseconds life) {
    const std::string output = folder_ / "output";
    FileDirWrapper::RemoveFile(output);
    const pid_t user = Start({std::to_string(seed)}, output);
    // Some die while they start.
    const auto patience = Clock::now() + std::chrono::seconds(30);
    while (seed % 8 != 0 && TempFolder::Read(output).empty() && Clock::now() < patience) {
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    std::this_thread::sleep_for(life);
    Round round;
    round.killed = Milliseconds(Clock::now());
    kill(user, SIGKILL);
    int status = 0;
    waitpid(user, &status, 0);
    while (waitpid(-1, nullptr, WNOHANG) > 0 || !ProcessesWith(folder_ / "h").empty()) {
      std::this_thread::sleep_for(std::chrono::milliseconds(2));  // copies that it had started
    }
    if (!WIFSIGNALED(status) || WTERMSIG(status) != SIGKILL)
      round.wrong = "it ended: " + std::to_string(status);
    std::istringstream lines(TempFolder::Read(output));
    std::string line;
    while (std::getline(lines, line)) {
      if (line.starts_with("wrong")) round.wrong = line;
      if (lines.eof()) break;  // torn
      if (line.starts_with("hand") || line.starts_with("drop ")) {
        handed_.Hear(line);
        continue;
      }
      const bool isReady = line.starts_with("ready ");
      if (isReady) line.erase(0, 6);
      const std::string all = line.substr(line.find(' ') + 1);
      if (isReady) round.wrong += handed_.Missed(all);
      const std::string queue = Handed::Others(all);
      if (isReady) round.ready = queue;
      round.said.emplace_back(std::atoll(line.c_str()), queue);
    }
    return round;
  }

  Handed handed_;
  // In memory: what a kill loses is not what a slow disk has not synchronised yet.
  const ScopedVariable temp_{"TMPDIR", "/dev/shm"};
  const TempFolder folder_;
  const ScopedVariable home_{"HOME", folder_.Path()};
  const ScopedVariable config_{"XDG_CONFIG_HOME", folder_ / "config"};
  const ScopedVariable handOver_{"KESTRUN_HANDOVER_FOLDER", folder_ / "handover"};
  const ScopedVariable display_{"DISPLAY", std::nullopt};
};

// KR_KILLS says how often.
TEST_F(KillTest, WhatWasDoneUpToTheLastSecondIsRestored) {
  const char* wanted = std::getenv("KR_KILLS");
  const int kills = wanted != nullptr ? std::atoi(wanted) : 50;
  std::mt19937 random(static_cast<unsigned>(Milliseconds(Clock::now())));
  std::string deck = "*KEYWORD\n";
  while (deck.size() < 3'000'000) deck += "$ a line of a deck that takes some time to be read\n";
  folder_.Write("deck.k", deck + "*END\n");
  std::vector<std::string> allowed = {};
  std::string before;  // all that was said, by how long before the kill
  int restored = 0;
  int exact = 0;
  int running = 0;
  for (int kill = 0; kill < kills; ++kill) {
    const auto seed = static_cast<unsigned>(random());
    const unsigned longest =
        kill % 16 == 8 ? 2500 : 150;  // some are older than what is synchronised
    const Round round = Run(seed, std::chrono::milliseconds(random() % longest));
    ASSERT_EQ(round.wrong, "") << "seed " << seed;
    if (round.ready.empty()) continue;
    if (round.ready.find("|R}") != std::string::npos) ++running;
    if (!allowed.empty()) {
      const auto found = std::find_if(allowed.rbegin(), allowed.rend(), [&](const auto& model) {
        return Matches(round.ready, model);
      });
      ASSERT_NE(found, allowed.rend())
          << "restored: " << round.ready << "\nsaid, by milliseconds before the kill:\n"
          << before;
      ++restored;
      if (found - allowed.rbegin() < 2) ++exact;
    }
    allowed.clear();
    before.clear();
    for (std::size_t i = 0; i < round.said.size(); ++i) {
      const bool isLast = i + 1 == round.said.size();
      before +=
          std::to_string(round.killed - round.said[i].first) + ' ' + round.said[i].second + '\n';
      if (isLast || round.said[i + 1].first >= round.killed - 1000) {
        allowed.push_back(round.said[i].second);
      }
    }
  }
  EXPECT_GT(restored, kills / 4);
  EXPECT_GT(running, 0);
  EXPECT_LE(ProcessesWith(folder_ / "run").size(), 2U) << "a solver and its host";
  std::printf("%d kills, %d restored, %d of them up to the last two steps, %d with a solver\n",
              kills, restored, exact, running);
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder_.Path())) {
    EXPECT_EQ(entry.path().string().find(".kr.old"), std::string::npos) << entry.path();
  }
}

TEST_F(KillTest, SolversOfEveryKindAreFoundAndWatchedAndStopped) {
  constexpr char kLauncher[] = "/usr/bin/mpiexec.hydra";
  const bool hasMpi = FileDirWrapper::FileExists(kLauncher);
  const VirtualDisplay display("640x480");
  const ScopedVariable shown("DISPLAY", display.Name());
  folder_.WriteProgram("mpiexec", std::string("#!/bin/sh\nexec ") + kLauncher + " \"$@\"\n");
  const ScopedVariable path("PATH", folder_.Path() + ":" + std::getenv("PATH"));
  SolverDeck("child", "$ standin: run 60\n$ standin: child\n$ standin: ignore-term\n");
  SolverDeck("mpp", "$ standin: run 60\n");
  SolverDeck("plain", "$ standin: run 5\n");
  SolverDeck("ends", "$ standin: run 1\n");
  std::vector<std::string> names = {"child", "mpp", "plain", "ends"};
  if (!hasMpi) std::erase(names, "mpp");
  RunSolversAndDie(names);
  const auto count = [this](const char* name) {
    return ProcessesWith("i=" + folder_ / name + "/deck.k").size();
  };
  EXPECT_TRUE(display.Name().empty() || !ProcessesWith("xterm").empty());
  EXPECT_TRUE(!hasMpi || count("mpp") >= 4) << count("mpp");
  const std::string child = TempFolder::Read(folder_ / "child/standin_child.pid");
  ASSERT_NE(std::atoi(child.c_str()), 0);
  const ProcessKey childKey = KeyOf(std::atoi(child.c_str()));
  EXPECT_TRUE(IsProcessAlive(childKey));
  EXPECT_TRUE(WaitUntil([&] { return count("ends") == 0; }));

  std::vector<std::string> expected = {"child Aborted kNone", "mpp Aborted kNone",
                                       "plain Finished kNone", "ends Finished kEndedUnwatched"};
  if (!hasMpi) expected.erase(expected.begin() + 1);
  EXPECT_EQ(WatchSolvers(), expected);
  for (const std::string& name : names) EXPECT_EQ(count(name.c_str()), 0U) << name;
  EXPECT_FALSE(IsProcessAlive(childKey)) << "in a session of its own";
}

// The next process has this id.
bool SetNextProcessId(pid_t id) {
  std::ofstream last("/proc/sys/kernel/ns_last_pid");
  return static_cast<bool>(last << id - 1 << std::flush);
}

TEST_F(KillTest, AnotherProgramWithTheIdOfTheSolverIsLeftAlone) {
  const std::string deck = SolverDeck("reused", "$ standin: run 60\n");
  RunSolversAndDie({"reused"});
  const auto solvers = ProcessesWith("i=" + deck);
  ASSERT_FALSE(solvers.empty());
  // Below a host the solver is the younger one.
  const pid_t id = solvers.back().pid;
  for (const ProcessKey& solver : solvers) kill(solver.pid, SIGKILL);
  EXPECT_TRUE(WaitUntil([&] {
    while (waitpid(-1, nullptr, WNOHANG) > 0) {
    }
    return ProcessesWith("i=" + deck).empty() &&
           !FileDirWrapper::FileExists("/proc/" + std::to_string(id));
  }));
  if (!SetNextProcessId(id)) GTEST_SKIP() << "needs a space of processes of its own";
  const pid_t other = fork();
  if (other == 0) {
    if (chdir((folder_ / "reused").c_str()) == 0)
      execlp("sh", "sh", "-c", "sleep 60; :", ("i=" + deck).c_str(), nullptr);
    _exit(127);
  }
  if (other != id) {
    kill(other, SIGKILL);
    GTEST_SKIP() << "somebody else has the id";
  }
  EXPECT_EQ(WatchSolvers(), std::vector<std::string>{"reused Aborted kEndedUnwatchedWith"});
  EXPECT_EQ(waitpid(other, nullptr, WNOHANG), 0) << "it runs on";
  kill(other, SIGKILL);
}

}  // namespace
