#include <gtest/gtest.h>

#include <atomic>
#include <mutex>

#include "progress/RunWatcher.h"
#include "support/TempFolder.h"
#include "support/WaitUntil.h"
#include "util/files/FolderSnapshot.h"
#include "util/process/PTWrapper.h"

namespace {

constexpr char kBegin[] =
    "       1 t 0.0000E+00 dt 1.00E-06 flush i/o buffers            08/14/24 12:00:00\n";
constexpr char kHalf[] =
    "    5000 t 5.0000E-01 dt 1.00E-09 flush i/o buffers            08/14/24 12:10:00\n";

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
      return going_ ? std::vector{run_} : std::vector<WatchedRun>();
    };
    hooks.settings = [] { return Settings(); };
    hooks.changed = [this](JobId job) { changes_ += job == kJob ? 1 : 0; };
    hooks.report = [this](const Message& message) {
      const std::lock_guard<std::mutex> lock(mutex_);
      said_ += message.English() + ";";
    };
    watcher_ = std::make_unique<RunWatcher>(hooks, std::chrono::milliseconds(10));
  }

  RunState State() const { return watcher_->StateOf(kJob).value_or(RunState()); }
  bool WaitForLooks(int count) {
    const int wanted = changes_ + count;
    return WaitUntil([&] { return changes_ >= wanted; });
  }

  const TempFolder folder_;
  WatchedRun run_;
  std::atomic<bool> going_{true};
  std::atomic<int> changes_{0};
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
  std::filesystem::rename(folder_ / "next", folder_ / "messag.krb");
  going_ = false;
  ASSERT_TRUE(WaitUntil([&] { return !State().running; }));
  EXPECT_EQ(State().news.ended, RunEnd::kStopped);
  EXPECT_EQ(State().StoppedAt(), 25);
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
  EXPECT_EQ(last->StoppedAt(), 25);
  EXPECT_GE(last->use.results, sizeof kBegin + sizeof kHalf);
  going_ = true;
  const int before = changes_;
  EXPECT_FALSE(WaitUntil([&] { return changes_ > before; }, std::chrono::milliseconds(100)));

  {
    const std::lock_guard<std::mutex> lock(mutex_);
    run_.process = IdentityOfProcess(PTWrapperProcess().ProcessId());
  }
  ASSERT_TRUE(WaitUntil([&] { return State().use.memory.has_value(); }));
  EXPECT_GT(*State().use.memory, 1u << 20);
  EXPECT_TRUE(State().running);
}

}  // namespace
