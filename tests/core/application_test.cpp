// The application without a window: start, hand-over to itself, end.
#include <filesystem>

#include "core/Application.h"
#include "CoreFixture.h"

namespace {

class ApplicationTest : public CoreTest {
 protected:
  bool Start(std::vector<const char*> arguments = {}) {
    arguments.insert(arguments.begin(), "kestrun");
    application_ = std::make_unique<Application>();
    return application_->Initialise(static_cast<int>(arguments.size()), arguments.data());
  }

  std::string HandOverFile() { return application_->SettingsAndFiles().handOverFile; }

  // What another program does.
  void WriteHandOverFile(const std::string& text) {
    std::ofstream(HandOverFile(), std::ios::binary | std::ios::app) << text;
  }

  // The files of the jobs in the current group after one look at the hand-over file.
  std::vector<std::string> JobsAfterTick() {
    EXPECT_TRUE(application_->Tick());
    application_->Intake().Drain();
    std::vector<std::string> files;
    application_->Manager().CurrentGroup()->ReadJobs(
        [&](const JobFile& job) { files.push_back(FileDirWrapper::AbsolutePath(job.jobFile)); });
    return files;
  }

  std::unique_ptr<Application> application_;
};

TEST_F(ApplicationTest, AFirstStartHasOneGroupAndLeavesItsFiles) {
  ASSERT_TRUE(Start());
  EXPECT_EQ(Application::Get(), application_.get());
  EXPECT_EQ(application_->Title(), "Kestrun 2016 R1");
  EXPECT_EQ(application_->Manager().GroupCount(), 1);
  EXPECT_EQ(application_->Manager().CurrentGroup()->Name(), "Group1");
  EXPECT_EQ(application_->Solvers().size(), SolverKinds().size());
  const std::string work = application_->SettingsAndFiles().workFolder;
  EXPECT_EQ(application_->Shutdown(), 0);
  EXPECT_FALSE(application_->Tick());
  application_.reset();
  EXPECT_FALSE(Application::Get());
  EXPECT_EQ(TempFolder::Read(work + "/kr_groups.txt").substr(0, 7), "Group1=");
  EXPECT_TRUE(std::filesystem::exists(work + "/kr_host.txt"));
  EXPECT_TRUE(std::filesystem::exists(work + "/kr_init.config"));
}

TEST_F(ApplicationTest, TheFirstSolverArgumentChoosesTheMode) {
  // Enabled: INC, all others.
  const std::tuple<std::vector<const char*>, bool, bool> cases[] = {
      {{"#solver=dyna"}, false, true},
      {{"a.k", "x#solver=inc"}, true, false},
      {{"#solver=INC"}, true, true},
      {{"#solver=", "#solver=dyna"}, true, true},
  };
  for (const auto& [arguments, inc, others] : cases) {
    ASSERT_TRUE(Start(arguments));
    for (const auto& solver : application_->Solvers()) {
      const bool enabled = solver->solverType == SolverKind::kInc ? inc : others;
      EXPECT_EQ(solver->enabled, enabled ? 1 : 0) << solver->displayName;
      EXPECT_EQ(application_->SolverEnabled(solver->solverType), enabled);
    }
  }
}

TEST_F(ApplicationTest, ItsOwnArgumentsArriveAsJobs) {
  const std::string a = Deck("a.k");
  const std::string b = Deck("b.k");
  {
    const InFolder in(home_.Path());
    ASSERT_TRUE(Start({a.c_str(), "b.k"}));
  }
  EXPECT_EQ(JobsAfterTick(), (std::vector<std::string>{a, b}));
  EXPECT_FALSE(std::filesystem::exists(HandOverFile()));
  EXPECT_EQ(JobsAfterTick().size(), 2u);
}

TEST_F(ApplicationTest, JobsThatWereNotTakenYetEndWithTheProgram) {
  ASSERT_TRUE(Start({"/a.k"}));
  EXPECT_TRUE(application_->JobsWait());
  WriteHandOverFile("#krjob\n/of another program.k\n");
  EXPECT_EQ(application_->Shutdown(), 9) << "and that is said";
  ASSERT_TRUE(Start());
  EXPECT_EQ(JobsAfterTick().size(), 1u);
}

TEST_F(ApplicationTest, AnArgumentThatCannotBeALineIsAFailure) {
  ASSERT_TRUE(Start({"/a.k", "/two\nlines.k"}));
  EXPECT_EQ(application_->exitCode, 9);
  EXPECT_EQ(Words(application_->Failures()),
            std::vector<std::string>{"Argument [/two lines.k] holds a line break; left out"});
  EXPECT_EQ(JobsAfterTick().size(), 1u);
}

TEST_F(ApplicationTest, HandOverLinesChangeAndStoreTheSettings) {
  ASSERT_TRUE(Start());
  RecordingObserver seen;
  application_->Manager().SetObserver(&seen);
  SettingsAndPaths& settings = application_->SettingsAndFiles();
  settings.SetSolverPath(SolverKind::kInc, "/inc/x.exe");
  WriteHandOverFile("#mpp=1\n#group=300,n1,2\n#solver=inc\n#single_cpu=0\n#krjob\nncpu=7\n/a.k\n");
  EXPECT_EQ(JobsAfterTick().size(), 1u);
  EXPECT_FALSE(application_->SolverEnabled(SolverKind::kLsDynaSingle));
  EXPECT_EQ(application_->Manager().CurrentGroup()->Text(), "300,n1,2");
  EXPECT_EQ(seen.Count("settings"), 1);
  EXPECT_FALSE(settings.Dirty());
  SettingsAndPaths stored(kTitle);
  stored.ReadSettings();
  const Settings& now = stored.Get();
  EXPECT_TRUE(now.use_mpp);
  EXPECT_EQ(now.cpu_count, 7);
  EXPECT_NE(now.SolverPath(SolverKind::kInc).find("KVIN_MC.EXE"), std::string::npos);
  application_->Manager().SetObserver(nullptr);
}

}  // namespace
