#include "util/text/DateTimeWrapper.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <thread>
#include <vector>

namespace {

constexpr std::size_t kLongestFormatted = std::size_t{16} << 20;

// "-07", ":05": the mark and the number with a leading zero below 10.
std::string TwoDigits(const char* mark, std::int64_t number) {
  return mark + std::string(number <= 9 ? "0" : "") + std::to_string(number);
}

std::string DateText(const std::tm& time) {
  return std::to_string(std::int64_t{time.tm_year} + 1900) +
         TwoDigits("-", (std::int64_t{time.tm_mon} + 1) % 13) + TwoDigits("-", time.tm_mday % 32);
}

std::string TimeText(const std::tm& time) {
  return TwoDigits("", time.tm_hour % 24) + TwoDigits(":", time.tm_min % 60) +
         TwoDigits(":", time.tm_sec % 60);
}

template <std::size_t N>
const char* NameOf(const std::array<const char*, N>& names, int index) {
  return index >= 0 && static_cast<std::size_t>(index) < N ? names[static_cast<std::size_t>(index)]
                                                           : "???";
}

unsigned SleepFor(std::chrono::milliseconds time) {
  if (time.count() > 0) std::this_thread::sleep_for(time);
  return 0;
}

}  // namespace

std::int64_t DateTimeWrapper::CurrentTime() {
  return static_cast<std::int64_t>(std::time(nullptr));
}

bool DateTimeWrapper::CurrentLocalTime(std::tm* time) {
  return LocalTime(CurrentTime(), time);
}

bool DateTimeWrapper::CurrentGMTime(std::tm* time) {
  return GMTime(CurrentTime(), time);
}

unsigned DateTimeWrapper::SleepSec(unsigned seconds) {
  return SleepFor(std::chrono::seconds(seconds));
}

unsigned DateTimeWrapper::SleepMSec(unsigned milliseconds) {
  return SleepFor(std::chrono::milliseconds(milliseconds));
}

unsigned DateTimeWrapper::SleepUSec(unsigned microseconds) {
  return SleepFor(std::chrono::milliseconds(microseconds / 1000));
}

bool DateTimeWrapperStr::DateString(const std::tm* time, std::string& text) {
  text.clear();
  if (time == nullptr) return false;
  text = DateText(*time);
  return true;
}

bool DateTimeWrapperStr::TimeString(const std::tm* time, std::string& text) {
  text.clear();
  if (time == nullptr) return false;
  text = TimeText(*time);
  return true;
}

bool DateTimeWrapperStr::DateTimeString(const std::tm* time, std::string& text) {
  text.clear();
  if (time == nullptr) return false;
  text = DateText(*time) + " " + TimeText(*time);
  return true;
}

bool DateTimeWrapperStr::WeekDayString(const std::tm* time, std::string& text) {
  static constexpr std::array<const char*, 7> kDays = {
      "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday", "Sunday"};
  text.clear();
  if (time == nullptr) return false;
  if (time->tm_wday >= 1 && time->tm_wday <= 7) {
    text = kDays[static_cast<std::size_t>(time->tm_wday - 1)];
  }
  return true;
}

// Written out here because the libraries differ in padding the day, and one of them ends the
// program on fields out of range.
bool DateTimeWrapperStr::UnixStdFormat(const std::tm* time, std::string& text) {
  static constexpr std::array<const char*, 7> kDays = {"Sun", "Mon", "Tue", "Wed",
                                                       "Thu", "Fri", "Sat"};
  static constexpr std::array<const char*, 12> kMonths = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                          "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  text.clear();
  if (time == nullptr) return false;
  char buffer[1024];
  std::snprintf(buffer, sizeof(buffer), "%.3s %.3s%3d %.2d:%.2d:%.2d %lld\n",
                NameOf(kDays, time->tm_wday), NameOf(kMonths, time->tm_mon), time->tm_mday,
                time->tm_hour, time->tm_min, time->tm_sec,
                static_cast<long long>(time->tm_year) + 1900);
  text = buffer;
  return true;
}

bool DateTimeWrapperStr::FormatString(const char* format, const std::tm* time, std::string& text) {
  text.clear();
  if (time == nullptr || format == nullptr || *format == '\0') return false;
  // strftime returns 0 both for an empty text and for a buffer that is too small; with a character
  // more the text is never empty.
  const std::string marked = std::string(format) + "|";
  for (std::size_t size = marked.size() + 256; size <= kLongestFormatted; size *= 2) {
    std::vector<char> buffer(size);
    const std::size_t length = std::strftime(buffer.data(), size, marked.c_str(), time);
    if (length == 0) continue;
    text.assign(buffer.data(), length - 1);
    return !text.empty();
  }
  return false;
}
