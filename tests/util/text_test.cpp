#include <gtest/gtest.h>

#include <climits>
#include <clocale>
#include <cstdlib>

#include "util/text/DateTimeWrapper.h"
#include "util/text/ErrorRecord.h"
#include "util/text/StrWrapper.h"

namespace {

using Texts = std::vector<std::string>;

Texts Split(const std::string& line) {
  Texts args{"left over"};
  StrWrapperTxt::SplitCommandLine(line, args);
  return args;
}

TEST(Text, TrimDropsOnlyBlanksAndTabs) {
  std::string out = "old";
  EXPECT_TRUE(StrWrapperTxt::Trim(" \t a b\r\n \t", out));
  EXPECT_EQ(out, "a b\r\n");
  EXPECT_TRUE(StrWrapperTxt::Trim(out, out));
  EXPECT_FALSE(StrWrapperTxt::Trim("\t", out));
  EXPECT_EQ(out, "");
}

TEST(Text, SeparateStringDropsEmptyPieces) {
  Texts pieces{"old"};
  StrWrapperTxt::SeparateString(",a,, b ,", pieces, ',');
  EXPECT_EQ(pieces, (Texts{"a", " b "}));
  StrWrapperTxt::SeparateString("", pieces, ',');
  EXPECT_TRUE(pieces.empty());
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
  EXPECT_EQ(Split(R"("open)"), (Texts{"open"}));
  EXPECT_EQ(Split(" x"), (Texts{"", "x"}));

  EXPECT_EQ(Split(R"(p a\b \\share\x "end\\" next)"),
            (Texts{"p", R"(a\b)", R"(\\share\x)", R"(end\)", "next"}));
  EXPECT_EQ(Split(R"(p \"a\" "x \"y\" z" a\\\"b)"),
            (Texts{"p", R"("a")", R"(x "y" z)", R"(a\"b)"}));
  EXPECT_EQ(Split(R"(p "" x)"), (Texts{"p", "", "x"}));
  EXPECT_EQ(Split(R"(p pre"a b"post)"), (Texts{"p", "prea bpost"}));
  EXPECT_EQ(Split(R"(p "a""b c" d)"), (Texts{"p", R"(a"b)", "c d"}));
  EXPECT_EQ(Split(R"(p """a b""" c)"), (Texts{"p", R"("a)", R"(b")", "c"}));
  EXPECT_EQ(Split(R"(p "unclosed x\)"), (Texts{"p", R"(unclosed x\)"}));
}

TEST(Text, LeadingNumbersAreClamped) {
  EXPECT_EQ(StrWrapperTxt::LeadingInt(" \t-12abc"), -12);
  EXPECT_EQ(StrWrapperTxt::LeadingInt("+7"), 7);
  EXPECT_EQ(StrWrapperTxt::LeadingInt("- 7"), 0);
  EXPECT_EQ(StrWrapperTxt::LeadingInt(""), 0);
  EXPECT_EQ(StrWrapperTxt::LeadingInt("2147483648"), INT_MAX);
  EXPECT_EQ(StrWrapperTxt::LeadingInt("-2147483648"), INT_MIN);
  EXPECT_EQ(StrWrapperTxt::LeadingInt("-99999999999999999999999"), INT_MIN);
  EXPECT_EQ(StrWrapperTxt::LeadingUnsigned("18446744073709551615"), ULLONG_MAX);
  EXPECT_EQ(StrWrapperTxt::LeadingUnsigned("18446744073709551616"), ULLONG_MAX);
  EXPECT_EQ(StrWrapperTxt::LeadingUnsigned("-5"), 0u);
}

std::tm SampleTime() {
  std::tm time{};
  time.tm_year = 115;
  time.tm_mon = 2;
  time.tm_mday = 7;
  time.tm_hour = 9;
  time.tm_min = 5;
  time.tm_wday = 6;
  return time;
}

TEST(Dates, FixedFormats) {
  const std::tm time = SampleTime();
  std::string text;
  EXPECT_TRUE(DateTimeWrapperStr::DateString(&time, text));
  EXPECT_EQ(text, "2015-03-07");
  EXPECT_TRUE(DateTimeWrapperStr::TimeString(&time, text));
  EXPECT_EQ(text, "09:05:00");
  EXPECT_TRUE(DateTimeWrapperStr::DateTimeString(&time, text));
  EXPECT_EQ(text, "2015-03-07 09:05:00");
  EXPECT_TRUE(DateTimeWrapperStr::UnixStdFormat(&time, text));
  EXPECT_EQ(text, "Sat Mar  7 09:05:00 2015\n");
  EXPECT_FALSE(DateTimeWrapperStr::DateTimeString(nullptr, text));
  EXPECT_EQ(text, "");
}

TEST(Dates, WildFieldsAreFolded) {
  std::tm time{};
  time.tm_year = INT_MAX;
  time.tm_mon = INT_MAX;
  time.tm_wday = -3;
  time.tm_mday = 32;
  time.tm_hour = 24;
  time.tm_min = 60;
  time.tm_sec = 61;
  std::string text;
  EXPECT_TRUE(DateTimeWrapperStr::DateTimeString(&time, text));
  EXPECT_EQ(text,
            "2147485547-" + std::to_string((INT_MAX + 1LL) % 13 + 100).substr(1) + "-00 00:00:01");
  EXPECT_TRUE(DateTimeWrapperStr::UnixStdFormat(&time, text));
  EXPECT_EQ(text.substr(0, 7), "??? ???");
}

TEST(Dates, SundayIsSevenNotZero) {
  std::tm time = SampleTime();
  std::string text;
  const Texts expected{"",       "Monday",   "Tuesday", "Wednesday", "Thursday",
                       "Friday", "Saturday", "Sunday",  ""};
  for (int day = 0; day < 9; ++day) {
    time.tm_wday = day;
    EXPECT_TRUE(DateTimeWrapperStr::WeekDayString(&time, text));
    EXPECT_EQ(text, expected[static_cast<std::size_t>(day)]);
  }
}

TEST(Dates, FormatsOfAnyLength) {
  const std::tm time = SampleTime();
  std::string text;
  EXPECT_TRUE(DateTimeWrapperStr::FormatString("%H:%M", &time, text));
  EXPECT_EQ(text, "09:05");
  std::string many;
  std::string expected;
  for (int i = 0; i < 5000; ++i) {
    many += "%Y";
    expected += "2015";
  }
  EXPECT_TRUE(DateTimeWrapperStr::FormatString(many.c_str(), &time, text));
  EXPECT_EQ(text, expected);
  EXPECT_FALSE(DateTimeWrapperStr::FormatString("", &time, text));
  EXPECT_FALSE(DateTimeWrapperStr::FormatString("%Y", nullptr, text));
  EXPECT_EQ(text, "");
}

TEST(Dates, ClockAndConversions) {
  std::tm time{};
  EXPECT_TRUE(DateTimeWrapper::GMTime(1425719100, &time));
  std::string text;
  DateTimeWrapperStr::DateTimeString(&time, text);
  EXPECT_EQ(text, "2015-03-07 09:05:00");
  EXPECT_FALSE(DateTimeWrapper::GMTime(0, nullptr));
  EXPECT_FALSE(DateTimeWrapper::LocalTime(LLONG_MAX, &time));

  const std::int64_t before = DateTimeWrapper::CurrentTime();
  EXPECT_GT(before, 1425719100);
  EXPECT_EQ(DateTimeWrapper::SleepUSec(999), 0u);
  EXPECT_EQ(DateTimeWrapper::SleepMSec(1100), 0u);
  EXPECT_GT(DateTimeWrapper::CurrentTime(), before);
}

class Reporter : public ErrorReporting {
 public:
  using ErrorReporting::SetLastError;
};

TEST(Errors, LastMessageIsKeptWholeAndPrinted) {
  Reporter reporter;
  EXPECT_EQ(reporter.LastError(), "");
  Texts printed;
  reporter.SetErrorPrinterHandle(
      [](const char* message, void* data) { static_cast<Texts*>(data)->push_back(message); },
      &printed);
  const std::string big(4095, 'x');
  reporter.SetLastError("%s", big.c_str());
  EXPECT_EQ(reporter.LastError(), big);
  reporter.SetLastError("%s!%s", big.c_str(), big.c_str());
  EXPECT_EQ(reporter.LastError(), big + "!" + big);
  const char* none = nullptr;
  reporter.SetLastError(none, 0);
  EXPECT_EQ(reporter.LastError(), big + "!" + big);
  reporter.SetLastError("%s", "");
  EXPECT_EQ(reporter.LastError(), "");
  EXPECT_EQ(printed, (Texts{big, big + "!" + big}));

  reporter.SetErrorPrinterHandle(nullptr, nullptr);
  reporter.SetLastError("quiet");
  EXPECT_EQ(printed.size(), 2u);
}

TEST(Errors, MessagesUseADecimalPoint) {
  // Any locale will do where the one with decimal commas is not installed.
  if (std::setlocale(LC_ALL, "de_DE.UTF-8") == nullptr) std::setlocale(LC_ALL, "C.UTF-8");
  Reporter reporter;
  reporter.SetLastError("%.1f", 1.5);
  EXPECT_EQ(reporter.LastError(), "1.5");
  EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "C");
}

}  // namespace
