// A folder in which two users run jobs.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>

#include <filesystem>
#include <thread>

#include "runs/FolderUse.h"
#include "support/ChildProcesses_posix.h"
#include "support/TempFolder.h"
#include "util/process/PTWrapper.h"

namespace {

using Kind = FolderHolder::Kind;

class FolderOfTwoUsers : public testing::Test, protected ChildProcesses {
 protected:
  // Runs a job there as this user until it is killed.
  pid_t StartJob(const char* user) {
    const std::string mark = folder_ / user;
    const pid_t job = StartChild([&] {
      umask(077);
      FolderUse use("theirs.k");
      if (!Become(user) || use.Take({folder_.Path()}).kind != Kind::kNobody) return 1;
      PTWrapperProcess solver;
      if (!solver.Open(getpid())) return 1;
      use.NoteSolver(folder_.Path(), solver);
      std::filesystem::create_directory(mark);
      pause();
      return 0;
    });
    while (!std::filesystem::exists(mark) && waitpid(job, nullptr, WNOHANG) == 0)
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_TRUE(std::filesystem::remove(mark)) << user << " does not run";
    return job;
  }
  Kind Find(const char* user) {
    return static_cast<Kind>(InChild([&] {
      FolderUse use("mine.k");
      return Become(user) ? static_cast<int>(use.Take({folder_.Path()}).kind) : -1;
    }));
  }

  const TempFolder folder_;
};

TEST_F(FolderOfTwoUsers, OneWaitsForTheOtherAndACrashIsInNobodysWay) {
  if (geteuid() != 0) GTEST_SKIP() << "needs root to become other users";
  for (const mode_t mode : {0777, 01777}) {
    chmod(folder_.Path().c_str(), mode);
    const char* one = "nobody";
    const char* other = "daemon";
    for (int turn = 0; turn < 2; ++turn, std::swap(one, other)) {
      const pid_t job = StartJob(one);
      EXPECT_EQ(Find(other), Kind::kOtherProgram);
      kill(job, SIGKILL);
      WaitFor(job);
      EXPECT_EQ(Find(other), Kind::kNobody);
    }
  }
}

}  // namespace
