// Clock: the time, and the device's time zone. Any thread.

#pragma once

#include <chrono>
#include <string>

#include "platform/value.h"

namespace varnok {

// A wall-clock reading in the device's time zone. Month and day count from 1.
struct LocalTime {
  int year = 1970;
  int month = 1;
  int day = 1;
  int hour = 0;
  int minute = 0;
  int second = 0;

  bool operator==(const LocalTime&) const = default;
};

class Clock {
 public:
  virtual ~Clock() = default;

  // Seconds since 1970-01-01 00:00 UTC, with their fraction.
  virtual double now() const = 0;

  // Follows a change of the device's time zone while the program runs.
  virtual LocalTime localTime(Instant instant) const = 0;

  // The instant of a wall-clock reading. A reading that a change of the clocks
  // skipped or repeated gives one of the instants beside it.
  virtual Instant instantOf(const LocalTime& local) const = 0;

  // The name of the device's time zone, such as "Europe/Vienna"; "UTC" when the
  // system does not say.
  virtual std::string timeZone() const = 0;
};

}  // namespace varnok
