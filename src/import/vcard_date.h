// The dates of vCards, in the many forms in which they are written.
//
//   date := yyyy-MM-dd | yyyyMMdd | --MM-dd | --MMdd
//   time := HH:mm[:ss] | HHmm[ss], a fraction of a second is dropped
//   zone := Z | UTC | GMT | (+|-)HH[[:]mm]
//   all  := date [(T | blanks) time [blanks] [zone]]
//
// What follows a date and is no time is not looked at.

#pragma once

#include <optional>
#include <string_view>

#include "platform/clock.h"

namespace varnok {

// Stands for the year of a day that was given without one; a leap year.
inline constexpr int kNoYear = 1604;

enum class VCardDateMeaning {
  instant,  // A moment; a day alone is its noon.
  day,      // A day: midnight without an offset from UTC is how some writers say just that.
};

// A day alone becomes noon in the device's time zone, so that it reads as the
// same day in the zones nearby. A time without a zone is the device's. Nothing
// when there is no such date.
std::optional<Instant> parseVCardDate(std::string_view text, VCardDateMeaning meaning, const Clock& clock);

}  // namespace varnok
