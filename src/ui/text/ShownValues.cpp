#include "ui/text/ShownValues.h"

#include <ctime>
#include <sstream>

#include "ui/text/Encoding.h"
#include "util/files/FileDirWrapper.h"
#include "util/text/DateTimeWrapper.h"

std::string ShownName(const std::string& path) {
  std::string name;
  FileDirWrapper::FileNameOf(path, name, true);
  return ToUi(name);
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

std::string ShownDuration(std::int64_t seconds, const TextTable& texts) {
  const std::int64_t minutes = seconds / 60;
  if (minutes == 0) return texts.Format("ui_time_seconds", std::to_string(seconds));
  if (minutes < 60) return texts.Format("ui_time_minutes", std::to_string(minutes));
  return texts.Format("ui_time_hours", std::to_string(minutes / 60), std::to_string(minutes % 60));
}

std::string ShownMinute(std::int64_t moment) {
  std::tm time{};
  std::string text;
  if (!DateTimeWrapper::LocalTime(moment, &time)) return text;
  DateTimeWrapperStr::DateTimeString(&time, text);
  return text.substr(0, text.rfind(':'));
}

std::string ShownMoment(std::int64_t moment, const TextTable& texts) {
  constexpr std::int64_t kDays = 6 * 24 * 3600;
  std::tm time{};
  const std::string text = ShownMinute(moment);
  const std::int64_t age = DateTimeWrapper::CurrentTime() - moment;
  if (age < 0 || age > kDays || !DateTimeWrapper::LocalTime(moment, &time)) return text;
  std::istringstream days(texts.Get("ui_weekdays"));
  std::string day;
  for (int i = 0; i <= time.tm_wday; ++i) days >> day;
  return day + text.substr(text.find(' '));
}
