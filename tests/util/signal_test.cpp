#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "support/TempFolder.h"
#include "TestChild.h"
#include "util/files/FileDirWrapper.h"
#include "util/process/PTWrapper.h"

namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

// Unlike that of any other run of these tests, in this user's namespace or in everybody's.
std::string NewName(const std::string& prefix = {}) {
  static int counter = 0;
  return prefix + "KR_TEST_" + std::to_string(Clock::now().time_since_epoch().count()) + "_" +
         std::to_string(counter++);
}

// Nothing shows that a wait has begun. A test holds all the same where it has not.
void LetItWait() {
  std::this_thread::sleep_for(milliseconds(50));
}

class Signal : public testing::TestWithParam<const char*> {
 protected:
  const std::string name = NewName(GetParam());
};
INSTANTIATE_TEST_SUITE_P(Names, Signal, testing::Values("", "Global\\"),
                         [](const auto& of) { return *of.param ? "Global" : "User"; });

TEST_P(Signal, LivesAsLongAsSomebodyHoldsIt) {
  for (int round = 0; round < 2; ++round) {
    PTWrapperSignal first, second, third;
    EXPECT_FALSE(second.OpenEventSignal(name));
    EXPECT_EQ(second.LastError(), "open EVENT " + name + " failed");
    EXPECT_EQ(first.CreateEventSignal(name), 1);
    EXPECT_EQ(second.CreateEventSignal(name), 2);
    EXPECT_EQ(second.LastError(), "EVENT " + name + " already exists");
    EXPECT_TRUE(third.OpenEventSignal(name));
    EXPECT_TRUE(first.CloseEventSignal());
    EXPECT_TRUE(third.SetEventSignal());
    EXPECT_EQ(second.WaitForEventSignal(1000), 0);
    EXPECT_EQ(third.WaitForEventSignal(0), 1) << "one waiter takes it";
    EXPECT_EQ(third.LastError(), "Time out return");
    EXPECT_TRUE(third.SetEventSignal());
    EXPECT_TRUE(second.ResetEventSignal());
    EXPECT_EQ(third.WaitForEventSignal(20), 1);
    EXPECT_TRUE(third.SetEventSignal());  // forgotten with the last holder
  }
}

TEST_P(Signal, DeadOwnerLeavesAnAbandonedMutex) {
  const TempFolder folder;
  PTWrapperSignal mutex, other;
  ASSERT_EQ(mutex.CreateMutexSignal(name, false), 1);
  PTWrapperProcess owner;
  ASSERT_TRUE(StartTestChild(owner, "own " + name + " " + (folder / "owned")))
      << owner.LastError();
  ASSERT_TRUE(WaitUntil([&] { return FileDirWrapper::FileExists(folder / "owned"); }));
  EXPECT_EQ(mutex.WaitForMutexSignal(0), 1);
  EXPECT_EQ(mutex.LastError(), "Time out return");
  EXPECT_FALSE(mutex.ReleaseMutexSignal()) << "it is another's";
  std::thread killer([&] {
    LetItWait();
    owner.Terminate();
  });
  EXPECT_EQ(mutex.WaitForMutexSignal(5000), 2);
  EXPECT_EQ(mutex.LastError(), "the owner thread does not release the mutex");
  killer.join();
  EXPECT_EQ(mutex.WaitForMutexSignal(0), 0) << "owned now, so taken again";
  EXPECT_TRUE(mutex.ReleaseMutexSignal());
  EXPECT_TRUE(mutex.ReleaseMutexSignal());
  EXPECT_FALSE(mutex.ReleaseMutexSignal());

  std::thread([&] { other.CreateMutexSignal(name, false), other.WaitForMutexSignal(-1); }).join();
  EXPECT_EQ(mutex.WaitForMutexSignal(5000), 2) << "its owner thread has ended";
  EXPECT_TRUE(mutex.ReleaseMutexSignal());
  EXPECT_EQ(mutex.WaitForMutexSignal(0), 0);
}

TEST_P(Signal, KilledWaiterTakesNothingWithIt) {
  const TempFolder folder;
  PTWrapperSignal event;
  ASSERT_EQ(event.CreateEventSignal(name), 1);
  PTWrapperProcess killed, waiter, setter;
  ASSERT_TRUE(StartTestChild(killed, "take " + name + " " + (folder / "killed")));
  ASSERT_TRUE(WaitUntil([&] { return FileDirWrapper::FileExists(folder / "killed"); }));
  LetItWait();
  EXPECT_TRUE(killed.Terminate());
  EXPECT_TRUE(event.SetEventSignal());
  EXPECT_EQ(event.WaitForEventSignal(0), 0);

  ASSERT_TRUE(StartTestChild(waiter, "take " + name + " " + (folder / "waiter")));
  ASSERT_TRUE(WaitUntil([&] { return FileDirWrapper::FileExists(folder / "waiter"); }));
  ASSERT_TRUE(StartTestChild(setter, "set " + name));
  EXPECT_TRUE(setter.WaitProc());
  EXPECT_TRUE(waiter.WaitProc());
  EXPECT_EQ(waiter.ExitCode(), 0);
}

TEST_P(Signal, KilledHolderDoesNotKeepTheObject) {
  const TempFolder folder;
  PTWrapperSignal event;
  PTWrapperProcess holder;
  ASSERT_TRUE(StartTestChild(holder, "hold " + name + " " + (folder / "held")));
  ASSERT_TRUE(WaitUntil([&] { return FileDirWrapper::FileExists(folder / "held"); }));
  EXPECT_TRUE(event.OpenEventSignal(name));
  EXPECT_TRUE(event.CloseEventSignal());
  EXPECT_TRUE(holder.Terminate());
  EXPECT_FALSE(event.OpenEventSignal(name));
  EXPECT_EQ(event.CreateEventSignal(name), 1);
}

// Each of four threads uses two of its own handles, as the groups of a queue do.
TEST_P(Signal, MutexExcludesThreads) {
  long counter = 0;  // guarded by the mutex alone
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&] {
      PTWrapperSignal outer, inner;
      outer.CreateMutexSignal(name, false);
      inner.CreateMutexSignal(name, false);
      for (int i = 0; i < 500; ++i) {
        ASSERT_EQ(outer.WaitForMutexSignal(-1), 0);
        ASSERT_EQ(inner.WaitForMutexSignal(-1), 0);
        ++counter;
        inner.ReleaseMutexSignal();
        outer.ReleaseMutexSignal();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(counter, 2000);
}

}  // namespace
