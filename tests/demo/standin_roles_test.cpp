// The solvers that the stand-in plays beside the keyword solver.
#include <string>

#include "demo/SolverProcess.h"

namespace {

constexpr char kToken[] = "Abcdefghij.01234567890";
constexpr char kDate[] = " D A T E (MM/DD/YY): ";
constexpr char kTime[] = " TIME(HH:MM:SS:.01): ";

class StandinRoles : public ScratchFolder {
 protected:
  // The program under another name, with the suffix that lets it start.
  std::string Named(const std::string& name) {
    const auto path = folder_ / (name + kExecutableSuffix);
    std::filesystem::copy_file(SolverPath(), path,
                               std::filesystem::copy_options::overwrite_existing);
    return path.string();
  }
  static std::string Inc(const std::string& token, const std::string& job) {
    return "\"" + token + "\" . \"" + job + "\"";
  }
};

TEST_F(StandinRoles, IncWritesItsTotalTimeAtTheEnd) {
  Write("my part.v2.fin", "TITLE A cup\nELEMENTS 40\nSTEPS 4\n$ standin: run 60\n");
  PTWrapperProcess process;
  ASSERT_TRUE(Start(process, Inc(kToken, "my part.v2")));
  ASSERT_TRUE(WaitFor([&] { return Contains(Read("my part.v2_INFO.OUT"), " A cup\n"); }));
  EXPECT_FALSE(Contains(Read("my part.v2_INFO.OUT"), "THE TOTAL TIME"));
  EXPECT_TRUE(process.Terminate());

  Write("my part.v2.fin", "$ standin: run 1.6\n$ standin: echo\n");
  EXPECT_EQ(Run(Inc(kToken, "my part.v2"), Named("KVIN_SC")), 0);
  const std::string info = Read("my part.v2_INFO.OUT");
  EXPECT_TRUE(Contains(info, "THE TOTAL TIME FOR THIS JOB IS ABOUT    0 HOURS  0 MINUTES  2 SEC"));
  EXPECT_FALSE(Contains(info, kToken));
  EXPECT_TRUE(Contains(Read("standin_echo.txt"), std::string(kToken) + "\n.\nmy part.v2\ncwd="));
}

TEST_F(StandinRoles, IncRefusesInWords) {
  Write("a.fin", "");
  EXPECT_EQ(Run(Inc("short.token", "a")), 1);
  EXPECT_TRUE(Contains(Read("a_INFO.OUT"), "TOKEN IS REFUSED: IT HAS 11 CHARACTERS INSTEAD OF 22"));
  EXPECT_FALSE(Contains(Read("a_INFO.OUT"), "short.token"));
  EXPECT_EQ(Run(Inc(std::string(kToken) + "1", "a")), 1);
  EXPECT_EQ(Run(Inc(kToken, "absent")), 1);
  EXPECT_TRUE(Contains(Read("absent_INFO.OUT"), "CANNOT BE READ: absent.fin"));
  Write("a.fin", "STEPS many\n");
  EXPECT_EQ(Run(Inc(kToken, "a")), 1);
  EXPECT_TRUE(Contains(Read("a_INFO.OUT"), "ERROR LINE 1 "));
  Write("a.fin", "$ standin: fail\n");
  EXPECT_EQ(Run(Inc(kToken, "a")), 1);
  EXPECT_FALSE(Contains(Read("a_INFO.OUT"), "THE TOTAL TIME"));
  EXPECT_EQ(Run(std::string(kToken) + " a", Named("kvin_mc")), 2) << "the folder is missing";
}

TEST_F(StandinRoles, VorelStampsBothEndsAndWritesAResult) {
  Write("a.dat", "ELEMENTS 7\n$ standin: warnings 1 5\n");
  EXPECT_EQ(Run("a 512000 -x \"y z\""), 0);
  const std::string out = Read("a.OUT");
  EXPECT_EQ(CountOf(out, kDate), 2);
  EXPECT_EQ(CountOf(out, kTime), 2);
  EXPECT_TRUE(Contains(out, " ARGUMENT          512000\n ARGUMENT          -x\n"));
  EXPECT_TRUE(Contains(Read("a.lin"), "elements 7\n"));

  for (const char* command : {"errors 2 8", "fail", "crash", "no-result", "empty-result"}) {
    std::filesystem::remove(folder_ / "a.lin");
    Write("a.dat", std::string("$ standin: ") + command + "\n");
    const bool normal = std::string(command).find("result") != std::string::npos;
    EXPECT_EQ(Run("a") == 0, normal) << command;
    EXPECT_EQ(Exists("a.lin"), std::string(command) == "empty-result") << command;
    EXPECT_TRUE(Read("a.lin").empty());
    EXPECT_EQ(CountOf(Read("a.OUT"), kDate), std::string(command) == "crash" ? 1 : 2) << command;
  }
  Write("a.dat", "$ standin: errors 2 8\n");
  Run("a");
  EXPECT_EQ(CountOf(Read("a.OUT"), "\n *** ERROR 8: "), 2);
  EXPECT_EQ(Run("a 12x"), 1);
  EXPECT_EQ(Run("b", Named("Vorel")), 1);
  EXPECT_TRUE(Contains(Read("b.OUT"), "CANNOT BE READ: b.dat"));
}

TEST_F(StandinRoles, TheUtilityBatchProgramTakesADeckByItsName) {
  Write("two words=1.k", "*KEYWORD\n*CONTROL_TERMINATION\n       1.0\n$ standin: echo\n*END\n");
  for (const std::string& program : {SolverPath(), Named("Utility Batch")}) {
    EXPECT_EQ(Run("\"two words=1.k\" memory=20m", program), 0) << program;
    EXPECT_TRUE(Contains(Read("messag"), "N o r m a l    t e r m i n a t i o n")) << program;
    EXPECT_EQ(Read("standin_echo.txt").rfind("two words=1.k\nmemory=20m\ncwd=", 0), 0U);
    std::filesystem::remove(folder_ / "messag");
  }
  EXPECT_EQ(Run("absent.k", Named("UtilityBatch")), 1);
  EXPECT_TRUE(Contains(Read("messag"), "E r r o r   t e r m i n a t i o n"));
}

}  // namespace
