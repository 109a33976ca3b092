#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <new>
#include <thread>

#include "progress/RunCases.h"
#include "progress/RunWatcher.h"
#include "support/OwnProgram.h"
#include "support/TempFolder.h"
#include "support/WaitUntil.h"
#include "util/files/FolderSnapshot.h"
#include "util/process/PTWrapper.h"

namespace {

constexpr char kBegin[] =
    "       1 t 0.0000E+00 dt 1.00E-06 flush i/o buffers            08/14/24 12:00:00\n";
constexpr char kHalf[] =
    "    5000 t 5.0000E-01 dt 1.00E-09 flush i/o buffers            08/14/24 12:10:00\n";

constexpr char kSleeper[] = "KR_TEST_SLEEPER";

const OwnProgramChild sleeper(kSleeper, [](const std::string&) {
  std::this_thread::sleep_for(std::chrono::minutes(1));
  return 0;
});

class RunWatcherTest : public testing::Test {
 protected:
  static constexpr auto kJob = static_cast<JobId>(7);

  RunWatcherTest() {
    run_.job = kJob;
    run_.started = 1;
    run_.folder = folder_.Path();
    run_.jobFile = folder_.Write("deck.k", "*KEYWORD\n*CONTROL_TERMINATION\n2.0\n");
    // Of the run before.
    folder_.Write("glstat",
                  " dt of cycle 1 is controlled by shell 1 of part 1\n time.... 9.0E+00\n");
    folder_.Write("messag.krb", kHalf);
    NoteFilesBefore({"glstat", "messag.krb"});
  }

  void NoteFilesBefore(const std::vector<std::string>& names) {
    std::vector<std::string> files;
    for (const std::string& name : names) files.push_back(folder_ / name);
    FolderSnapshot before;
    before.Take(files);
    run_.filesBefore = before.Text();
  }

  void Start() {
    RunWatcher::Hooks hooks;
    hooks.runs = [this] {
      const std::lock_guard<std::mutex> lock(mutex_);
      std::vector<WatchedRun> runs = others_;
      if (going_) runs.push_back(run_);
      return runs;
    };
    hooks.settings = [this] {
      if (throws_) throw std::bad_alloc();
      return Settings();
    };
    hooks.changed = [this](JobId job) { changes_ += job == kJob ? 1 : 0; };
    hooks.report = [this](const Message& message) {
      const std::lock_guard<std::mutex> lock(mutex_);
      said_ += message.English() + ";";
    };
    watcher_ = std::make_unique<RunWatcher>(hooks, std::chrono::milliseconds(10), patience_);
  }

  RunState State() const { return watcher_->StateOf(kJob).value_or(RunState()); }
  bool WaitForLooks(int count) {
    const int wanted = changes_ + count;
    return WaitUntil([&] { return changes_ >= wanted; });
  }

  const TempFolder folder_;
  WatchedRun run_;
  std::vector<WatchedRun> others_;
  std::chrono::milliseconds patience_{30000};
  std::atomic<bool> going_{true};
  std::atomic<int> changes_{0};
  std::atomic<bool> throws_{false};
  std::mutex mutex_;
  std::string said_;
  std::unique_ptr<RunWatcher> watcher_;
};

TEST_F(RunWatcherTest, FollowsARunToItsStop) {
  Start();
  ASSERT_TRUE(WaitForLooks(2));
  EXPECT_TRUE(State().running);
  EXPECT_FALSE(State().news.cycle);  // what lies there is of another run
  folder_.Write("messag", kBegin);
  ASSERT_TRUE(WaitUntil([&] { return State().news.cycle == 1; }));
  EXPECT_EQ(State().news.controlledBy, "");
  folder_.Write("messag", std::string(kBegin) + kHalf);
  ASSERT_TRUE(WaitUntil([&] { return State().news.percent == 25; }));
  EXPECT_NEAR(*State().news.secondsLeft, 1800, 601);
  EXPECT_EQ(State().health.size(), 1u);
  // The end is written and the file renamed between two looks.
  folder_.Write("next", std::string(kBegin) + kHalf + " N o r m a l    t e r m i n a t i o n\n");
  std::filesystem::remove(folder_ / "messag");
  ASSERT_TRUE(FileDirWrapper::MoveFileOver(folder_ / "next", folder_ / "messag.krb"));
  going_ = false;
  ASSERT_TRUE(WaitUntil([&] { return !State().running; }));
  EXPECT_EQ(State().news.ended, RunEnd::kStopped);
  EXPECT_EQ(StoppedAt(State().news), 25);
  EXPECT_EQ(State().news.percent, 25);
  watcher_.reset();
  EXPECT_EQ(said_,
            "Job [" + run_.jobFile + "]: The time step fell from 1e-06 to 1e-09 at time 0.5;");
}

TEST_F(RunWatcherTest, AnotherRunOfTheJobBeginsAnew) {
  folder_.Write("messag", kBegin);
  Start();
  ASSERT_TRUE(WaitForLooks(1));
  folder_.Write("messag", std::string(kBegin) + kHalf);
  ASSERT_TRUE(WaitUntil([&] { return State().news.cycle == 5000; }));
  going_ = false;
  ASSERT_TRUE(WaitUntil([&] { return !State().running; }));
  run_.started = 2;
  NoteFilesBefore({"glstat", "messag.krb", "messag"});
  going_ = true;
  ASSERT_TRUE(WaitUntil([&] { return State().running; }));
  EXPECT_EQ(State().run.started, 2);
  EXPECT_FALSE(State().news.cycle);
}

// A run that ended while nobody watched, and is still among those that go on.
TEST_F(RunWatcherTest, LooksOnceAtARunThatHasEndedAndMeasuresOneThatGoesOn) {
  going_ = false;
  Start();
  EXPECT_FALSE(watcher_->StateOf(kJob));
  folder_.Write("messag", std::string(kBegin) + kHalf + " N o r m a l    t e r m i n a t i o n\n");
  const std::optional<RunState> last = watcher_->LookLast(run_);
  ASSERT_TRUE(last);
  EXPECT_EQ(StoppedAt(last->news), 25);
  EXPECT_GE(last->use.results, sizeof kBegin + sizeof kHalf);
  going_ = true;
  const int before = changes_;
  EXPECT_FALSE(WaitUntil([&] { return changes_ > before; }, std::chrono::milliseconds(100)));

  PTWrapperProcess solver;
  ASSERT_TRUE(solver.Create(OwnProgram(kSleeper, "1")));
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    run_.process = IdentityOfProcess(solver.ChildId());
  }
  EXPECT_TRUE(WaitUntil([&] { return State().use.memory.value_or(0) > 1u << 20; }));
  solver.TerminateAll();
  EXPECT_TRUE(State().running);
}

