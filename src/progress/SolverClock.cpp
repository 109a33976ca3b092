#include "progress/SolverClock.h"

#include <array>
#include <ctime>

#include "util/text/DateTimeWrapper.h"
#include "util/text/PlainText.h"

namespace {

// `form` has a 9 for each digit and all other characters as they are.
bool HasForm(std::string_view text, std::string_view form) {
  if (text.size() != form.size()) return false;
  for (std::size_t i = 0; i < form.size(); ++i) {
    if (form[i] == '9' ? !IsDigit(text[i]) : text[i] != form[i]) return false;
  }
  return true;
}

int TwoDigits(std::string_view text, std::size_t at) {
  return (text[at] - '0') * 10 + (text[at + 1] - '0');
}

// Days from the first day of 1970.
std::int64_t DaysOf(int year, int month, int day) {
  const int shifted = month <= 2 ? year - 1 : year;  // years begin in March here
  const int inYear = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
  return std::int64_t{shifted} * 365 + shifted / 4 - shifted / 100 + shifted / 400 + inYear -
         719468;
}

std::optional<std::int64_t> Seconds(int year, int month, int day, std::string_view time) {
  const int hour = TwoDigits(time, 0);
  const int minute = TwoDigits(time, 3);
  const int second = TwoDigits(time, 6);
  const bool isDay = month >= 1 && month <= 12 && day >= 1 && day <= 31;
  if (!isDay || hour > 24 || minute > 59 || second > 60) return std::nullopt;
  return DaysOf(year, month, day) * 86400 + hour * 3600 + minute * 60 + second;
}

constexpr std::string_view kDate = "99/99/99";
constexpr std::string_view kTime = "99:99:99";

}  // namespace

std::optional<std::int64_t> ClockSeconds(std::string_view date, std::string_view time) {
  if (!HasForm(date, kDate) || !HasForm(time, kTime)) return std::nullopt;
  return Seconds(2000 + TwoDigits(date, 6), TwoDigits(date, 0), TwoDigits(date, 3), time);
}

std::optional<std::int64_t> ClockAtEnd(std::string_view line, std::string_view& before) {
  line = Trimmed(line);
  if (line.size() < kDate.size() + 1 + kTime.size()) return std::nullopt;
  const std::string_view time = line.substr(line.size() - kTime.size());
  line = Trimmed(line.substr(0, line.size() - kTime.size()));
  if (line.size() < kDate.size()) return std::nullopt;
  const auto clock = ClockSeconds(line.substr(line.size() - kDate.size()), time);
  if (clock) before = Trimmed(line.substr(0, line.size() - kDate.size()));
  return clock;
}

std::optional<std::int64_t> IsoClock(std::string_view text) {
  if (!HasForm(text, "9999-99-99T99:99:99")) return std::nullopt;
  const int year = TwoDigits(text, 0) * 100 + TwoDigits(text, 2);
  return Seconds(year, TwoDigits(text, 5), TwoDigits(text, 8), text.substr(11));
}

std::int64_t LocalClockNow() {
  std::tm now{};
  DateTimeWrapper::CurrentLocalTime(&now);
  return DaysOf(now.tm_year + 1900, now.tm_mon + 1, now.tm_mday) * 86400 + now.tm_hour * 3600 +
         now.tm_min * 60 + now.tm_sec;
}
