// Old output that a viewer holds open: it can neither be removed nor be renamed.
#include <windows.h>

#include "jobs/JobArguments.h"
#include "solvers/RunSteps.h"
#include "support/SolverFixture.h"

namespace {

// Others may read the file, and write it when `sharing` says so.
class Viewer {
 public:
  Viewer(const std::string& path, DWORD sharing)
      : file_(CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ | sharing, nullptr,
                          OPEN_EXISTING, 0, nullptr)) {
    EXPECT_NE(file_, INVALID_HANDLE_VALUE) << path;
  }
  ~Viewer() { CloseHandle(file_); }
  Viewer(const Viewer&) = delete;
  Viewer& operator=(const Viewer&) = delete;

 private:
  const HANDLE file_;
};

using HeldOutput = SolverTest;

TEST_F(HeldOutput, DoesNotTellHowARunEnded) {
  const std::string old = " N o r m a l    t e r m i n a t i o n\n";
  const std::string messages = folder_.Write("messag", old);
  auto dyna = DynaJobWith("$ standin: no-message\n");
  {
    const Viewer viewer(messages, FILE_SHARE_WRITE);
    ExpectFailure(*dyna, RunError::kNoMessageFile,
                  "No message file been generated when run job [" + dyna->jobFile + "]: [" +
                      messages + "] is left from an earlier run");
  }
  EXPECT_TRUE(Has(log_, "Remove old message file [" + messages + "] failed"));
  EXPECT_EQ(TempFolder::Read(messages), old);
  dyna = DynaJobWith("");
  EXPECT_EQ(Run(*dyna), JobStatus::kFinished) << "once it is closed";

  const std::string result = folder_.Write("v.lin", "old");
  JobFileVorel vorel(context_.settings);
  vorel.jobFile = folder_.Write("v.dat", "x");
  const Viewer viewer(result, 0);
  EXPECT_EQ(Run(vorel), JobStatus::kAborted);
  EXPECT_TRUE(Has(log_, "Remove old LIN file [" + result + "] failed"));
  EXPECT_EQ(TempFolder::Read(result), "old");
}

}  // namespace
