#include "ui/window/LeftText.h"

#include <ctime>
#include <sstream>

#include "util/text/DateTimeWrapper.h"

namespace {

// The day of the week within the last six days, else the date.
std::string Moment(std::int64_t seconds, const TextTable& texts) {
  constexpr std::int64_t kDays = 6 * 24 * 3600;
  std::tm time{};
  std::string text;
  if (!DateTimeWrapper::LocalTime(seconds, &time)) return text;
  DateTimeWrapperStr::DateTimeString(&time, text);
  text = text.substr(0, text.rfind(':'));
  const std::int64_t age = DateTimeWrapper::CurrentTime() - seconds;
  if (age < 0 || age > kDays) return text;
  std::istringstream days(texts.Get("ui_weekdays"));
  std::string day;
  for (int i = 0; i <= time.tm_wday; ++i) days >> day;
  return day + text.substr(text.find(' '));
}

}  // namespace

std::string LeftText(const LeftBehind& left, const TextTable& texts) {
  std::string list;
  const auto add = [&](int count, const char* one, const char* many) {
    if (count == 0) return;
    list += (list.empty() ? "" : texts.Get("ui_left_and")) +
            texts.Format(count == 1 ? one : many, std::to_string(count));
  };
  add(left.queued, "ui_left_queued", "ui_left_queued");
  add(left.wereRunning, "ui_left_was_running", "ui_left_were_running");
  add(left.stillRun, "ui_left_still_runs", "ui_left_still_run");
  add(left.ended, "ui_left_ended", "ui_left_ended");
  return texts.Format(left.Jobs() == 1 ? "ui_left_job" : "ui_left_jobs",
                      std::to_string(left.Jobs()), Moment(left.last, texts), list);
}
