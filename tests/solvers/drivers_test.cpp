// Command lines as the child receives them: the stand-in under each solver's name echoes its own.
#include <filesystem>

#include "support/SolverFixture.h"

namespace {

namespace fs = std::filesystem;

constexpr char kToken[] = "Secret.0123456789abcde";
constexpr char kEcho[] = "$ standin: echo\n";

class DriverTest : public SolverTest {
 protected:
  // The stand-in as a program of this name in a folder of its own.
  std::string Program(const std::string& name) const {
    const std::string path = FileDirWrapper::Join(ProgramFolder(), name);
    fs::create_directories(ProgramFolder());
    fs::copy_file(StandinSolver(), path, fs::copy_options::overwrite_existing);
    return path;
  }
  std::string ProgramFolder() const { return folder_ / "my solvers"; }

  template <typename Job>
  std::unique_ptr<Job> MakeJob(const std::string& name, const std::string& text = kEcho) const {
    auto job = std::make_unique<Job>(context_.settings);
    job->jobFile = folder_.Write(name, text);
    return job;
  }

  // The arguments of the last run; its folder was the job's.
  Lines Received() const {
    Lines lines = ReadLines(folder_ / "standin_echo.txt");
    EXPECT_TRUE(Has(lines, "cwd=" + folder_.Path()));
    fs::remove(folder_ / "standin_echo.txt");
    while (!lines.empty() && lines.back().find("cwd=") != 0) lines.pop_back();
    if (!lines.empty()) lines.pop_back();
    return lines;
  }
};

TEST_F(DriverTest, Inc) {
  context_.settings.SolverPath(SolverKind::kInc) = Program("KVIN SC.EXE");
  const auto job = MakeJob<JobFileInc>("part v2.x.fin");
  ExpectFailure(*job, 6,
                "No access token for the INC solver: set inc_token in the section SOLVER of the "
                "settings file");
  context_.settings.inc_token = kToken;
  EXPECT_EQ(Run(*job), JobStatus::kFinished) << job->RunMessage().English();
  EXPECT_EQ(Received(), (Lines{kToken, ProgramFolder(), folder_ / "part v2.x"}));
  EXPECT_EQ(job->MessageFile(), folder_ / "part v2.x_INFO.OUT");
  EXPECT_EQ(TempFolder::Read(job->MessageFile()).find(kToken), std::string::npos);

  folder_.Write("part v2.x.fin", "$ standin: fail\n");
  EXPECT_EQ(Run(*job), JobStatus::kAborted);
  EXPECT_EQ(runErrorCode_, 2);
  folder_.Write("part v2.x_INFO.OUT", "THE TOTAL TIME FOR the last run\n");
  folder_.Write("part v2.x.fin", "$ standin: no-message\n");
  EXPECT_EQ(Run(*job), JobStatus::kAborted) << "the old output was removed";

  // The token is not told, not even when the command line is.
  context_.settings.SolverPath(SolverKind::kInc) = folder_.Write("not a program.exe", "text");
  EXPECT_EQ(Run(*job), JobStatus::kAborted);
  EXPECT_EQ(runErrorCode_, 6);
  const Message reason = job->RunMessage();
  log_.push_back(reason.English());
  log_.push_back(reason.Chinese([](const std::string& bytes) { return bytes; }));
  for (const std::string& line : log_) EXPECT_EQ(line.find("Secret"), std::string::npos) << line;
}

TEST_F(DriverTest, Vorel) {
  context_.settings.SolverPath(SolverKind::kVorel) = Program("Vorel.exe");
  const auto job = MakeJob<JobFileVorel>("part.v2.dat");
  job->memory = 512;
  job->extraOptions = "-a \"b c\"";
  EXPECT_EQ(Run(*job), JobStatus::kFinished) << job->RunMessage().English();
  EXPECT_EQ(Received(), (Lines{folder_ / "part.v2", "512000", "-a", "b c"}));
  EXPECT_EQ(job->MessageFile(), folder_ / "part.v2.OUT");

  EXPECT_EQ(Solver(SolverKind::kInc).Run(*job, context_), JobStatus::kAborted);
  EXPECT_EQ(job->RunMessage().English(),
            "Job [" + job->jobFile + "] is no job for the solver INCSolver");

  folder_.Write("part.v2.dat", "$ standin: no-message\n$ standin: no-result\n");
  EXPECT_EQ(Run(*job), JobStatus::kAborted);
  EXPECT_EQ(runErrorCode_, 2);
  EXPECT_FALSE(Exists(folder_ / "part.v2.OUT") || Exists(folder_ / "part.v2.lin")) << "old output";
  folder_.Write("part.v2.dat", "$ standin: empty-result\n");
  EXPECT_EQ(Run(*job), JobStatus::kAborted) << "an empty result";
  folder_.Write("part.v2.dat", "$ standin: exit 9\n");
  EXPECT_EQ(Run(*job), JobStatus::kFinished) << "the result counts, not the exit code";
}

TEST_F(DriverTest, UtilityBatch) {
  context_.settings.SolverPath(SolverKind::kUtilityBatch) = Program("Utility Batch.exe");
  const auto job = MakeJob<JobFileDyna>("a.b c.k", Deck(kEcho));
  job->solverType = SolverKind::kUtilityBatch;
  job->memory = 100;
  folder_.Write("mes0000", "not its own");
  EXPECT_EQ(Run(*job), JobStatus::kFinished) << job->RunMessage().English();
  EXPECT_EQ(Received(), (Lines{folder_ / "a.b c.k"}));
  EXPECT_EQ(job->MessageFile(), folder_ / "messag.krb");
  EXPECT_TRUE(Exists(folder_ / "mes0000"));
  job->extraOptions = "-v 2";
  folder_.Write("a.b c.k", Deck("$ standin: no-message\n$ standin: echo\n"));
  EXPECT_EQ(Run(*job), JobStatus::kAborted);
  EXPECT_EQ(runErrorCode_, 3);
  EXPECT_EQ(Received(), (Lines{folder_ / "a.b c.k", "-v", "2"}));

  const auto named = MakeJob<JobFileDyna>("messag", Deck("$ standin: no-message\n"));
  named->solverType = SolverKind::kUtilityBatch;
  EXPECT_EQ(Run(*named), JobStatus::kAborted);
  EXPECT_EQ(runErrorCode_, 3) << "a deck is no message file";
  EXPECT_TRUE(Exists(named->jobFile));
}

TEST_F(DriverTest, RefusesNamesThatBreakACommandLine) {
  if (FileDirWrapper::kSeparator == '\\') GTEST_SKIP() << "Windows has no such names";
  const auto job = MakeJob<JobFileDyna>("a \" b.k");
  ExpectFailure(*job, 6, "File name [" + job->jobFile + "] cannot be written on a command line");

  const auto dyna = DynaJobWith("");
  dyna->useSFile = true;
  for (const char* force : {"f\" d=\"nodump", "my folder\\"}) {
    dyna->ResetForRun();
    context_.settings.force = force;
    ExpectFailure(*dyna, 6,
                  std::string("File name [") + force + "] cannot be written on a command line");
  }
}

// Any path that the system has comes to the solver whole, or the job says why it does not.
class PathTest : public DriverTest {
 protected:
  // What the solver received, which ran in the job's folder.
  Lines RunAndReceive(JobFile& job) {
    EXPECT_EQ(Run(job), JobStatus::kFinished) << job.RunMessage().English();
    Lines lines = ReadLines(FileDirWrapper::Join(job.Folder(), "standin_echo.txt"));
    EXPECT_TRUE(Has(lines, "cwd=" + job.Folder()));
    return lines;
  }

