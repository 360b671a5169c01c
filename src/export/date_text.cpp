#include "export/date_text.h"

#include <chrono>

#include <fmt/compile.h>

namespace varnok {

std::string localDateText(Instant instant, const Clock& clock) {
  const LocalTime local = clock.localTime(instant);
  return fmt::format(FMT_COMPILE("{:04}-{:02}-{:02}"), local.year, local.month, local.day);
}

std::string instantText(Instant instant) {
  const auto day = std::chrono::floor<std::chrono::days>(instant);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss time(instant - day);
  return fmt::format(FMT_COMPILE("{:04}-{:02}-{:02} {:02}:{:02}:{:02} +0000"), static_cast<int>(date.year()),
                     static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()), time.hours().count(),
                     time.minutes().count(), time.seconds().count());
}

}  // namespace varnok
