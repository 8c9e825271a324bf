#pragma once

#include <cstdint>

namespace orvelin {

/// A calendar reading in local wall-clock time, without time zone. Made without an argument it
/// reads 1970-01-01 00:00:00.
class Date {
 public:
  Date();
  /// The local reading of an instant given in seconds since 1970-01-01 00:00:00 UTC; the default
  /// reading where the calendar has none for it.
  static Date ofInstant(std::int64_t unixSeconds);

  int Year() const;
  /// Changes the year alone; 29 February becomes 1 March where the new year has none.
  void Year(int year);

  /// Seconds from 1904-01-01 00:00:00 to the reading, counted on the calendar.
  double TotalSeconds() const { return totalSeconds_; }
  void TotalSeconds(double seconds) { totalSeconds_ = seconds; }

 private:
  double totalSeconds_;
};

}  // namespace orvelin
