#pragma once

#include <string>

#include "platform/clock.h"

namespace varnok {

// "2024-03-05", in the device's time zone.
std::string localDateText(Instant instant, const Clock& clock);

// The default text form of an instant: "2024-03-05 13:07:09 +0000".
std::string instantText(Instant instant);

}  // namespace varnok
