#include <filesystem>

#include "solvers/MessageFiles.h"
#include "solvers/Verdict.h"
#include "support/SolverFixture.h"

namespace {

TEST_F(SolverTest, RunsADeckToItsEnd) {
  folder_.Write("messag", "old");
  folder_.Write("mes0003", "old");
  folder_.Write("messag.krb", "old");
  folder_.Write("mes0000.KRB", "kept");
  folder_.Write("names0.csv", "a table");
  folder_.Write("messages.k", "a deck");
  folder_.Write("messag.dyn.bak", "a deck");
  const auto job = DynaJobWith("$ standin: echo\n$ standin: adaptdump 1\n");
  job->memory = 1000;
  job->extraOptions = "x=\"a b\"";
  EXPECT_EQ(Run(*job), JobStatus::kFinished);

  EXPECT_EQ(job->MessageFile(), folder_ / "messag.krb");
  EXPECT_NE(TempFolder::Read(job->MessageFile()).find("N o r m a l"), std::string::npos);
  EXPECT_FALSE(Exists(folder_ / "messag"));
  EXPECT_FALSE(Exists(folder_ / "mes0003"));
  EXPECT_EQ(TempFolder::Read(folder_ / "mes0000.KRB"), "kept");
  EXPECT_EQ(TempFolder::Read(folder_ / "messages.k"), "a deck");
  EXPECT_EQ(TempFolder::Read(folder_ / "names0.csv"), "a table");
  EXPECT_EQ(TempFolder::Read(folder_ / "messag.dyn.bak"), "a deck");
  EXPECT_TRUE(Exists(folder_ / "adapt01.adaptdmp"));
  const Lines echo = ReadLines(folder_ / "standin_echo.txt");
  EXPECT_TRUE(Has(echo, "i=" + FileDirWrapper::ShortPath(job->jobFile)));
  EXPECT_TRUE(Has(echo, "memory=250m"));
  EXPECT_TRUE(Has(echo, "x=a b"));
  EXPECT_EQ(job->RunErrorCode(), 0);
  EXPECT_EQ(runErrorCode_, 0);
  EXPECT_TRUE(log_.empty()) << log_[0];
  EXPECT_EQ(job->run, nullptr);

  context_.settings.no_adapdump = true;
  EXPECT_EQ(Run(*job), JobStatus::kFinished) << "the same job again";
  EXPECT_FALSE(Exists(folder_ / "adapt01.adaptdmp"));
}

TEST_F(SolverTest, ARunThatFailsSaysWhy) {
  const auto failing = DynaJobWith("$ standin: errors 1 10305\n");
  EXPECT_EQ(Run(*failing), JobStatus::kAborted);
  EXPECT_EQ(runErrorCode_, 2);
  EXPECT_NE(failing->RunMessage().English().find("*** Error 10305"), std::string::npos)
      << failing->RunMessage().English();
  EXPECT_EQ(failing->MessageFile(), folder_ / "messag.krb");

  const auto crashing = DynaJobWith("$ standin: crash\n");
  ExpectFailure(*crashing, 2,
                "Job [" + crashing->jobFile +
                    "] did not end normally: its message file has no line of normal termination");

  const auto silent = DynaJobWith("$ standin: no-message\n");
  ExpectFailure(*silent, 3,
                "No message file been generated when run job [" + silent->jobFile + "]");
}

TEST_F(SolverTest, WhatIsMissingIsNamed) {
  const std::string none = folder_ / "none";
  auto job = DynaJob(none);
  ExpectFailure(*job, 4, "Job file [" + none + "] does not exist");
  job = DynaJob("");
  ExpectFailure(*job, 4, "Job file [Null] does not exist");
  job = DynaJobWith("");
  job->restartFile = none;
  ExpectFailure(*job, 4, "Job restart file [" + none + "] does not exist");
  job = DynaJob(folder_.Path());
  ExpectFailure(*job, 6,
                "[" + folder_.Path() + "] is no file that a solver can read: it is a folder");

  job = DynaJobWith("");
  context_.settings.SolverPath(SolverKind::kLsDynaSingle) = none;
  ExpectFailure(*job, 5, "Solver [" + none + "] does not exist");
  context_.settings.SolverPath(SolverKind::kLsDynaSingle).clear();
  ExpectFailure(*job, 5, "Solver [Null] does not exist");
  context_.settings.SolverPath(SolverKind::kLsDynaSingle) = folder_.Path();
  const auto shortened = &FileDirWrapper::ShortPath;
  ExpectFailure(*job, 6,
                "CreateProcess " + shortened(folder_.Path()) + " " + folder_.Path() +
                    " i=" + shortened(job->jobFile) + " failed");
  job->ResetForRun();
  EXPECT_EQ(job->RunMessage().English(), "");
}

TEST_F(SolverTest, ARestartNeedsNoDeck) {
  const auto first = DynaJobWith("");
  ASSERT_EQ(Run(*first), JobStatus::kFinished);
  ASSERT_TRUE(Exists(folder_ / "d3dump01"));
  const auto restart = DynaJob("");
  restart->restartFile = folder_ / "d3dump01";
  EXPECT_EQ(Run(*restart), JobStatus::kFinished) << restart->RunMessage().English();
  EXPECT_EQ(restart->MessageFile(), folder_ / "messag.krb");
}

TEST_F(SolverTest, AbortLeavesTheSolverToTheCaller) {
  const auto job = DynaJobWith("$ standin: run 60\n$ standin: ignore-term\n");
  EXPECT_EQ(RunUntilItWrites(*job), JobStatus::kAborted);
  EXPECT_EQ(job->MessageFile(), folder_ / "messag") << "not renamed while the solver writes";
  EXPECT_TRUE(job->process.IsActive());
  EXPECT_TRUE(job->process.Terminate());
  EXPECT_FALSE(job->process.IsActive());
  EXPECT_EQ(runErrorCode_, 0);

  std::filesystem::remove(folder_ / "messag");
  EXPECT_EQ(Run(*job), JobStatus::kAborted) << "still told to abort";
  EXPECT_FALSE(Exists(folder_ / "messag"));
}

TEST_F(SolverTest, FindsTheMessageFile) {
  const auto job = DynaJobWith("");
  EXPECT_EQ(CaseMessageFiles(*job), Lines{});
  for (const char* name : {"messag.krb", "mes.txt", "a.k.console.txt", "mes0000.key", "mes01.K~~",
                           "messag.inc", "xmessag"}) {
    folder_.Write(name, "");
  }
  FileDirWrapper::CreateDirTree(folder_ / "mes0000");
  job->includes = {"sub/messag.inc"};
  job->restartFile = folder_ / "xmessag";
  EXPECT_EQ(CaseMessageFiles(*job), Lines{});
  folder_.Write("messag", "");
  EXPECT_EQ(CaseMessageFiles(*job), Lines{folder_ / "messag"});
  folder_.Write("mes0002", "");
  folder_.Write("mes0001", "");
  EXPECT_EQ(CaseMessageFiles(*job), Lines{folder_ / "mes0001"});
  for (const char* name : {"CASE10.messag", "CASE2.mes0000", "CASE2.mes0001", "frames001.png"}) {
    folder_.Write(name, "");
  }
  EXPECT_EQ(CaseMessageFiles(*job),
            (Lines{folder_ / "CASE2.mes0000", folder_ / "CASE10.messag", folder_ / "mes0001"}));
}

TEST_F(SolverTest, AnErrorOfAnyRankIsNoNormalEnd) {
  const std::string normal = " N o r m a l    t e r m i n a t i o n\n";
  const std::string error = " *** Error 40509\n E r r o r   t e r m i n a t i o n\n";
  const auto judge = [&](const std::string& zero, const std::string& two) {
    for (const char* name : {"mes0000", "mes0001", "mes0002"}) {
      std::filesystem::remove(folder_ / name);
      std::filesystem::remove(folder_ / name + ".krb");
    }
    folder_.Write("mes0000", zero);
    folder_.Write("mes0001", "nothing of the end\n");
    folder_.Write("mes0002", two);
    const auto job = DynaJobWith("");
    const JobStatus status = JudgeRun(*job, WrittenMessageFiles(*job));
    EXPECT_TRUE(Exists(folder_ / "mes0000.krb"));
    EXPECT_TRUE(Exists(folder_ / "mes0001"));
    return status == JobStatus::kFinished
               ? "Finished"
               : FileDirWrapper::NameOf(job->MessageFile()) + " " + job->RunMessage().English();
  };
  EXPECT_EQ(judge(normal, "no word\n"), "Finished");
  EXPECT_EQ(judge("no word\n", "no word\n").substr(0, 11), "mes0000.krb");
  for (const std::string& zero : {normal, std::string("no word\n")}) {
    const std::string reason = judge(zero, error);
    EXPECT_EQ(reason.substr(0, 11), "mes0002.krb") << reason;
    EXPECT_NE(reason.find("mes0002: *** Error 40509"), std::string::npos) << reason;
  }
}

TEST_F(SolverTest, NoMessageFileTakesTheDecksPlace) {
  const std::string deck = Deck("$ standin: run 0\n");
  const auto job = DynaJob(folder_.Write("messag.krb", deck));
  EXPECT_EQ(Run(*job), JobStatus::kFinished) << job->RunMessage().English();
  EXPECT_EQ(TempFolder::Read(job->jobFile), deck);
  EXPECT_EQ(job->MessageFile(), folder_ / "messag");
  EXPECT_TRUE(Has(log_, "Rename message file [" + job->MessageFile() + "] failed"));
}

}  // namespace
