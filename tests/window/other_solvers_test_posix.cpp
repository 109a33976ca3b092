// Jobs of INC, Vorel and the utility batch program in the window.

#include <gtest/gtest.h>
#include <signal.h>

#include <filesystem>

#include "ui/Layout.h"
#include "window/Desktop.h"

namespace {

constexpr char kToken[] = "Window.0123456789abcde";
constexpr double kRun = 20;

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

TEST(OtherSolvers, RunFromTheWindowAndTellNoToken) {
  Desktop desktop;
  ASSERT_TRUE(desktop.Ready()) << "no display could be started";
  ASSERT_TRUE(Desktop::WaitFor([&] { return !desktop.AnotherCopyRuns(); }, 30))
      << "end the copy of the program that runs already";
  const std::string solver = KR_TEST_BIN_DIR "/standin_solver";
  const std::string vorelSolver = desktop.Scratch() / "Vorel";
  std::filesystem::create_symlink(solver, vorelSolver);
  const std::string settings =
      "[GENERAL]\nxterm_path=none\npause_time=0\nlast_path=" + desktop.Scratch().Path() +
      "\n[SOLVER]\nu_batch=" + solver + "\nv_orel=" + vorelSolver + "\ninc=" + solver +
      "\ninc_token=" + kToken;
  desktop.Scratch().Write("home/config/orla/Kestrun 2016 R1/kr_init.config", settings + "\n");
  const std::string batch = desktop.Deck("batch", "$ RCMD-SOLVER: ORLASOLVER\n");
  const std::string inc = desktop.Scratch().Write("part.v2.fin", "$ standin: run 1\n");
  const std::string refused = desktop.Scratch().Write("fails.fin", "$ standin: fail\n");
  desktop.Scratch().Write("one step", "");

  const std::string report = desktop.Scratch() / "report.txt";
  const Copy copy = desktop.Start({"--submit", "--report=" + report, batch, inc, refused});
  ASSERT_TRUE(desktop.OpenMain()) << TempFolder::Read(copy.output);
  EXPECT_TRUE(Desktop::WaitFor([&] { return std::filesystem::exists(report); }, kRun));
  const std::string text = TempFolder::Read(report);
  EXPECT_NE(text.find(batch + "\tFinished\tUTILITYBATCH\t"), std::string::npos) << text;
  EXPECT_NE(text.find(inc + "\tFinished\tINCSolver\t"), std::string::npos) << text;
  EXPECT_NE(text.find(refused + "\tAborted\tINCSolver\t"), std::string::npos) << text;

  // A file that is chosen as a Vorel job is one, also without an extension.
  desktop.Click(Layout::ToolX(Layout::kAddVorel, Layout::kWindowWidth) + Layout::kToolSize / 2,
                Layout::kToolY + Layout::kToolSize / 2);
  EXPECT_FALSE(desktop.Windows("KestrunChooser").empty());
  desktop.Type("one step");  // the folder stands there already
  desktop.Key("Return");
  ASSERT_TRUE(desktop.OpenMain());
  desktop.Key("ctrl+Return");
  const std::string result = desktop.Scratch() / "one step.lin";
  EXPECT_TRUE(Desktop::WaitFor([&] { return std::filesystem::exists(result); }, kRun));

  desktop.Click(60, Layout::RowY(1, Layout::kWindowWidth));
  desktop.Key("ctrl+m");
  EXPECT_FALSE(desktop.Windows("KestrunText").empty()) << "the message file of the INC job";
  EXPECT_EQ(desktop.Command("xwininfo -root -tree").find(kToken), std::string::npos);
  desktop.Key("Escape");
  ASSERT_TRUE(desktop.OpenMain());
  kill(copy.pid, SIGTERM);  // asks nothing, should the last job not be judged yet
  EXPECT_EQ(desktop.WaitExit(copy, kRun), 0);
  EXPECT_EQ(FilesWithToken(desktop.Scratch().Path()), "kr_init.config ");
}

}  // namespace
