// The command lines that are shown are those that run.
#include "core/JobCommand.h"

#include <algorithm>

#include "GroupFixture.h"
#include "util/text/StrWrapper.h"

namespace {

class JobCommandTest : public GroupTest {
 protected:
  std::vector<JobCommand> Commands(const std::shared_ptr<JobFile>& job) {
    Group()->AddJob(job);
    const auto requests = CommandRequestsOf(*Group(), {JobId::kNone, job->id}, files_.Get());
    EXPECT_EQ(requests.size(), 1U);
    return CommandsOf(requests.front());
  }
  static std::vector<std::string> FilesIn(const std::string& folder) {
    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
      files.push_back(entry.path().string());
    std::sort(files.begin(), files.end());
    return files;
  }
};

TEST_F(JobCommandTest, TheShownLineIsTheOneThatRunsAndNothingIsWritten) {
  const auto job = Job("my job", "echo");
  job->memory = 1000;
  job->ncpu = 4;
  job->extraOptions = "-x \"b c\"";
  std::ofstream(job->Folder() + "/messag") << "of an earlier run";
  const auto before = FilesIn(job->Folder());
  const std::vector<JobCommand> commands = Commands(job);
  ASSERT_EQ(commands.size(), 1U);
  const JobCommand& command = commands.front();
  EXPECT_EQ(FilesIn(job->Folder()), before);
  EXPECT_TRUE(command.trouble.Empty()) << command.trouble.English();
  EXPECT_EQ(command.folder, job->Folder());
  EXPECT_EQ(command.variables, (decltype(command.variables){{"LSTC_MEMORY", "auto"}}));
  ASSERT_EQ(command.memory.size(), 1U);
  EXPECT_EQ(command.memory[0].argument, "memory=250m");
  EXPECT_EQ(command.memory[0].megabytes, 1000U);

  ASSERT_TRUE(Group()->Submit());
  ASSERT_TRUE(WaitForEnd(*Group()));
  std::vector<std::string> shown;
  StrWrapperTxt::SplitCommandLine(command.commandLine, shown);
  std::vector<std::string> received = {StandinSolver()};
  std::ifstream echo(job->Folder() + "/standin_echo.txt");
  for (std::string line; std::getline(echo, line) && !line.starts_with("cwd=");) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    received.push_back(line);
  }
  EXPECT_EQ(shown, received);
}

TEST_F(JobCommandTest, StagesMppAndSecrets) {
  const auto job = Job("stages");
  for (const SolverKind kind : {SolverKind::kLsDynaSingle, SolverKind::kLsDynaDouble}) {
    const auto stage = Job(kind == SolverKind::kLsDynaSingle ? "one" : "two");
    stage->solverType = kind;
    stage->memory = 1000;
    job->stages.push_back(stage);
  }
  job->firstStage = 1;
  files_.Set(&Settings::use_mpp, true);
  files_.Set(&Settings::mpp_solver_d, std::string("/opt/mpp d"));
  files_.Set(&Settings::memory2, std::uint64_t{200});
  const std::vector<JobCommand> stages = Commands(job);
  ASSERT_EQ(stages.size(), 2U);
  EXPECT_TRUE(stages[0].isSkipped);
  EXPECT_FALSE(stages[1].isSkipped);
  EXPECT_NE(stages[1].commandLine.find("mpiexec -hosts 2 node1 4 node2 4 \"/opt/mpp d\" i="),
            std::string::npos)
      << stages[1].commandLine;
  ASSERT_EQ(stages[1].memory.size(), 2U);
  EXPECT_EQ(stages[1].memory[0].megabytes, 2000U) << "eight bytes a word";
  EXPECT_EQ(stages[1].memory[1].argument, "memory2=50m");
  EXPECT_EQ(stages[1].trouble.Id(), MessageId::kSolverMissing);

  const auto inc = std::make_shared<JobFileInc>(files_.Get());
  inc->jobFile = Deck("part.fin", "");
  Settings settings = files_.Get();
  settings.inc_token = "Secret.0123456789abcde";
  const JobCommand line = CommandsOf({ImageOf(*inc), settings, {}}).front();
  EXPECT_NE(line.commandLine.find("***"), std::string::npos) << line.commandLine;
  EXPECT_EQ(line.commandLine.find("Secret"), std::string::npos) << line.commandLine;
  const JobCommand none = CommandsOf({ImageOf(*inc), files_.Get(), {}}).front();
  EXPECT_TRUE(none.commandLine.empty());
}

}  // namespace
