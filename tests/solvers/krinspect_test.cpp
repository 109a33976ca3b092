#include <gtest/gtest.h>

#include <cstdlib>

#include "d3plot/D3plotImage.h"
#include "support/TempFolder.h"

namespace {

class Inspect : public testing::Test {
 protected:
  // Runs the program on the file; its texts are then in `out` and `err`.
  bool Read(const std::string& arguments, const std::string& file) {
    std::string command = Quoted(KR_TEST_BIN_DIR "/krinspect") + " " + arguments + " " +
                          Quoted(file) + " > " + Quoted(folder / "out") + " 2> " +
                          Quoted(folder / "err");
#ifdef _WIN32
    command = Quoted(command);  // the shell drops the outer pair
#endif
    const bool good = std::system(command.c_str()) == 0;
    out = WithoutReturns(TempFolder::Read(folder / "out"));
    err = TempFolder::Read(folder / "err");
    EXPECT_EQ(good, err.empty()) << err;
    EXPECT_FALSE(good && out.empty());
    return good;
  }

  static std::string Quoted(const std::string& text) {
    return '"' + text + '"';
  }
  static std::string WithoutReturns(std::string text) {
    std::erase(text, '\r');
    return text;
  }

  TempFolder folder;
  std::string out;
  std::string err;
};

TEST_F(Inspect, Decks) {
  const std::string one = folder.Write("one.k", "*KEYWORD\n*CONTROL_TERMINATION\n       2.5\n");
  const std::string deck = folder.Write(
      "main.k",
      "*KEYWORD_JOBID 800M\nblank\x80\"7\n$ SIMULATION: HOT FORMING\n$ CALC-METHOD: IMPLICIT\n"
      "$ RCMD-SOLVER: DOUBLE\n$ RUNFIRST: 1\n$ SPC WORKS IN ALL STAGES: YES\n*INCLUDE\none.k\n");
  ASSERT_TRUE(Read("deck", deck));
  EXPECT_EQ(out,
            "memory_mb: 800\njob_id: blank\x80\"7\nsimulation_type: HOT FORMING\n"
            "calculation_method: IMPLICIT\nsolver_type: 1\nfirst_stage: 0\nkeep_deck: true\n"
            "case_run: false\nend_time: 2.5\ninclude: one.k\nstage: " +
                one + "\n");
  ASSERT_TRUE(Read("--json deck", deck));
  EXPECT_NE(out.find("\"job_id\": \"blank\xC2\x80\\\"7\","), std::string::npos);
  EXPECT_NE(out.find("\"keep_deck\": true,"), std::string::npos);
  EXPECT_NE(out.find("\"include\": [\"one.k\"],"), std::string::npos);
  EXPECT_FALSE(Read("deck", folder / "absent.k"));
}

// Of a history that is no whole one the exit code and the words say so.
TEST_F(Inspect, Histories) {
  EXPECT_TRUE(Read("history --csv",
                   folder.Write("whole.kr", "00000017 a322c2aa kestrun history 1 - 0 -\n")));
  EXPECT_FALSE(Read("history --json",
                    folder.Write("cut.kr", "00000017 a0a616c4 kestrun history 1 - 2 -\n")));
  EXPECT_EQ(out, "[]\n");
  EXPECT_FALSE(
      Read("history --csv", folder.Write("new.kr", "00000017 90cd8ccd kestrun history 9 - 0 -\n")));
  EXPECT_NE(err.find("later version"), std::string::npos) << err;
  EXPECT_FALSE(Read("history --csv", folder.Write("rubbish.kr", "rubbish\n")));
  EXPECT_EQ(out, "");
}

TEST_F(Inspect, Reports) {
  const std::string message = folder.Write("messag", " *** Error 1\n a \x1b[31m\tb\n");
  ASSERT_TRUE(Read("message", message));
  EXPECT_NE(out.find("Found 1 errors\nFound 0 warnings\n\n"), std::string::npos);
  EXPECT_NE(out.find("\na ?[31m\tb\n"), std::string::npos);
  ASSERT_TRUE(Read("message --json", message));
  EXPECT_NE(out.find("\"errors\": 1,"), std::string::npos);
  EXPECT_NE(out.find("\"a \\u001b[31m\\tb\""), std::string::npos);
  EXPECT_FALSE(Read("message", folder / "absent"));
  EXPECT_EQ(out, std::string(63, '=') + "\nOpen File [" + folder / "absent" + "] failed!\n\n" +
                     std::string(64, '=') + '\n');

  // A job, its output, and a name of neither lead to one file.
  folder.Write("a_INFO.OUT", "THE TOTAL TIME FOR ALL IS ABOUT 3 S\n");
  for (const char* name : {"a.fin", "a_INFO.OUT", "a"}) {
    ASSERT_TRUE(Read("inc", folder / name)) << name;
    EXPECT_EQ(out, "File Name : " + folder / "a_INFO.OUT" + "\nTHE TOTAL TIME: \n 3 S\n\n");
  }
  EXPECT_FALSE(Read("inc", folder / "c.fin"));
}

TEST_F(Inspect, RunningAndEndedRuns) {
  folder.Write("deck.k", "*KEYWORD\n*CONTROL_TERMINATION\n2.0\n");
  const std::string lines =
      " Command line options: i=deck.k\n\n"
      "       1 t 0.0000E+00 dt 1.00E-06 flush i/o buffers            08/14/24 12:00:00\n"
      "    5000 t 5.0000E-01 dt 2.00E-06 flush i/o buffers            08/14/24 12:10:00\n";
  folder.Write("messag", lines);
  const std::string states = folder.Write(
      "glstat",
      " dt of cycle       1 is controlled by shell    7 of part    1\n"
      " time...........................   0.00000E+00\n hourglass energy ..............   "
      "1.50000E+00\n"
      " dt of cycle    5000 is controlled by load curve\n time...........................   NaN\n");
  ASSERT_TRUE(Read("progress --json", folder.Path()));
  EXPECT_EQ(out,
            "{\n  \"cycle\": 5000,\n  \"time\": 0.5,\n  \"time_step\": 2e-06,\n"
            "  \"end_time\": 2.0,\n  \"percent\": 25.0,\n  \"seconds_left\": 1800.0,\n"
            "  \"controlled_by\": \"load curve\",\n  \"ended\": \"running\"\n}\n");
  folder.Write("messag", lines + " N o r m a l    t e r m i n a t i o n");
  ASSERT_TRUE(Read("progress", folder / "messag"));
  EXPECT_NE(out.find("percent: 25\nseconds_left: 0\n"), std::string::npos);
  EXPECT_NE(out.find("ended: stopped\n"), std::string::npos);
  ASSERT_TRUE(Read("glstat --csv", states));
  EXPECT_EQ(out,
            "cycle,controlled_by,time,hourglass_energy\n1,\"shell 7 of part 1\",0,1.5\n"
            "5000,\"load curve\",NaN,\n");
  folder.Write("glstat", " dt of cycle 1 is controlled by =a(\"b\"), c\n x,y....   1.00000E+00\n");
  ASSERT_TRUE(Read("glstat --csv", states));
  EXPECT_EQ(out, "cycle,controlled_by,\"x,y\"\n1,\"'=a(\"\"b\"\"), c\",1\n");
  EXPECT_FALSE(Read("glstat --csv", folder / "messag"));
  EXPECT_FALSE(Read("progress --csv", folder.Path()));
  EXPECT_FALSE(Read("progress", folder / "absent"));
}

TEST_F(Inspect, ResultDatabases) {
  const D3plotModel model{.solids = 3, .beams = 2, .shells = 4};
  ASSERT_TRUE(Read("d3plot", folder.Write("d3plot", D3plotImage(8, true, model).Bytes())));
  EXPECT_EQ(out,
            "nodes: 12\nelements: 9\nsolids: 3\nthick_shells: 0\nbeams: 2\nshells: 4\n"
            "families: 1\nfiles: 1\nword_size: 8\nbyte_order: big\n");
  EXPECT_FALSE(Read("d3plot", folder.Write("a.k", "*KEYWORD\n")));
  EXPECT_FALSE(Read("d3plot2", folder / "d3plot"));
}

}  // namespace
