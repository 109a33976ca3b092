// What the program leaves running when it is killed, on a system that has no launcher of MPI ranks:
// this test program stands in for one, under another name.
#include <windows.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "CoreFixture.h"
#include "support/LeftSolvers.h"
#include "support/OwnProgram.h"
#include "util/process/ProcessIdentity.h"

namespace {

constexpr char kStartsSolvers[] = "KR_TEST_STARTS_SOLVERS";
constexpr char kLauncher[] = "mpiexec.exe";

int StartAndDie(const std::string& folder) {
  Application application;
  const char* const arguments[] = {"kestrun"};
  if (!application.Initialise(1, arguments)) return 1;
  UseStandin(application);
  StartSolvers(application, folder, {"child", "mpp", "plain", "ends"});
  TerminateProcess(GetCurrentProcess(), 9);
  return 2;
}

// "-n RANKS SOLVER ARGUMENTS"
int Launch() {
  if (__argc < 4) return 1;
  const int ranks = std::atoi(__argv[2]);
  std::string line;
  for (int i = 3; i < __argc; ++i) line += '"' + std::string(__argv[i]) + "\" ";
  SetEnvironmentVariableA("PMI_SIZE", std::to_string(ranks).c_str());
  std::vector<HANDLE> started;
  for (int rank = 0; rank < ranks; ++rank) {
    SetEnvironmentVariableA("PMI_RANK", std::to_string(rank).c_str());
    STARTUPINFOA startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION info{};
    if (!CreateProcessA(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                        &startup, &info)) {
      return 1;
    }
    started.push_back(info.hProcess);
  }
  WaitForMultipleObjects(static_cast<DWORD>(started.size()), started.data(), TRUE, INFINITE);
  return 0;
}

// The launcher inherits the variable, so this comes first.
const bool isLauncher = [] {
  if (FileDirWrapper::NameOf(FileDirWrapper::ProgramPath()) == kLauncher) std::_Exit(Launch());
  return false;
}();
const OwnProgramChild starter(kStartsSolvers, StartAndDie);

class LeftSolversTest : public CoreTest {
 protected:
  void SolverDeck(const std::string& name, const std::string& commands) {
    std::filesystem::create_directory(home_ / name);
    Deck(name + "/deck.k", commands);
  }
  // Whoever has a file open keeps others from removing it.
  bool IsOpen(const std::string& file) {
    constexpr DWORD kAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const HANDLE handle = CreateFileA((home_ / file).c_str(), DELETE, kAll, nullptr, OPEN_EXISTING,
                                      FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) return GetLastError() == ERROR_SHARING_VIOLATION;
    CloseHandle(handle);
    return false;
  }
};

TEST_F(LeftSolversTest, SolversOfEveryKindAreFoundAndWatchedAndStopped) {
  SolverDeck("child", "$ standin: run 60\n$ standin: child\n");
  SolverDeck("mpp", "$ standin: run 60\n");
  SolverDeck("plain", "$ standin: run 60\n");
  SolverDeck("ends", "$ standin: run 1\n");
  std::filesystem::copy_file(FileDirWrapper::ProgramPath(), home_ / kLauncher);
  const char* const before = std::getenv("PATH");
  const ScopedVariable path("PATH", home_.Path() + (before ? ";" + std::string(before) : ""));
  PTWrapperProcess killed;
  ASSERT_TRUE(killed.Create(OwnProgram(kStartsSolvers, home_.Path())));
  ASSERT_TRUE(killed.WaitProc());
  ASSERT_EQ(killed.ExitCode(), 9);
  const ProcessIdentity child =
      IdentityOfProcess(std::atoi(TempFolder::Read(home_ / "child/standin_child.pid").c_str()));
  EXPECT_TRUE(Runs(child));
  EXPECT_TRUE(WaitUntil([this] { return !IsOpen("ends/messag"); }));
  const std::vector<std::string> ranks = {"mpp/mes0000", "mpp/mes0001", "mpp/mes0002",
                                          "mpp/mes0003"};
  for (const std::string& rank : ranks) EXPECT_TRUE(IsOpen(rank)) << rank;

  Application application;
  const char* const arguments[] = {"kestrun"};
  ASSERT_TRUE(application.Initialise(1, arguments));
  UseStandin(application);
  EXPECT_EQ(application.Left().stillRun, 3);
  // Asked to end when it is watched, however long it took until now.
  application.RestoreLeft();
  const auto plain = application.Manager().GroupAt(application.Manager().IndexOfName("plain"));
  bool isWatched = false;
  EXPECT_TRUE(WaitUntil([&] {
    plain->ReadJobs([&](const JobFile& job) { isWatched = job.process.IsActive(); });
    return isWatched;
  }));
  home_.Write("plain/d3kil", "sw1");
  EXPECT_EQ(WatchSolvers(application),
            (std::vector<std::string>{"child Aborted kNone", "mpp Aborted kNone",
                                      "plain Finished kNone", "ends Finished kEndedUnwatched"}));
  for (const std::string& rank : ranks) EXPECT_FALSE(IsOpen(rank)) << rank;
  EXPECT_FALSE(Runs(child));
}

}  // namespace
