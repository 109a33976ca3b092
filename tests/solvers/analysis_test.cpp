#include <gtest/gtest.h>

#include <algorithm>

#include "jobs/JobFile.h"
#include "solvers/OutputAnalysis.h"
#include "support/TempFolder.h"

namespace {

using Lines = std::vector<std::string>;
using Outcome = AnalysisReport::Outcome;

const std::string kRule63(63, '=');
const std::string kRule64(64, '=');

std::string Warning(int number, const std::string& text) {
  return " *** Warning " + std::to_string(number) + " (STR+6)\n     " + text + "\n\n";
}

std::string Error(int number, const std::string& text) {
  return " *** Error " + std::to_string(number) + " (KEY+305)\n     " + text + "\n\n";
}

// The lines behind a title, up to the next rule.
Lines ListBehind(const Lines& lines, const std::string& title) {
  auto from = std::find(lines.begin(), lines.end(), title);
  if (from == lines.end()) return {"no " + title};
  EXPECT_EQ(*(from - 1), kRule64);
  EXPECT_EQ(*(from + 1), "");
  return {from + 2, std::find(from, lines.end(), kRule64)};
}

class MessageAnalysis : public testing::Test {
 protected:
  AnalysisReport Analyse(const std::string& text) {
    return AnalyseMessageFile(folder.Write("messag", text));
  }
  Lines Errors(const std::string& text) { return ListBehind(Analyse(text).lines, "List Errors :"); }
  Lines Warnings(const std::string& text) {
    return ListBehind(Analyse(text).lines, "List Warnings :");
  }

