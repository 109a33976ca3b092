// Decks in one folder whose results are kept apart.
#include "core/JobInformation.h"
#include "core/SenseSwitch.h"
#include "jobs/OutputPrefix.h"
#include "runs/RunFixture.h"
#include "runs/RunRecord.h"
#include "solvers/JobOutput.h"
#include "solvers/MessageFiles.h"
#include "solvers/PostResult.h"

namespace {

using namespace std::chrono_literals;

class ApartTest : public RunTest {
 protected:
  ApartTest() {
    setup_.recorded = [this](const JobFile&, const RunRecord& record) { record_ = record; };
  }

  std::unique_ptr<JobFileDyna> Job(const std::string& name, const std::string& commands,
                                   bool apart = true) {
    auto job = DynaJob(folder_.Write(name + ".k", Deck(commands)));
    if (apart) job->outputName = name;
    return job;
  }
  JobStatus RunWhole(JobFile& job) { return RunJob(job, setup_); }
  std::string Told(const std::string& file) const { return TempFolder::Read(folder_ / file); }

  RunRecord record_;
};

TEST_F(ApartTest, EachJobHasFilesOfItsOwn) {
  const auto a = Job("a", "$ standin: warnings 2 20001\n$ standin: adaptdump 1\n");
  context_.settings.no_adapdump = true;
  EXPECT_EQ(RunWhole(*a), JobStatus::kFinished) << a->RunMessage().English();
  EXPECT_EQ(a->MessageFile(), folder_ / "a.messag.krb");
  EXPECT_EQ(record_.warnings, 2);
  EXPECT_EQ(record_.nodes, 1);
  for (const char* file :
       {"a.d3plot", "a.glstat", "a.status.out", "a.d3dump01", "a.d3hsp", "a.console.txt"}) {
    EXPECT_TRUE(Exists(folder_ / file)) << file;
  }
  for (const char* file : {"messag", "d3plot", "glstat", "a.k.console.txt", "a.adapt01.adaptdmp"})
    EXPECT_FALSE(Exists(folder_ / file)) << file;
  EXPECT_EQ(PostResults(PostSourceOf(*a)).front(), folder_ / "a.d3plot");
  a->status = JobStatus::kFinished;
  const Lines lines = JobInformation(OutputOf(*a));
  EXPECT_EQ(lines.back(), "  Node Number is 1");

  // What others left stays, and does not tell how this one ended.
  folder_.Write("a.messag", " jobid=a\n");  // of a run that was cut off
  folder_.Write("b.d3kil", "sw1");
  folder_.Write("adapt01.adaptdmp", "");
  const auto plain = Job("plain", "$ standin: adaptdump 1\n", false);
  EXPECT_EQ(RunWhole(*plain), JobStatus::kFinished);
  EXPECT_EQ(plain->MessageFile(), folder_ / "messag.krb");
  EXPECT_TRUE(Exists(folder_ / "a.messag"));
  const auto b = Job("b", "$ standin: no-message\n");
  folder_.Write("messag", " N o r m a l    t e r m i n a t i o n\n");
  folder_.Write("b.messag", " N o r m a l    t e r m i n a t i o n\n");
  context_.otherPrefixes = {"b.c.", "plain."};
  folder_.Write("b.c.messag", "");
  EXPECT_EQ(RunWhole(*b), JobStatus::kAborted);
  EXPECT_EQ(b->RunErrorCode(), 3) << b->RunMessage().English();
  EXPECT_FALSE(Exists(folder_ / "b.messag"));
  for (const char* file : {"messag", "a.messag", "b.c.messag", "a.messag.krb"})
    EXPECT_TRUE(Exists(folder_ / file)) << file;

  // Typed by hand, and a name in which the word for a message file stands.
  const auto typed = Job("messag", "", false);
  typed->extraOptions = "jobid=messag_7";
  EXPECT_EQ(RunWhole(*typed), JobStatus::kFinished);
  EXPECT_EQ(typed->MessageFile(), folder_ / "messag_7.messag.krb");
  EXPECT_TRUE(Exists(folder_ / "messag_7.d3plot"));
}

TEST_F(ApartTest, ASwitchADumpAndTheNextRunKeepTheName) {
  const auto a = Job("a", "$ standin: run 60\n");
  folder_.Write("d3dump09", "of another");
  std::thread stopper([&] {
    EXPECT_TRUE(WaitUntil([&] { return Exists(folder_ / "a.glstat"); }, 1min));
    BeginSwitches(a->Folder(), a->id, false, OutputNamesOf(*a));
    const SwitchRun run = SwitchRunOf(a->Folder(), a->id);
    EXPECT_TRUE(AskSolver(a->Folder(), run, SolverSwitch::kStop));
  });
  EXPECT_EQ(RunWhole(*a), JobStatus::kFinished);
  stopper.join();
  EXPECT_EQ(a->RestartDump(), folder_ / "a.d3dump01");
  EXPECT_EQ(RequestToRunAgain(record_).outputName, "a");

  const auto restart = DynaJob("");
  restart->restartFile = a->RestartDump();
  restart->outputName = "a";
  EXPECT_EQ(RunWhole(*restart), JobStatus::kFinished) << restart->RunMessage().English();
  EXPECT_EQ(restart->MessageFile(), folder_ / "a.messag.krb");
  EXPECT_NE(Told("a.messag.krb").find("jobid=a"), std::string::npos);
}

// Stages share a folder and its names: what the first one left is written over.
TEST_F(ApartTest, EachStageKeepsItsOwnSummary) {
  const auto job = DynaJob(folder_.Write("main.k", "*KEYWORD\n*END\n"));
  const auto add = [&](const std::string& name, const std::string& nodes) {
    const std::string command =
        "$ standin: warnings " + std::to_string(job->stages.size() + 1) + " 20001\n";
    job->stages.push_back(DynaJob(folder_.Write(name, Deck(command + nodes))));
    job->stages.back()->pause = 0;
  };
  add("draw.k", "");
  add("trim.k", "*NODE\n2,1.,0.,0.\n3,2.,0.,0.\n");
  EXPECT_EQ(RunWhole(*job), JobStatus::kFinished) << job->RunMessage().English();
  const auto summary = [&](std::size_t stage) {
    return JobInformation(OutputOf(*job->stages[stage]));
  };
  EXPECT_EQ(job->stages[0]->MessageFile(), folder_ / "draw.k.messag.krb");
  EXPECT_EQ(job->MessageFile(), folder_ / "messag.krb");
  EXPECT_TRUE(Has(summary(0), "  Node Number is 1") && Has(summary(0), "Found 1 warnings"));
  EXPECT_TRUE(Has(summary(1), "  Node Number is 3") && Has(summary(1), "Found 2 warnings"));
  EXPECT_EQ(job->Result().nodes, 3);

  // One that comes later runs alone.
  add("form.k", "*NODE\n2,1.,0.,0.\n");
  job->firstStage = 2;
  job->ResetForRun();
  EXPECT_EQ(RunWhole(*job), JobStatus::kFinished);
  EXPECT_EQ(job->stages[1]->MessageFile(), folder_ / "trim.k.messag.krb");
  EXPECT_TRUE(Has(summary(1), "  Node Number is 3") && Has(summary(1), "Found 2 warnings"));
  EXPECT_TRUE(Has(summary(2), "  Node Number is 2") && Has(summary(2), "Found 3 warnings"));

  // The program died when it had kept the first one's and had not written that down.
  const auto& draw = job->stages[0];
  draw->folderBefore.Take({});
  TakeBackMessageFiles(*draw);
  EXPECT_TRUE(Exists(folder_ / "messag") && !Exists(folder_ / "draw.k.messag.krb"));
}

// Some solvers put the job's name in front of the case, some use the case alone.
TEST_F(ApartTest, CasesAreJudgedUnderBothNames) {
  const std::string normal = " N o r m a l    t e r m i n a t i o n\n";
  const auto a = Job("a", "");
  a->caseRun = true;
  folder_.Write("CASE1.messag", normal);
  folder_.Write("b.messag", normal);
  a->run = &context_;
  context_.otherPrefixes = {"b."};
  EXPECT_EQ(CaseMessageFiles(*a), Lines{folder_ / "CASE1.messag"});
  folder_.Write("a.CASE1.messag", normal);
  folder_.Write("a.CASE2.messag", normal);
  EXPECT_EQ(CaseMessageFiles(*a), (Lines{folder_ / "a.CASE1.messag", folder_ / "a.CASE2.messag"}));
  a->run = nullptr;
}

}  // namespace
