#pragma once

#include <cstdint>

namespace orvelin {

/// A date and time of day in local time, without a time zone.
class Date {
 public:
  /// 1970-01-01 00:00:00.
  Date();
  /// The local time at an instant in seconds since 1970-01-01 00:00:00 UTC; the default date if the
  /// instant is out of the calendar's range.
  static Date ofInstant(std::int64_t unixSeconds);

  int Year() const;
  /// Sets the year and keeps month, day and time. 29 February becomes 1 March if the new year is no
  /// leap year.
  void Year(int year);

  /// Seconds since 1904-01-01 00:00:00, counted as if each day had 24 hours.
  double TotalSeconds() const { return totalSeconds_; }
  void TotalSeconds(double seconds) { totalSeconds_ = seconds; }

 private:
  double totalSeconds_;
};

}  // namespace orvelin
