// The stand-in solver as a process. What the program asks of it is tested with the program; here is
// what people ask of it.
#include <gtest/gtest.h>

#include "d3plot/ptkPostD3plotManager.h"
#include "progress/Health.h"
#include "progress/RunProgress.h"
#include "support/ScopedVariable.h"
#include "support/TempFolder.h"
#include "util/process/PTWrapper.h"

namespace {

constexpr char kNormal[] = "N o r m a l    t e r m i n a t i o n";
constexpr char kError[] = "E r r o r   t e r m i n a t i o n";

class Standin : public testing::Test {
 protected:
  std::string Read(const std::string& name) const { return TempFolder::Read(folder_ / name); }
  bool Says(const std::string& text) const {
    return Read("messag").find(text) != std::string::npos;
  }

  // A whole deck around the given lines.
  void WriteDeck(const std::string& lines) const {
    folder_.Write("deck.k", "*KEYWORD\n" + lines + "*CONTROL_TERMINATION\n       1.0\n*END\n");
  }

  // The exit code.
  int Run(const std::string& arguments, const std::string& name = "standin_solver") const {
    const std::string program = std::string(KR_TEST_BIN_DIR) + "/" + name +
                                (FileDirWrapper::kSeparator == '\\' ? ".exe" : "");
    PTWrapperProcessStart start;
    start.commandLine = "\"" + program + "\" " + arguments;
    start.showWindow = false;
    start.folder = folder_.Path();
    PTWrapperProcess process;
    EXPECT_TRUE(process.Create(start));
    process.WaitProc();
    return process.ExitCode();
  }