TEST_F(RunWatcherTest, CasesAreOneRunAndOneThatStoppedStopsItAll) {
  const std::string end = " N o r m a l    t e r m i n a t i o n\n";
  const std::string stop = " *** termination due to sense switch: stop ***\n";
  run_.jobFile = folder_.Write("cases.k",
                               "*KEYWORD\n*CASE_BEGIN_1\n*CONTROL_TERMINATION\n1.0\n*CASE_END_1\n"
                               "*CASE_BEGIN_10\n*CONTROL_TERMINATION\n3.0\n*CASE_END_10\n");
  folder_.Write("CASE1.messag", std::string(kBegin) + kHalf);
  Start();
  ASSERT_TRUE(WaitUntil([&] { return State().news.percent == 12.5; }));
  EXPECT_EQ(State().news.caseNumber, 1);
  EXPECT_EQ(State().news.cases, 2);
  EXPECT_GE(*State().news.secondsLeft, 3 * 600);
  EXPECT_LE(*State().news.caseSecondsLeft, 600);
  folder_.Write("CASE1.messag", std::string(kBegin) + kHalf + stop + end);
  ASSERT_TRUE(WaitUntil([&] { return State().news.percent == 25; }));
  EXPECT_EQ(State().news.ended, RunEnd::kRunning) << "the second case is to come";
  folder_.Write("CASE10.messag", kBegin);
  ASSERT_TRUE(WaitUntil([&] { return State().news.caseNumber == 2; }));
  EXPECT_EQ(State().news.secondsLeft, 3 * 600) << "by the case before";
  EXPECT_EQ(State().news.caseSecondsLeft, 3 * 600);
  folder_.Write("CASE10.messag", std::string(kBegin) + kHalf);
  ASSERT_TRUE(WaitUntil([&] { return State().news.cycle == 5000; }));
  EXPECT_NEAR(*State().news.percent, 100 * (1 + 0.5) / 4, 1e-9);
  folder_.Write("CASE10.messag",
                std::string(kBegin) + kHalf + " *** termination time reached ***\n" + end);
  going_ = false;
  ASSERT_TRUE(WaitUntil([&] { return !State().running; }));
  EXPECT_EQ(StoppedAt(State().news), 50);
  // Who looks only then sees the same, in the folder too.
  run_.started = 2;
  const std::optional<RunState> late = watcher_->LookLast(run_);
  ASSERT_TRUE(late);
  EXPECT_EQ(StoppedAt(late->news), 50);
  RunCases all;
  all.TakeFiles(FindCaseFiles(folder_.Path(), CasesBy::kName));
  all.Look();
  all.SetDeck(EndTimeOfDeck(folder_.Path(), "cases.k"));
  EXPECT_EQ(StoppedAt(all.News()), 50);
}

#ifndef _WIN32  // where a file of a terabyte takes no room
TEST_F(RunWatcherTest, WhatIsThrownEndsTheReadingAndNothingElse) {
  folder_.Write("messag", kBegin);
  Start();
  ASSERT_TRUE(WaitUntil([&] { return State().news.cycle == 1; }));
  const int before = changes_;
  throws_ = true;
  ASSERT_TRUE(WaitUntil([&] { return changes_ > before && !State().news.cycle; }));
  EXPECT_TRUE(State().running) << "its row goes on";
  throws_ = false;
  EXPECT_FALSE(
      WaitUntil([&] { return State().news.cycle.has_value(); }, std::chrono::milliseconds(100)));
  EXPECT_FALSE(watcher_->LookLast(run_));
  watcher_.reset();
  EXPECT_EQ(said_, "Job [" + run_.jobFile + "]: What the solver writes is not read any more: " +
                       std::bad_alloc().what() + ";");
}

TEST_F(RunWatcherTest, AFolderThatDoesNotAnswerHoldsUpItsOwnRunAlone) {
  const TempFolder dead;
  WatchedRun hung = run_;
  hung.job = static_cast<JobId>(8);
  hung.folder = dead.Path();
  hung.filesBefore.clear();
  others_ = {hung};
  // Reading it takes minutes.
  std::filesystem::resize_file(dead.Write("messag", kBegin), std::uintmax_t{1} << 40);
  patience_ = std::chrono::milliseconds(100);
  folder_.Write("messag", std::string(kBegin) + kHalf);
  Start();
  ASSERT_TRUE(WaitUntil([&] { return State().news.cycle == 5000; }));
  EXPECT_FALSE(watcher_->LookLast(hung)) << "given up";
  const auto before = std::chrono::steady_clock::now();
  watcher_.reset();
  EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(5));
  std::filesystem::resize_file(dead / "messag", 0);  // its thread comes to an end
}
#endif

}  // namespace
