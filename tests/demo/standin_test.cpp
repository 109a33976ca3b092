#include <string>

#include "demo/SolverProcess.h"

namespace {

constexpr char kNormal[] = "N o r m a l    t e r m i n a t i o n";
constexpr char kError[] = "E r r o r   t e r m i n a t i o n";

class Standin : public ScratchFolder {};

TEST_F(Standin, EndsNormallyAndTellsWhatItReceived) {
  WriteDeck("*TITLE\nA short run\n$ standin: echo\n");
  SetVariable("LSTC_MEMORY", "auto");
  EXPECT_EQ(Run("I=deck.k memory=250m ncpu=4 CASE \"two words\" foo=bar"), 0);
  ClearVariable("LSTC_MEMORY");
  const std::string message = Read("messag");
  EXPECT_EQ(CountOf(message, kNormal), 2);
  EXPECT_TRUE(Contains(message, "computes nothing"));
  EXPECT_TRUE(Contains(message,
                       " Command line options: I=deck.k\n"
                       "                       memory=250m\n"));
  EXPECT_TRUE(Contains(message, " Total CPU time     =         0 seconds (   0 hours  0 minutes"));
  EXPECT_TRUE(Contains(message, " expanding   memory to   250000000 s"));
  EXPECT_EQ(Read("standin_echo.txt"),
            "I=deck.k\nmemory=250m\nncpu=4\nCASE\ntwo words\nfoo=bar\n"
            "cwd=" +
                folder_.string() + "\nLSTC_MEMORY=auto\n");
  EXPECT_TRUE(Contains(Read("d3hsp"), "LSTC_MEMORY=auto"));
  EXPECT_TRUE(Exists("d3dump01"));
}

TEST_F(Standin, RefusesWhatCannotBeRun) {
  Write("empty.k", "");
  Write("binary.k", std::string("\0\xff*\n*\r*NODE\n,,,,,,,,,,,,\n", 24));
  Write("self.k", "*KEYWORD\n*INCLUDE\nself.k\n");
  Write("missing.k", "*KEYWORD\n*INCLUDE\nnothing.k\n*END\n");
  Write("number.k", "*KEYWORD\n*NODE\n       1             abc\n*END\n");
  Write("parameter.k", "*KEYWORD\n*CONTROL_TERMINATION\n    &never\n*END\n");
  Write("hole.k", "*KEYWORD\n*ELEMENT_BEAM\n       1       1       7       8\n*END\n");
  for (const char* arguments : {"i=empty.k", "i=binary.k", "i=self.k", "i=missing.k", "i=number.k",
                                "i=parameter.k", "i=hole.k", "i=absent.k", "i=.", "r=absent",
                                "i=", "memory=abc i=empty.k", "ncpu=0 i=empty.k", ""}) {
    EXPECT_EQ(Run(arguments), 1) << arguments;
    EXPECT_TRUE(Contains(Read("messag"), "\n *** Error 10")) << arguments;
    EXPECT_TRUE(Contains(Read("messag"), kError)) << arguments;
    EXPECT_FALSE(Contains(Read("messag"), kNormal)) << arguments;
  }
}

TEST_F(Standin, WritesWarningsAndErrorsInTheSolversLayout) {
  WriteDeck("$ standin: warnings 25 20006\n$standin: Warnings 1 60004\n$ standin: frobnicate 3\n");
  EXPECT_EQ(Run("i=deck.k"), 0);
  std::string message = Read("messag");
  EXPECT_EQ(CountOf(message, " *** Warning 20006 (STR+6)\n     "), 25);
  EXPECT_EQ(CountOf(message, "\n\n *** Warning 60004 (IMP+4)\n     "), 1);
  EXPECT_TRUE(Contains(message, "not understood: frobnicate 3"));

  WriteDeck(
      "$ standin: warnings 2 40576\n$ standin: warn-block-without-blank-line\n"
      "$ standin: crlf\n");
  EXPECT_EQ(Run("i=deck.k"), 0);
  message = Read("messag");
  EXPECT_EQ(CountOf(message, "stand-in for\r\n expanding   memory to "), 2);
  EXPECT_EQ(CountOf(message, "\n"), CountOf(message, "\r\n"));

  WriteDeck("$ standin: errors 2 10305\n");
  EXPECT_EQ(Run("i=deck.k"), 1);
  message = Read("messag");
  EXPECT_EQ(CountOf(message, " *** Error 10305 (KEY+305)\n     "), 2);
  EXPECT_TRUE(Contains(message, kError));
}

TEST_F(Standin, FailsAndCrashesAsAsked) {
  WriteDeck("$ standin: fail\n$ standin: exit 3\n");
  EXPECT_EQ(Run("i=deck.k"), 3);
  EXPECT_TRUE(Contains(Read("messag"), kError));

  WriteDeck("$ standin: crash\n$ standin: adaptdump 2\n");
  EXPECT_NE(Run("i=deck.k d=nodump"), 0);
  EXPECT_TRUE(Contains(Read("messag"), "write d3plot file"));
  EXPECT_FALSE(Contains(Read("messag"), "t e r m i n a t i o n"));
  EXPECT_TRUE(Exists("adapt01.adaptdmp"));
  EXPECT_TRUE(Exists("adapt02.adaptdmp"));
  EXPECT_FALSE(Exists("d3dump01"));

  std::filesystem::remove(folder_ / "messag");
  WriteDeck("$ standin: no-message\n");
  EXPECT_EQ(Run("i=deck.k"), 0);
  EXPECT_FALSE(Exists("messag"));
  EXPECT_TRUE(Exists("d3hsp"));
}

TEST_F(Standin, GrowsWhileItRunsAndObeysTheSenseSwitch) {
  WriteDeck("$ standin: run 60\n");
  PTWrapperProcess process;
  ASSERT_TRUE(Start(process, "i=deck.k"));
  ASSERT_TRUE(WaitFor([&] { return CountOf(Read("messag"), " t ") >= 3; }));
  Write("d3kil", "sw3\n");
  ASSERT_TRUE(WaitFor([&] { return !Exists("d3kil"); }));
  EXPECT_TRUE(Exists("d3dump01"));
  EXPECT_TRUE(process.IsActive());
  Write("d3kil", "sw1");
  process.WaitProc();
  EXPECT_EQ(process.ExitCode(), 0);
  EXPECT_FALSE(Exists("d3kil"));
  EXPECT_TRUE(Exists("d3dump02"));
  EXPECT_TRUE(Contains(Read("messag"), "*** termination by sense switch"));
  EXPECT_TRUE(Contains(Read("messag"), kNormal));
  process.Terminate();
}

TEST_F(Standin, GoesOnFromADump) {
  WriteDeck("");
  EXPECT_EQ(Run("i=deck.k"), 0);
  const std::string dump = Read("d3dump01");
  Write("dump", dump.substr(0, dump.find('\n')) + "\n0.5 2.5\n");
  Write("dump.standin", "$ standin: warnings 1 20444\n");
  EXPECT_EQ(Run("r=dump"), 0);
  EXPECT_TRUE(Contains(Read("messag"), "       0 t 5.0000E-01 dt 2.00E-01"));
  EXPECT_TRUE(Contains(Read("messag"), " Problem time       =    2.5000E+00"));
  EXPECT_TRUE(Contains(Read("messag"), "*** Warning 20444"));
}

TEST_F(Standin, StubbornAndHangingRunsStayWithTheirChild) {
  WriteDeck("$ standin: child\n$ standin: ignore-term\n$ standin: hang\n");
  PTWrapperProcess process;
  ASSERT_TRUE(Start(process, "i=deck.k"));
  ASSERT_TRUE(WaitFor([&] { return Contains(Read("messag"), "       4 t "); }));
  const int child = std::atoi(Read("standin_child.pid").c_str());
  ASSERT_GT(child, 0);
  const auto isThere = [child] {
    std::vector<PTWrapperProcessInfo> list;
    PTWrapperProcess::FindRunningProcessName(list);
    for (const PTWrapperProcessInfo& info : list) {
      if (info.processId == child) return true;
    }
    return false;
  };
  EXPECT_TRUE(isThere());
  EXPECT_TRUE(process.IsActive());
  EXPECT_TRUE(process.Terminate());
  EXPECT_TRUE(WaitFor([&] { return !isThere(); }));
  EXPECT_FALSE(Contains(Read("messag"), "t e r m i n a t i o n"));
}

TEST_F(Standin, WritesOneMessageFileARank) {
  WriteDeck("");
  for (const char* variable : {"PMI_RANK", "OMPI_COMM_WORLD_RANK", "MPI_RANKID"}) {
    SetVariable(variable, "2");
    EXPECT_EQ(Run("i=deck.k"), 0);
    ClearVariable(variable);
    EXPECT_TRUE(Contains(Read("mes0002"), kNormal)) << variable;
    EXPECT_TRUE(Contains(Read("mes0002"), "Version : mpp s")) << variable;
    EXPECT_FALSE(Exists("messag") || Exists("d3plot") || Exists("d3hsp")) << variable;
    std::filesystem::remove(folder_ / "mes0002");
  }
  // A batch script is no parallel run, whatever its scheduler sets.
  SetVariable("SLURM_PROCID", "0");
  EXPECT_EQ(Run("i=deck.k"), 0);
  ClearVariable("SLURM_PROCID");
  EXPECT_TRUE(Exists("messag"));
}

TEST_F(Standin, RunsUnderARealLauncherAndStopsOnAllRanks) {
  const std::string launcher = "/usr/bin/mpiexec.mpich";
  if (!std::filesystem::exists(launcher)) GTEST_SKIP() << "MPICH is not installed";
#ifdef _WIN32
  GTEST_SKIP() << "the launcher, seen through Wine, starts Linux programs only";
#endif
  WriteDeck("$ standin: run 60\n");
  PTWrapperProcess process;
  ASSERT_TRUE(Start(process, "-n 4 " + SolverPath() + " i=deck.k", launcher));
  ASSERT_TRUE(WaitFor([&] { return Contains(Read("mes0003"), "       1 t "); }));
  ASSERT_TRUE(WaitFor([&] { return Contains(Read("mes0000"), "       1 t "); }));
  Write("d3kil", "sw1\n");
  process.WaitProc();
  EXPECT_EQ(process.ExitCode(), 0);
  process.Terminate();
  for (const char* name : {"mes0000", "mes0001", "mes0002", "mes0003"}) {
    EXPECT_TRUE(Contains(Read(name), kNormal)) << name;
  }
  EXPECT_TRUE(Exists("d3plot01"));
  EXPECT_FALSE(Exists("mes0004") || Exists("messag") || Exists("d3kil"));
}

TEST_F(Standin, ReportsItsVersion) {
  SetVariable("STANDIN_VERSION", "R6.1.2 78000 old");
  EXPECT_EQ(Run("info"), 0);
  EXPECT_TRUE(Contains(Read("lstc.log"), " Version number:  ls971s R6.1.2"));
  EXPECT_TRUE(Contains(Read("lstc.log"), " Revision:        78000"));
  ClearVariable("STANDIN_VERSION");
  Write("standin_version.txt", "R16 R16.1-180-gabc new\n");
  EXPECT_EQ(Run("info", SolverPath("standin_solver_d")), 0);
  EXPECT_TRUE(Contains(Read("lstc.log"), " |  Version : smp d R16 "));
  EXPECT_TRUE(Contains(Read("lstc.log"), " |  Revision: R16.1-180-gabc "));
}

TEST_F(Standin, HandsThePartsOnThatTheNextStageWants) {
  const std::string shells =
      "*NODE\n       1             0.0             0.5             0.0       7       7\n"
      "       2             1.0\n       3             1.0             1.0\n       4\n       5\n"
      "*ELEMENT_SHELL\n       8       1       1       2       3       3\n"
      "       9       2       1       4       5       5\n";
  WriteDeck(shells +
            "*INTERFACE_SPRINGBACK_LSDYNA\n        77\n*SET_PART_LIST\n        77\n"
            "         1         3\n");
  EXPECT_EQ(Run("i=deck.k"), 0);
  EXPECT_TRUE(Contains(Read("dynain"),
                       "*KEYWORD\n*NODE\n"
                       "       1  0.00000000E+00  5.00000000E-01  0.00000000E+00\n"
                       "       2  1.00000000E+00  0.00000000E+00  0.00000000E+00\n"
                       "       3  1.00000000E+00  1.00000000E+00  0.00000000E+00\n"
                       "*ELEMENT_SHELL\n       8       1       1       2       3       3\n*END\n"));
  Write("next.k", "*KEYWORD\n*INCLUDE\n$ result from previous case\ndynain\n*END\n");
  EXPECT_EQ(Run("i=next.k"), 0);
  EXPECT_TRUE(Contains(Read("messag"), " nodes               3\n elements            1\n"));
}

}  // namespace
