#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "TestChild.h"
#include "util/process/PTWrapper.h"

namespace {

std::atomic<bool> ended{false};

// The last of a thread is the end of what is its own.
std::uint32_t Return(void*) {
  struct Last {
    ~Last() { ended = true; }
  };
  thread_local const Last last;
  static_cast<void>(last);
  return 0;
}

TEST(Thread, CountsAsRunningUntilTerminated) {
  PTWrapperThread thread;
  EXPECT_FALSE(thread.TerminateThread());
  EXPECT_EQ(thread.LastError(), "thread is not created");
  EXPECT_FALSE(thread.CreateThread(nullptr, nullptr, 0));
  EXPECT_EQ(thread.LastError(), "thread function is null");
  EXPECT_FALSE(thread.IsThreadRunning());

  ASSERT_TRUE(thread.CreateThread(Return, nullptr, 0));
  EXPECT_TRUE(WaitUntil([] { return ended.load(); }));
  EXPECT_TRUE(thread.IsThreadRunning());
  EXPECT_TRUE(thread.TerminateThread());
  EXPECT_FALSE(thread.IsThreadRunning());
}

// Where a thread may not unwind its stack, ending it must not end the program.
TEST(Thread, TerminatedInsideADestructor) {
#ifdef KR_THREAD_SANITIZER
  GTEST_SKIP() << "the thread sanitizer loses its count of what such a thread has locked";
#endif
  static std::atomic<long> steps{0};
  struct Slow {
    ~Slow() {
      ++steps;
      std::this_thread::sleep_for(std::chrono::milliseconds(1));  // where a thread can be ended
    }
  };
  for (int i = 0; i < 8; ++i) {
    steps = 0;
    PTWrapperThread thread;
    const auto destroy = [](void*) -> std::uint32_t {
      for (;;) const Slow slow;
    };
    ASSERT_TRUE(thread.CreateThread(destroy, nullptr, 0));
    ASSERT_TRUE(WaitUntil([] { return steps > 2; }));
    EXPECT_TRUE(thread.TerminateThread());
    long seen = -1;
    EXPECT_TRUE(WaitUntil([&seen] {
      const long before = seen;
      seen = steps;
      return seen == before;
    })) << "it goes on";
  }
}

}  // namespace
