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
#include <random>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "support/ScopedVariable.h"
#include "support/TempFolder.h"

namespace {

using Clock = std::chrono::steady_clock;

std::int64_t Milliseconds(Clock::time_point moment) {
  return std::chrono::duration_cast<std::chrono::milliseconds>(moment.time_since_epoch()).count();
}

// A '*' of the model is any status. Once the program is gone, nothing waits or runs.
bool Matches(const std::string& is, const std::string& model) {
  if (is.size() != model.size()) return false;
  for (std::size_t i = 0; i < is.size(); ++i) {
    if (is[i] != model[i] && model[i] != '*') return false;
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
  Round Run(unsigned seed, std::chrono::milliseconds life) {
    const std::string output = folder_ / "output";
    FileDirWrapper::RemoveFile(output);
    const pid_t user = fork();
    if (user == 0) {
      const int file = open(output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
      dup2(file, STDOUT_FILENO);
      execl(KR_TEST_BIN_DIR "/queue_user", "queue_user", std::to_string(seed).c_str(), nullptr);
      _exit(127);
    }
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
    while (waitpid(-1, nullptr, 0) > 0) {  // copies that it had started
    }
    if (!WIFSIGNALED(status)) round.wrong = "it ended: " + std::to_string(WEXITSTATUS(status));
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
  prctl(PR_SET_CHILD_SUBREAPER, 1);
  std::vector<std::string> allowed = {};
  int restored = 0;
  int exact = 0;
  for (int kill = 0; kill < kills; ++kill) {
    const auto seed = static_cast<unsigned>(random());
    const Round round = Run(seed, std::chrono::milliseconds(random() % 150));
    ASSERT_EQ(round.wrong, "") << "seed " << seed;
    if (round.ready.empty()) continue;
    if (!allowed.empty()) {
      const auto found = std::find_if(allowed.rbegin(), allowed.rend(), [&](const auto& model) {
        return Matches(round.ready, model);
      });
      ASSERT_NE(found, allowed.rend())
          << "restored: " << round.ready << "\nlast:     " << allowed.back();
      ++restored;
      if (found - allowed.rbegin() < 2) ++exact;
    }
    allowed.clear();
    for (std::size_t i = 0; i < round.said.size(); ++i) {
      const bool isLast = i + 1 == round.said.size();
      if (isLast || round.said[i + 1].first >= round.killed - 1000) {
        allowed.push_back(round.said[i].second);
      }
    }
  }
  EXPECT_GT(restored, kills / 4);
  std::printf("%d kills, %d restored, %d of them up to the last two steps\n", kills, restored,
              exact);
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder_.Path())) {
    EXPECT_EQ(entry.path().string().find(".kr.old"), std::string::npos) << entry.path();
  }
}

}  // namespace
