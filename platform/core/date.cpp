#include "platform/core/date.h"

#include <chrono>
#include <cmath>
#include <ctime>

namespace orvelin {

using namespace std::chrono;

namespace {

constexpr double secondsPerDay = 86400;
constexpr sys_days origin = year{1904} / January / 1;

double secondsTo(year_month_day day) {
  return static_cast<double>((sys_days{day} - origin).count()) * secondsPerDay;
}

}  // namespace

Date::Date() : totalSeconds_(secondsTo(year{1970} / January / 1)) {}

Date Date::ofInstant(std::int64_t unixSeconds) {
  Date date;
  const std::time_t instant = unixSeconds;
  std::tm local{};
  // std::chrono's years end at ±32767; some file systems have later times.
  if (!localtime_r(&instant, &local) || std::abs(local.tm_year) > 30000) return date;
  const auto day = year{local.tm_year + 1900} / (local.tm_mon + 1) / local.tm_mday;
  date.totalSeconds_ = secondsTo(day) + local.tm_hour * 3600 + local.tm_min * 60 + local.tm_sec;
  return date;
}

int Date::Year() const {
  const auto day = origin + days{static_cast<int>(std::floor(totalSeconds_ / secondsPerDay))};
  return static_cast<int>(year_month_day{day}.year());
}

void Date::Year(int newYear) {
  const double wholeDays = std::floor(totalSeconds_ / secondsPerDay);
  const double timeOfDay = totalSeconds_ - wholeDays * secondsPerDay;
  const year_month_day day{origin + days{static_cast<int>(wholeDays)}};
  // A day past the end of its month is one of the next month: 29 February becomes 1 March.
  totalSeconds_ = secondsTo(year{newYear} / day.month() / day.day()) + timeOfDay;
}

}  // namespace orvelin