  const TempFolder folder_;
};

TEST_F(Standin, RefusesWhatCannotBeRun) {
  folder_.Write("empty.k", "");
  folder_.Write("binary.k", std::string("\0\xff*\n*\r*NODE\n,,,,,,,,,,,,\n", 24));
  folder_.Write("self.k", "*KEYWORD\n*INCLUDE\nself.k\n");
  folder_.Write("missing.k", "*KEYWORD\n*INCLUDE\nnothing.k\n*END\n");
  folder_.Write("number.k", "*KEYWORD\n*NODE\n       1             abc\n*END\n");
  folder_.Write("parameter.k", "*KEYWORD\n*CONTROL_TERMINATION\n    &never\n*END\n");
  folder_.Write("hole.k", "*KEYWORD\n*ELEMENT_BEAM\n       1       1       7       8\n*END\n");
  for (const char* arguments : {"i=empty.k", "i=binary.k", "i=self.k", "i=missing.k", "i=number.k",
                                "i=parameter.k", "i=hole.k", "i=absent.k", "i=.", "r=absent",
                                "memory=abc i=empty.k", "ncpu=0 i=empty.k", ""}) {
    EXPECT_EQ(Run(arguments), 1) << arguments;
    EXPECT_TRUE(Says("\n *** Error 10") && Says(kError) && !Says(kNormal)) << arguments;
  }
}

// What is read from its files is what the deck asked for.
TEST_F(Standin, WritesStatesAndEstimatesAsSickAsAsked) {
  WriteDeck(
      "$ standin: lines 40\n$ standin: cycles 200000\n$ standin: falling-step 0.005\n"
      "$ standin: energy-ratio 1.5\n$ standin: hourglass 20\n$ standin: added-mass 7\n"
      "$ standin: nan\n");
  EXPECT_EQ(Run("i=deck.k"), 0);
  RunProgress run(FindRunFiles(folder_.Path()));
  ASSERT_TRUE(run.Look());
  const RunNews news = run.News();
  EXPECT_EQ(news.ended, RunEnd::kNormal);
  EXPECT_EQ(news.cycle, 200000);
  EXPECT_EQ(news.time, 1.0);
  EXPECT_EQ(news.endTime, 1.0);
  EXPECT_EQ(news.percent, 100);
  EXPECT_EQ(run.States().Rows(), 41u);
  Health health{Settings()};
  EXPECT_EQ(health.Look(run.States(), run.Message(), true, 0).size(), 5u);
}

// Each with files of its own; what stands in a case's lines is for it alone.
TEST_F(Standin, RunsTheCasesOfADeckOneAfterAnother) {
  folder_.Write("deck.k",
                "*KEYWORD\n*CASE\n         2\n         7\n*CASE_TITLE\nthe first\n         1\n"
                "         6\n*CASE_BEGIN_6\n*CONTROL_TERMINATION\n       1.0\n*CASE_END_6\n"
                "*CASE_BEGIN_7\n$ standin: fail 40500\n*CONTROL_TERMINATION\n       3.0\n"
                "*CASE_END_7\n*NODE\n       1\n*END\n");
  EXPECT_EQ(Run("i=deck.k CASE"), 1);
  for (const char* kind : {"messag", "glstat", "d3plot", "status.out", "d3hsp"}) {
    for (const std::string one : {"CASE1.", "CASE2."})
      EXPECT_NE(Read(one + kind), "") << one << kind;
    EXPECT_FALSE(FileDirWrapper::FileExists(folder_ / kind)) << kind;
  }
  EXPECT_NE(Read("CASE1.messag").find(kNormal), std::string::npos);
  EXPECT_NE(Read("CASE2.messag").find("Error 40500"), std::string::npos);
  EXPECT_NE(Read("CASE2.status.out").find("3.000E+00"), std::string::npos);
  Run("i=deck.k CASE jobid=bar");
  EXPECT_NE(Read("bar.CASE2.messag").find(kError), std::string::npos);
  // Without the word on the line it is one run.
  EXPECT_EQ(Run("i=deck.k"), 1);
  EXPECT_TRUE(Says("Error 40500"));
}

// Every way to write a card that a deck may use, and an element of each kind.
TEST_F(Standin, WritesTheDecksModelInBothPrecisions) {
  folder_.Write("deck.k",
                "*KEYWORD\n*PARAMETER\nR     tend       2.0I    first        10\n*TITLE\nMixed\n"
                "*CONTROL_TERMINATION\n     &tend\n*INCLUDE_PATH\nparts\n*INCLUDE\nnodes.k\n"
                "*ELEMENT_SOLID\n     900       7\n"
                "      10      20      30      40      50      60      70      80\n"
                "*ELEMENT_SHELL_THICKNESS\n"
                "     700       5      10      20      30      30\n"
                "             1.0             1.0             1.0             1.0\n"
                "*ELEMENT_BEAM\n800,9,10,20,80\n"
                "*ELEMENT_TSHELL\n"
                "     500       6      10      20      30      40      50      60      70      80\n"
                "*ELEMENT_SHELL_NURBS_PATCH\n       1       1\n*END\nnot read\n");
  FileDirWrapper::CreateDirTree(folder_ / "parts");
  folder_.Write("parts/nodes.k",
                "*KEYWORD\n*NODE\n      80             0.0             1.0          1.0D0\n"
                "$ a comment\n"
                "  &first             0.0             0.0             0.0\n"
                "20,1.,0.,0.\n 30, 1. , 1. , 0.\n40,0,1,0\n50,0,0,1\n*NODE +\n"
                "                  60                 1.0                 0.0                 1.0\n"
                "                  70                 1.0                 1.0                 1.0\n"
                "*END\n");
  for (const char* program : {"standin_solver", "standin_solver_d"}) {
    ASSERT_EQ(Run("i=deck.k", program), 0) << Read("messag");
    EXPECT_TRUE(Says("not read: *ELEMENT_SHELL_NURBS_PATCH"));
    ptkPostD3plotManager manager;
    ptkUnstructuredGridManager grids;
    ASSERT_TRUE(manager.Open(folder_ / "d3plot", grids)) << manager.Reader().Error().English();
    EXPECT_EQ(manager.Reader().Format().doublePrecision, std::string(program).ends_with("_d"));
    EXPECT_EQ(grids.Grid().NumberOfPoints(), 8);
    const auto& kinds = grids.Grid().CellsByKind();
    EXPECT_EQ(kinds.solids, 1);
    EXPECT_EQ(kinds.thickShells, 1);
    EXPECT_EQ(kinds.beams, 1);
    EXPECT_EQ(kinds.shells, 1);
    EXPECT_EQ(manager.Reader().Families().front().members.size(), 2u) << "the model, its states";
  }
}

}  // namespace
