// Dates, times and sleeping. Static operations; any thread. The family is whole as others know it;
// the program itself uses local times, one form of their text, and sleeping for milliseconds.
#ifndef KR_UTIL_TEXT_DATETIMEWRAPPER_H
#define KR_UTIL_TEXT_DATETIMEWRAPPER_H

#include <cstdint>
#include <ctime>
#include <string>

#include "util/text/ErrorRecord.h"

class DateTimeWrapper : public ErrorReporting {
 public:
  // Seconds since 1970.
  static std::int64_t CurrentTime();

  static bool CurrentLocalTime(std::tm* time);
  static bool CurrentGMTime(std::tm* time);
  static bool LocalTime(std::int64_t seconds, std::tm* time);
  static bool GMTime(std::int64_t seconds, std::tm* time);

  // Return 0 after sleeping. Microseconds are rounded down to whole milliseconds.
  static unsigned SleepSec(unsigned seconds);
  static unsigned SleepMSec(unsigned milliseconds);
  static unsigned SleepUSec(unsigned microseconds);
};

// A null time gives false and an empty text.
class DateTimeWrapperStr : public DateTimeWrapper {
 public:
  static bool DateString(const std::tm* time, std::string& text);      // 2015-03-07
  static bool TimeString(const std::tm* time, std::string& text);      // 09:05:00
  static bool DateTimeString(const std::tm* time, std::string& text);  // 2015-03-07 09:05:00

  // Weekdays 1 to 7 are "Monday" to "Sunday"; any other value, the library's 0 too, is empty.
  static bool WeekDayString(const std::tm* time, std::string& text);

  // asctime's text, with its line feed.
  static bool UnixStdFormat(const std::tm* time, std::string& text);

  // strftime of any length. False when the format gives an empty text.
  static bool FormatString(const char* format, const std::tm* time, std::string& text);
};

#endif
