#include "util/text/DateTimeWrapper.h"

bool DateTimeWrapper::LocalTime(std::int64_t seconds, std::tm* time) {
  const __time64_t value = seconds;
  return time != nullptr && _localtime64_s(time, &value) == 0;
}

bool DateTimeWrapper::GMTime(std::int64_t seconds, std::tm* time) {
  const __time64_t value = seconds;
  return time != nullptr && _gmtime64_s(time, &value) == 0;
}
