// A Clock that moves when told, in a time zone at a fixed offset from UTC.

#pragma once

#include <chrono>

#include "platform/clock.h"

namespace varnok {

class FakeClock : public Clock {
 public:
  double seconds = 1709647629.0;  // 2024-03-05 14:07:09 UTC.
  std::chrono::seconds offset{0};

  double now() const override { return seconds; }

  LocalTime localTime(Instant instant) const override {
    const auto shifted = instant + offset;
    const auto day = std::chrono::floor<std::chrono::days>(shifted);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss time(shifted - day);
    return {static_cast<int>(date.year()),
            static_cast<int>(static_cast<unsigned>(date.month())),
            static_cast<int>(static_cast<unsigned>(date.day())),
            static_cast<int>(time.hours().count()),
            static_cast<int>(time.minutes().count()),
            static_cast<int>(time.seconds().count())};
  }

  Instant instantOf(const LocalTime& local) const override {
    const std::chrono::year_month_day date(std::chrono::year(local.year),
                                           std::chrono::month(static_cast<unsigned>(local.month)),
                                           std::chrono::day(static_cast<unsigned>(local.day)));
    return std::chrono::sys_days(date) + std::chrono::hours(local.hour) + std::chrono::minutes(local.minute) +
           std::chrono::seconds(local.second) - offset;
  }

  std::string timeZone() const override { return "Europe/Vienna"; }
};

}  // namespace varnok