  TempFolder folder;
};

TEST_F(MessageAnalysis, TheWholeReport) {
  const std::string text =
      " Date: 12/21/25\n       1 t 1.3776E-07 dt 1.38E-07 write d3plot file\n" +
      Warning(40576, "node 7 penetrates") +
      " *** Error 40373 (SOL+373)\n     element 12 has\n expanding   memory to      127121 d\n"
      "     negative volume\n\n"
      " *** termination time reached ***\n"
      " Total CPU time     =         2 seconds (   0 hours  0 minutes  2 seconds)\n";
  for (const std::string& variant : {text, WithReturns(text), text.substr(0, text.size() - 1)}) {
    const AnalysisReport report = Analyse(variant);
    const Lines expected = {kRule63,
                            "File Name : " + folder / "messag",
                            "",
                            "Total CPU Time :    0 hours  0 minutes  2 seconds",
                            "",
                            "Found 1 errors\n",
                            "Found 1 warnings\n",
                            "",
                            kRule64,
                            "List Errors :",
                            "",
                            "Please check the element with zero or negative Jacobian in the model.",
                            "element 12 has",
                            "negative volume",
                            kRule64,
                            "List Warnings :",
                            "",
                            "Please check if penetration occurs in the contact interface.",
                            "node 7 penetrates"};
    EXPECT_EQ(report.lines, expected);
    EXPECT_EQ(report.outcome, Outcome::kRead);
    EXPECT_EQ(report.errors, 1);
    EXPECT_EQ(report.warnings, 1);
    EXPECT_EQ(report.cpuTime, "   0 hours  0 minutes  2 seconds");
  }
}

TEST_F(MessageAnalysis, OnlyTwentyWarningsAreListed) {
  std::string text;
  for (int i = 1; i <= 25; ++i) {
    text += Warning(40577, "text " + std::to_string(i));
    const AnalysisReport report = Analyse(text);
    EXPECT_EQ(report.lines[6].starts_with("Found more than 20"), i >= 20) << report.lines[6];
    EXPECT_EQ(report.warnings, i);
  }
  const Lines listed = Warnings(text + " *** Warning 1\n At line# 3\n");
  EXPECT_EQ(listed.size(), 20u);
  EXPECT_EQ(listed.back(), "text 20");
}

TEST_F(MessageAnalysis, LinesThatFollowAnErrorGoWithIt) {
  const std::string failed = "*** Error input data failed with:";
  EXPECT_EQ(Errors(Error(1, "one") + " " + failed + "\n card 7\n\n      1 t 0\n At line# 7\n\n" +
                   Error(2, "two")),
            (Lines{"one", failed, "card 7", "At line# 7", "two"}));
  // They do not go with a warning's error.
  EXPECT_EQ(Errors(Error(1, "one") + Warning(2, "w\n At line# 9") + " At line# 9\n"),
            (Lines{"one"}));
  const std::string close = " *** Warning 1 (A+1)\n one\n contracting memory to 5\n still one\n";
  EXPECT_EQ(Warnings(close + " *** Error 2 (B+2)\n two\n"), (Lines{"one", "still one"}));
}

// Messages at every place of the blocks in which the file is read.
TEST_F(MessageAnalysis, NothingIsLostBetweenBlocks) {
  std::string text;
  for (int i = 0; i < 30000; ++i) {
    text += Error(i, "text of error " + std::to_string(i) + std::string(i % 41U, '.'));
  }
  text += " Total CPU time = (7 seconds)\n";
  const AnalysisReport report = Analyse(text);
  EXPECT_EQ(report.errors, 30000);
  EXPECT_EQ(report.cpuTime, "7 seconds");
  const Lines listed = ListBehind(report.lines, "List Errors :");
  ASSERT_EQ(listed.size(), 30002u);  // two of the numbers have hints
  EXPECT_EQ(listed.back().substr(0, 19), "text of error 29999");
}

TEST_F(MessageAnalysis, LongLinesAndEndlessBlocksNeedLittleMemory) {
  const std::string longLine(5 << 20, '*');
  const AnalysisReport report =
      Analyse(" *** Error 1\n" + longLine + "\n\n *** Error 2\n two\n" + longLine);
  EXPECT_EQ(report.errors, 2);
  const Lines listed = ListBehind(report.lines, "List Errors :");
  ASSERT_EQ(listed.size(), 3u);
  EXPECT_LT(listed[0].size(), 10000u);
  EXPECT_EQ(listed[1], "two");

  std::string endless = " *** Warning 1\n";
  while (endless.size() < (20 << 20)) endless += " a line that no empty line follows\n";
  const AnalysisReport cut = Analyse(endless + " *** Error 5\n five\n");
  EXPECT_EQ(cut.errors, 1);
  EXPECT_LT(cut.lines.size(), 300000u);
  EXPECT_EQ(cut.lines.back(), "(more lines are in the file)");
  EXPECT_EQ(ListBehind(cut.lines, "List Errors :"), (Lines{"five"}));
}

TEST_F(MessageAnalysis, CanBeWatchedEndedAndTranslated) {
  const std::string path = folder.Write("messag", std::string(20 << 20, '\n') + Error(60004, "t"));
  std::uint64_t last = 0;
  AnalysisHooks hooks;
  hooks.progress = [&](std::uint64_t done, std::uint64_t size) {
    EXPECT_GT(done, last);
    EXPECT_LE(done, size);
    last = done;
    return true;
  };
  hooks.say = [](const Message& message) { return "<" + message.English() + ">"; };
  hooks.decode = [](const std::string& bytes) { return "{" + bytes + "}"; };
  const AnalysisReport report = AnalyseMessageFile(path, hooks);
  EXPECT_GT(last, 0u);
  EXPECT_EQ(report.lines[1], "<File Name : " + path + ">");
  EXPECT_EQ(report.lines[3], "<Total CPU Time : >");
  EXPECT_EQ(report.lines[11].front(), '<') << "a hint, decoded already";
  EXPECT_EQ(report.lines[12], "{t}");
  hooks.progress = [](std::uint64_t, std::uint64_t) { return false; };
  const AnalysisReport ended = AnalyseMessageFile(path, hooks);
  EXPECT_EQ(ended.outcome, Outcome::kEnded);
  EXPECT_TRUE(ended.lines.empty());
}

TEST(IncAnalysis, TotalTimeOfFinishedJobs) {
  const TempFolder folder;
  const std::string job = folder / "part.v2.fin";
  const std::string info = folder / "part.v2_INFO.OUT";
  EXPECT_EQ(AnalyseIncInfo(job, JobStatus::kFinished).outcome, Outcome::kNotRead);
  folder.Write("part.v2_INFO.OUT",
               "THE TOTAL TIME FOR SOLVING IS ABOUT 12.5 SECONDS\r\nTHE TOTAL TIME\nABOUT\n");
  EXPECT_EQ(AnalyseIncInfo(job, JobStatus::kFinished).lines,
            (Lines{"File Name : " + info, "THE TOTAL TIME: ", " 12.5 SECONDS", ""}));
  EXPECT_EQ(AnalyseIncInfo(job, JobStatus::kAborted).lines, Lines{"File Name : " + info});
}

TEST(VorelAnalysis, FirstAndLastDateAndTheErrors) {
  const TempFolder folder;
  const std::string job = folder / "blank.dat";
  const std::string name = "File Name : " + folder / "blank.OUT";
  const auto stamp = [](const std::string& date, const std::string& time) {
    return "  D A T E (MM/DD/YY): " + date + "   TIME(HH:MM:SS:.01): " + time + "\r\n";
  };
  folder.Write("blank.OUT", stamp("01/10/15", "10:00:00:.25"));
  EXPECT_EQ(AnalyseVorelOut(job).lines, Lines{name});
  folder.Write("blank.OUT", stamp("01/10/15", "10:00:00:.25") + "  ERROR IN ELEMENT 5 \n" +
                                stamp("01/10/15", "10:30:00:.00") + "no Error\n" +
                                stamp("01/11/15", "09:30:00:.00"));
  EXPECT_EQ(AnalyseVorelOut(job).lines,
            (Lines{name, "THE TOTAL TIME:  23 Hours 30 Minutes 0 Seconds", "ERROR IN ELEMENT 5"}));
  folder.Write("blank.OUT",
               "D A T E (MM/DD/YY): 01/10/15\nTIME(HH:MM:SS:.01): 10:00:00:.25\n"
               "TIME(HH:MM:SS:.01): 10:00:07:.25\nD A T E (MM/DD/YY): 01/10/15");
  EXPECT_EQ(AnalyseVorelOut(job).lines[1], "THE TOTAL TIME:  0 Hours 0 Minutes 7 Seconds");
}

}  // namespace
