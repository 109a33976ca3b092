// Jobs of INC, Vorel and the utility batch program in the window.

#include <gtest/gtest.h>
#include <signal.h>

#include <filesystem>

#include "window/WindowFixture.h"

namespace {

constexpr char kToken[] = "Window.0123456789abcde";

// The files below a folder that hold the token.
std::string FilesWithToken(const std::string& folder) {
  std::string names;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
    if (entry.is_regular_file() &&
        TempFolder::Read(entry.path().string()).find(kToken) != std::string::npos)
      names += entry.path().filename().string() + " ";
  }
  return names;
}

class OtherSolvers : public WindowFixture {};

TEST_F(OtherSolvers, RunFromTheWindowAndTellNoToken) {
  const std::string solver = KR_TEST_BIN_DIR "/standin_solver";
  const std::string vorelSolver = desktop_.Scratch() / "Vorel";
  std::filesystem::create_symlink(solver, vorelSolver);
  const std::string settings =
      "[GENERAL]\nxterm_path=none\npause_time=0\nlast_path=" + desktop_.Scratch().Path() +
      "\n[SOLVER]\nu_batch=" + solver + "\nv_orel=" + vorelSolver + "\ninc=" + solver +
      "\ninc_token=" + kToken;
  desktop_.Scratch().Write("home/config/orla/Kestrun 2016 R1/kr_init.config", settings + "\n");
  const std::string batch = desktop_.Deck("batch", "$ RCMD-SOLVER: ORLASOLVER\n");
  const std::string inc = desktop_.Scratch().Write("part.v2.fin", "$ standin: run 1\n");
  const std::string refused = desktop_.Scratch().Write("fails.fin", "$ standin: fail\n");
  desktop_.Scratch().Write("one step", "");

  const std::string report = desktop_.Scratch() / "report.txt";
  const Copy copy = desktop_.Start({"--submit", "--report=" + report, batch, inc, refused});
  ASSERT_TRUE(desktop_.OpenMain()) << TempFolder::Read(copy.output);
  EXPECT_TRUE(Desktop::WaitFor([&] { return Exists(report); }, kRun));
  const std::string text = TempFolder::Read(report);
  EXPECT_NE(text.find(batch + "\tFinished\tUTILITYBATCH\t"), std::string::npos) << text;
  EXPECT_NE(text.find(inc + "\tFinished\tINCSolver\t"), std::string::npos) << text;
  EXPECT_NE(text.find(refused + "\tAborted\tINCSolver\t"), std::string::npos) << text;

  // A file that is chosen as a Vorel job is one, also without an extension.
  ClickTool(Action::kAddVorel);
  EXPECT_FALSE(desktop_.Windows("KestrunChooser").empty());
  desktop_.Type("one step");  // the folder stands there already
  desktop_.Key("Return");
  ASSERT_TRUE(desktop_.OpenMain());
  desktop_.Key("ctrl+Return");
  const std::string result = desktop_.Scratch() / "one step.lin";
  EXPECT_TRUE(Desktop::WaitFor([&] { return Exists(result); }, kRun));

  desktop_.Click(60, Layout::RowY(1, kWidth));
  desktop_.Key("ctrl+m");
  EXPECT_FALSE(desktop_.Windows("KestrunText").empty()) << "the message file of the INC job";
  EXPECT_EQ(desktop_.Command("xwininfo -root -tree").find(kToken), std::string::npos);
  desktop_.Key("Escape");
  ASSERT_TRUE(desktop_.OpenMain());
  kill(copy.pid, SIGTERM);  // asks nothing, should the last job not be judged yet
  EXPECT_EQ(desktop_.WaitExit(copy, kRun), 4) << "one of the jobs was aborted";
  EXPECT_EQ(FilesWithToken(desktop_.Scratch().Path()), "kr_init.config ");
}

}  // namespace
