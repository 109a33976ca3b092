#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "TestChild.h"
#include "util/process/PTWrapper.h"

namespace {

std::uint32_t SetFlag(void* flag) {
  static_cast<std::atomic<bool>*>(flag)->store(true);
  return 0;
}

TEST(Thread, CountsAsRunningUntilTerminated) {
  PTWrapperThread thread;
  EXPECT_FALSE(thread.TerminateThread());
  EXPECT_EQ(thread.LastError(), "thread is not created");
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

// Where a thread may not unwind its stack, ending it must not end the program.
TEST(Thread, TerminatedInsideADestructor) {
#ifdef KR_SANITIZED
  GTEST_SKIP() << "the thread sanitizer loses its count of what such a thread has locked";
#endif
  static std::atomic<long> steps{0};
  struct Slow {
    ~Slow() {
      ++steps;
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  };
  for (int i = 0; i < 8; ++i) {
    steps = 0;
    PTWrapperThread thread;
    const auto destroy = [](void*) -> std::uint32_t {
      for (;;) const Slow slow;
    };
    ASSERT_TRUE(thread.CreateThread(destroy, nullptr, 0));
    ASSERT_TRUE(Becomes([] { return steps > 2; }));
    EXPECT_TRUE(thread.TerminateThread());
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    const long before = steps;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(steps, before);
  }
}

}  // namespace
