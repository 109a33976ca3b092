#include "util/text/DateTimeWrapper.h"

bool DateTimeWrapper::LocalTime(std::int64_t seconds, std::tm* time) {
  const auto value = static_cast<std::time_t>(seconds);
  return time != nullptr && localtime_r(&value, time) != nullptr;
}

bool DateTimeWrapper::GMTime(std::int64_t seconds, std::tm* time) {
  const auto value = static_cast<std::time_t>(seconds);
  return time != nullptr && gmtime_r(&value, time) != nullptr;
}