  void ExpectWhole(const std::string& deck) {
    SCOPED_TRACE(deck);
    std::string folder;
    FileDirWrapper::DirOf(deck, folder);
    FileDirWrapper::CreateDirTree(folder);
    std::ofstream(deck) << Deck(kEcho);
    const auto job = DynaJob(deck);
    const Lines received = RunAndReceive(*job);
    EXPECT_TRUE(std::any_of(received.begin(), received.end(), [&](const std::string& line) {
      return line.starts_with("i=") && FileDirWrapper::IsSameFile(line.substr(2), deck);
    }));
    EXPECT_EQ(job->MessageFile(), FileDirWrapper::Join(job->Folder(), "messag.krb"));
    job->solverType = SolverKind::kUtilityBatch;
    EXPECT_TRUE(Has(RunAndReceive(*job), deck));
  }

  // A path of so many bytes, with a name of forty.
  std::string PathOf(std::size_t bytes) const {
    const std::string name = std::string(38, 'n') + ".k";
    std::string folder = folder_.Path();
    while (folder.size() + name.size() + 1 < bytes) {
      const std::size_t missing = bytes - folder.size() - name.size() - 2;
      folder = FileDirWrapper::Join(folder, std::string(std::min<std::size_t>(missing, 200), 'f'));
      if (missing > 200 && missing <= 201) folder += 'f';
    }
    return FileDirWrapper::Join(folder, name);
  }
};

TEST_F(PathTest, OfAnyLettersComesWhole) {
  ExpectWhole(folder_ / "R&D ^ 100% %TEMP% (x86);" + FileDirWrapper::kSeparator +
              "a&b^c %PATH%,!.k");
#ifdef _WIN32
  ExpectWhole(folder_ /
              "Pr\xFC"
              "fung \x80\\D\xE4"
              "ck \x9C.k");
  const std::string inRoot = "C:\\krtest" + std::to_string(PTWrapperProcess().ProcessId()) + ".k";
  ExpectWhole(inRoot);
  fs::remove(inRoot);
#else
  ExpectWhole(folder_ /
              "Pr\xC3\xBC"
              "fung \xE2\x82\xAC/D\xC3\xA4"
              "ck \xFF.k");
#endif
}

TEST_F(PathTest, ThatIsTooLongIsRefused) {
  constexpr std::size_t kMost = FileDirWrapper::kMostPathBytes;
  ExpectWhole(PathOf(kMost));
  const std::string tooLong = PathOf(kMost + 1);
  const auto job = DynaJob(tooLong);
  ExpectFailure(*job, 6,
                "File name [" + tooLong + "] is longer than the " + std::to_string(kMost) +
                    " bytes that a solver can be given");
}

TEST_F(PathTest, OnALongCommandLineComesWholeOrIsRefused) {
  const auto job = DynaJobWith(kEcho);
  job->extraOptions = std::string(40000, 'x');
  if (Run(*job) == JobStatus::kFinished) {
    EXPECT_TRUE(Has(Received(), job->extraOptions));
    return;
  }
  EXPECT_EQ(runErrorCode_, 6);
  EXPECT_NE(job->RunMessage().English().find("the command is too long"), std::string::npos);
  EXPECT_FALSE(Exists(folder_ / "standin_echo.txt"));
}

}  // namespace
