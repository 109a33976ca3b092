// Runs of a user who may not do everything: what belongs to another one stays.
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "RunFixture.h"
#include "runs/FolderUse.h"
#include "solvers/SolverKinds.h"
#include "support/ChildProcesses_posix.h"

namespace {

constexpr char kAsOther[] = "KR_TEST_SOLVER_OF_ANOTHER_USER";
constexpr uid_t kOther = 1;

// Takes the place of the tests in a process that is to be a solver of another user.
class OtherUsersSolver : public testing::Environment {
 public:
  void SetUp() override {
    if (std::getenv(kAsOther) == nullptr) return;
    const bool isOther = setresuid(kOther, kOther, kOther) == 0;
    if (isOther) FileDirWrapper::WriteOutputFile("messag", "of another user\n");
    std::this_thread::sleep_for(std::chrono::minutes(1));
    std::_Exit(1);
  }
};
[[maybe_unused]] const auto* const otherUsersSolver =
    testing::AddGlobalTestEnvironment(new OtherUsersSolver);

class OtherUser : public RunTest, protected ChildProcesses {
 protected:
  // Everybody may write there, but only remove what is his own.
  void Share() { chmod(folder_.Path().c_str(), 01777); }
};

TEST_F(OtherUser, OldOutputThatCannotBeRemovedIsSaidNotCounted) {
  if (geteuid() != 0) GTEST_SKIP() << "needs root";
  Share();
  const std::string solver = folder_.WriteProgram("solver", "#!/bin/sh\nexit 0\n");
  chmod(solver.c_str(), 0755);
  context_.settings.solver_path.fill(solver);
  context_.settings.inc_token = "token";
  const struct {
    SolverKind kind;
    const char* job;
    const char* old;
    const char* text;
  } cases[] = {
      {SolverKind::kLsDynaSingle, "a.k", "messag", " N o r m a l    t e r m i n a t i o n\n"},
      {SolverKind::kUtilityBatch, "a.k", "messag", " N o r m a l    t e r m i n a t i o n\n"},
      {SolverKind::kVorel, "a.dat", "a.lin", "x"},
      {SolverKind::kInc, "a.fin", "a_INFO.OUT", " THE TOTAL TIME FOR ALL\n"},
  };
  for (const auto& c : cases) {
    const std::string old = folder_.Write(c.old, c.text);
    const auto job = RowOfKind(c.kind).makeJob(context_.settings);
    job->jobFile = folder_.Write(c.job, Deck(""));
    const int code = InChild([&] {
      if (!Become("nobody")) return 1;
      if (RunJob(*job, setup_) != JobStatus::kAborted) return 2;
      if (job->HowFailed().kind != FailureKind::kOldOutput) return 3;
      const std::string why =
          "[" + old + "] is left from an earlier run; it is the same as before the start";
      return job->RunMessage().English().find(why) != std::string::npos ? 0 : 4;
    });
    EXPECT_EQ(code, 0) << RowOfKind(c.kind).name;
    EXPECT_EQ(TempFolder::Read(old), c.text);
  }
}

TEST_F(OtherUser, ASolverThatCannotBeEndedIsNotCalledStopped) {
  if (geteuid() != 0) GTEST_SKIP() << "needs root";
  Share();
  const std::string solver = folder_ / "solver";
  std::filesystem::copy_file(FileDirWrapper::ProgramPath(), solver);
  ASSERT_EQ(chmod(solver.c_str(), 04755), 0);
  context_.settings.solver_path.fill(solver);
  const auto job = DynaJobWith("");
  const int code = InChild([&] {
    if (!Become("nobody")) return 1;
    setenv(kAsOther, "1", 1);
    std::thread stopper([&] {
      WaitUntil([&] { return Exists(folder_ / "messag"); });
      job->abort = true;
    });
    const JobStatus status = RunJob(*job, setup_);
    stopper.join();
    const Failure failure = job->HowFailed();
    if (status != JobStatus::kAborted || failure.kind != FailureKind::kNotEnded) return 2;
    folder_.Write("left", std::to_string(failure.number));
    const std::string words = job->RunMessage().English();
    if (words.find("process " + std::to_string(failure.number) + " runs on") == std::string::npos)
      return 3;
    FolderUse next("next.k");
    const FolderHolder holder = next.Take({folder_.Path()});
    return holder.kind == FolderHolder::Kind::kSolver && holder.processId == failure.number ? 0 : 4;
  });
  EXPECT_EQ(code, 0);
  const std::string left = TempFolder::Read(folder_ / "left");
  ASSERT_FALSE(left.empty());
  struct stat info {};
  EXPECT_EQ(stat(("/proc/" + left).c_str(), &info), 0);
  EXPECT_EQ(info.st_uid, kOther);
  EXPECT_EQ(kill(std::stoi(left), SIGKILL), 0);
  FolderUse next("next.k");
  EXPECT_TRUE(
      WaitUntil([&] { return next.Take({folder_.Path()}).kind == FolderHolder::Kind::kNobody; }));
}

}  // namespace
