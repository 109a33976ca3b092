#include "ui/text/ShownValues.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <ctime>

#include "ui/text/Encoding.h"
#include "util/files/FileDirWrapper.h"
#include "util/text/DateTimeWrapper.h"

namespace {

constexpr double kMinute = 60, kHour = 3600, kDay = 86400;

std::string Whole(double number) {
  return std::to_string(static_cast<std::int64_t>(number));
}

}  // namespace

std::string ShownName(const std::string& path) {
  return ToUi(FileDirWrapper::NameOf(path));
}

std::string ShownJob(const std::string& jobFile, const std::string& restartFile) {
  if (restartFile.empty()) return ShownName(jobFile);
  const std::string restart = "R=" + ShownName(restartFile);
  return jobFile.empty() ? restart : ShownName(jobFile) + " (" + restart + ")";
}

std::string ShownPath(const std::string& jobFile, const std::string& restartFile,
                      const TextTable& texts) {
  std::string path = ToUi(jobFile);
  if (restartFile.empty()) return path;
  if (!path.empty()) path += '\n';
  return path + texts.Format("ui_tip_restart", ToUi(restartFile));
}

std::string ShownDuration(double seconds, const TextTable& texts, double spread) {
  constexpr std::array kSteps = {5.0,         10.0,         30.0,         kMinute, 2 * kMinute,
                                 5 * kMinute, 10 * kMinute, 30 * kMinute, kHour,   2 * kHour,
                                 6 * kHour,   12 * kHour,   kDay};
  const double least = seconds < 2 * kMinute ? 1 : seconds < kDay ? kMinute : kHour;
  double step = least;
  for (const double one : kSteps) {
    if (one > least && one <= seconds * (spread - 1)) step = one;
  }
  const double rounded = std::max(std::round(seconds / step), 1.0) * step;
  const auto part = [&](const char* key, double unit, double within) {
    const double value = std::floor(std::fmod(rounded, within) / unit);
    return value > 0 ? texts.Format(key, Whole(value)) : std::string();
  };
  std::string words;
  std::string rest;
  if (rounded >= kDay) {
    words = part("run_d", kDay, 1e9);
    rest = part("run_h", kHour, kDay);
  } else if (rounded >= kHour) {
    words = part("run_h", kHour, kDay);
    rest = part("run_min", kMinute, kHour);
  } else if (rounded >= kMinute) {
    words = part("run_min", kMinute, kHour);
    rest = part("run_s", 1, kMinute);
  } else {
    words = texts.Format("run_s", Whole(seconds < 1 ? 0 : rounded));
  }
  if (!rest.empty()) words += " " + rest;
  return step > least ? texts.Format("run_about", words) : words;
}

std::string ShownMinute(std::int64_t moment) {
  std::tm time{};
  std::string text;
  if (!DateTimeWrapper::LocalTime(moment, &time)) return text;
  DateTimeWrapperStr::DateTimeString(&time, text);
  return text.substr(0, text.rfind(':'));
}

std::string ShownMoment(std::int64_t moment, const TextTable& texts) {
  const std::int64_t now = DateTimeWrapper::CurrentTime();
  std::tm then{};
  std::tm today{};
  if (!DateTimeWrapper::LocalTime(moment, &then) || !DateTimeWrapper::LocalTime(now, &today)) {
    return {};
  }
  const std::string text = ShownMinute(moment);
  const std::string clock = text.substr(text.find(' ') + 1);
  if (then.tm_year == today.tm_year && then.tm_yday == today.tm_yday) return clock;
  if (std::abs(static_cast<double>(moment - now)) >= 6 * kDay) return text;
  return texts.Get("run_day" + std::to_string(then.tm_wday)) + " " + clock;
}
