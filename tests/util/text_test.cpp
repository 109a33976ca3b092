#include <gtest/gtest.h>

#include <climits>
#include <clocale>

#include "util/text/ConsoleText.h"
#include "util/text/CsvField.h"
#include "util/text/ErrorRecord.h"
#include "util/text/FileUrl.h"
#include "util/text/StrWrapper.h"

namespace {

using Texts = std::vector<std::string>;

Texts Split(const std::string& line) {
  Texts args{"left over"};
  StrWrapperTxt::SplitCommandLine(line, args);
  return args;
}

TEST(Text, OfAConsoleIsWhatItShowsInTheEnd) {
  const std::string printed =
      "\x1b]0;a title\aplain\r\n"
      "\x1b[1;32mgreen\x1b[0m \x1b(Bfont\n"
      "1 %\r2 %\r3 %\n"
      "bar\r\x1b[K\x1b[2Kdone\n"
      "sp\xc3\xa4t\b\b\bun\a\x7f\n"
      "\x1b[3;1Hthree\x1b[7;1Hseven\x1b[1Gagain\n"
      "\x1bPdevice\x1b\\after\ttab\n\n"
      "no end";
  const std::string shown =
      "plain\ngreen font\n3 %\ndone\nsun\nthree\nagain\nafter\ttab\n\nno end\n";
  for (const std::size_t step : {printed.size(), std::size_t{1}}) {
    ConsoleText text;
    std::string lines;
    for (std::size_t at = 0; at < printed.size(); at += step)
      text.Take(std::string_view(printed).substr(at, step), lines);
    text.End(lines);
    EXPECT_EQ(lines, shown) << step;
  }
  ConsoleText endless;
  std::string lines;
  for (int i = 0; i < 100; ++i) endless.Take(std::string(1000, 'x'), lines);
  EXPECT_GE(lines.size(), 60000u);
}

TEST(Text, TrimAndSeparate) {
  std::string out = "old";
  EXPECT_TRUE(StrWrapperTxt::Trim(" \t a b\r\n \t", out));
  EXPECT_EQ(out, "a b\r\n");
  EXPECT_TRUE(StrWrapperTxt::Trim(out, out));
  EXPECT_FALSE(StrWrapperTxt::Trim("\t", out));
  Texts pieces{"old"};
  StrWrapperTxt::SeparateString(",a,, b ,", pieces, ',');
  EXPECT_EQ(pieces, (Texts{"a", " b "}));
}

// Expected values are what CommandLineToArgvW gives.
TEST(Text, CommandLinesSplitByTheWindowsRules) {
  EXPECT_EQ(Split(""), Texts{});
  EXPECT_EQ(Split("solver.exe  i=a.k\tncpu=4 "), (Texts{"solver.exe", "i=a.k", "ncpu=4"}));
  EXPECT_EQ(Split(R"("C:\my solver\s.exe" "i=my deck.k")"),
            (Texts{R"(C:\my solver\s.exe)", "i=my deck.k"}));
  // The program's name knows no escapes and ends at its quote.
  EXPECT_EQ(Split(R"("C:\dir\" x)"), (Texts{R"(C:\dir\)", "x"}));
  EXPECT_EQ(Split(R"("a"b c)"), (Texts{"a", "b", "c"}));
  EXPECT_EQ(Split(R"(a"b c)"), (Texts{R"(a"b)", "c"}));
  EXPECT_EQ(Split(" x"), (Texts{"", "x"}));

  EXPECT_EQ(Split(R"(p a\b \\share\x "end\\" next)"),
            (Texts{"p", R"(a\b)", R"(\\share\x)", R"(end\)", "next"}));
  EXPECT_EQ(Split(R"(p \"a\" "x \"y\" z" a\\\"b)"),
            (Texts{"p", R"("a")", R"(x "y" z)", R"(a\"b)"}));
  EXPECT_EQ(Split(R"(p "" x)"), (Texts{"p", "", "x"}));
  EXPECT_EQ(Split(R"(p "a""b c" d)"), (Texts{"p", R"(a"b)", "c d"}));
  EXPECT_EQ(Split(R"(p """a b""" c)"), (Texts{"p", R"("a)", R"(b")", "c"}));
  EXPECT_EQ(Split(R"(p "unclosed x\)"), (Texts{"p", R"(unclosed x\)"}));
}

TEST(Text, LeadingNumbersAreClamped) {
  EXPECT_EQ(StrWrapperTxt::LeadingInt(" \t-12abc"), -12);
  EXPECT_EQ(StrWrapperTxt::LeadingInt(""), 0);
  EXPECT_EQ(StrWrapperTxt::LeadingInt("2147483648"), INT_MAX);
  EXPECT_EQ(StrWrapperTxt::LeadingInt("-99999999999999999999999"), INT_MIN);
  EXPECT_EQ(StrWrapperTxt::LeadingUnsigned("18446744073709551616"), ULLONG_MAX);
  EXPECT_EQ(StrWrapperTxt::LeadingUnsigned("-5"), 0u);
}

class Reporter : public ErrorReporting {
 public:
  using ErrorReporting::SetLastError;
};

TEST(Errors, MessagesAreWholeAndUseADecimalPoint) {
  // Any locale will do where the one with decimal commas is not installed.
  if (std::setlocale(LC_ALL, "de_DE.UTF-8") == nullptr) std::setlocale(LC_ALL, "C.UTF-8");
  Reporter reporter;
  const std::string big(4095, 'x');
  reporter.SetLastError("%.1f!%s", 1.5, big.c_str());
  EXPECT_EQ(reporter.LastError(), "1.5!" + big);
  EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "C");
}

TEST(Text, LinksToFilesAreOfBothSystems) {
  EXPECT_EQ(FileUrl("/home/a b/100%#?&\"<.k"), "file:///home/a%20b/100%25%23%3F%26%22%3C.k");
  EXPECT_EQ(FileUrl("/a/b\\c\xE4\xB8\xAD"), "file:///a/b%5Cc%E4%B8%AD");
  EXPECT_EQ(FileUrl("C:\\runs\\a b"), "file:///C:/runs/a%20b");
  EXPECT_EQ(FileUrl("\\\\server\\share\\a"), "file://server/share/a");
  EXPECT_EQ(FileUrl("a.k"), "");
}

TEST(Text, ATableHoldsNoFormulas) {
  EXPECT_EQ(CsvLine({"a b", "-1.5e3", "x,\"y\"", "two\r\nlines"}),
            "a b,-1.5e3,\"x,\"\"y\"\"\",two  lines\n");
  EXPECT_EQ(CsvLine({"=1+1", " @SUM(A1)", "+cmd|' /C'!A0", "-name.k"}),
            "'=1+1,' @SUM(A1),'+cmd|' /C'!A0,'-name.k\n");
}

}  // namespace
