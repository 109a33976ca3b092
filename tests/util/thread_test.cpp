#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>

#include "TestChild.h"
#include "util/process/PTWrapper.h"

namespace {

std::uint32_t SetFlag(void* flag) {
  static_cast<std::atomic<bool>*>(flag)->store(true);
  return 0;
}

struct Waiter {
  PTWrapperSignal mutex;
  std::atomic<bool> began{false}, passed{false};
};

std::uint32_t WaitForMutex(void* argument) {
  auto* waiter = static_cast<Waiter*>(argument);
  waiter->began = true;
  waiter->mutex.WaitForMutexSignal(-1);
  waiter->passed = true;
  return 0;
}

std::uint32_t LeaveEarly(void* argument) {
  PTWrapperThread().ExitThread();
  static_cast<std::atomic<bool>*>(argument)->store(true);
  return 0;
}

TEST(Thread, CountsAsRunningUntilTerminated) {
  PTWrapperThread thread;
  EXPECT_FALSE(thread.SetThreadPriority(0));
  EXPECT_EQ(thread.LastError(), "thread is not created");
  EXPECT_FALSE(thread.TerminateThread());
  EXPECT_FALSE(thread.CreateThread(nullptr, nullptr, 0));
  EXPECT_EQ(thread.LastError(), "thread function is null");
  EXPECT_FALSE(thread.IsThreadRunning());

  std::atomic<bool> ran{false};
  ASSERT_TRUE(thread.CreateThread(SetFlag, &ran, 0));
  EXPECT_TRUE(Becomes([&] { return ran.load(); }));
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_TRUE(thread.IsThreadRunning());
  EXPECT_TRUE(thread.TerminateThread());
  EXPECT_FALSE(thread.IsThreadRunning());
}

TEST(Thread, TerminatedWhileItWaits) {
  // Kept longer than the test: on no system does the thread say when it is gone.
  static std::unique_ptr<Waiter> kept;
  kept = std::make_unique<Waiter>();
  Waiter& waiter = *kept;
  ASSERT_EQ(waiter.mutex.CreateMutexSignal("", true), 1);
  PTWrapperThread thread;
  ASSERT_TRUE(thread.CreateThread(WaitForMutex, &waiter, 0));
  ASSERT_TRUE(Becomes([&] { return waiter.began.load(); }));
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_TRUE(thread.SetThreadPriority(-1));
  EXPECT_FALSE(thread.SetThreadPriority(77));
  EXPECT_EQ(thread.LastError(), "Set thread priority failed");
  EXPECT_TRUE(thread.TerminateThread());
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  EXPECT_TRUE(waiter.mutex.ReleaseMutexSignal());
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_FALSE(waiter.passed);
  EXPECT_EQ(waiter.mutex.WaitForMutexSignal(1000), 0);
}

TEST(Thread, SuspendedOnesDoNotGoOn) {
  static std::atomic<bool> ran{false}, reached{false};
  PTWrapperThread suspended, left;
  EXPECT_TRUE(suspended.SuspenThread());
  ASSERT_TRUE(suspended.CreateThread(SetFlag, &ran, PTWrapperThread::kCreateSuspended));
  ASSERT_TRUE(left.CreateThread(LeaveEarly, &reached, 0));
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  EXPECT_FALSE(ran);
  EXPECT_FALSE(reached);
  EXPECT_TRUE(suspended.TerminateThread());

  static std::atomic<long> steps{0};
  steps = 0;
  PTWrapperThread stepper;
  const auto step = [](void*) -> std::uint32_t {
    for (;;) {
      ++steps;
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  };
  ASSERT_TRUE(stepper.CreateThread(step, nullptr, 0));
  ASSERT_TRUE(Becomes([] { return steps > 5; }));
  EXPECT_TRUE(stepper.SuspenThread());
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  const long before = steps;
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  EXPECT_EQ(steps, before);
}

}  // namespace
