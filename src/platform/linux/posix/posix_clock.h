#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>

#include "platform/clock.h"

namespace varnok {

// The system's clock and zone rules. A change of the TZ variable is seen at
// once, one of the zone file that it names or of the system's within a second.
// An instant whose year an int cannot hold reads as the start of 1970.
class PosixClock : public Clock {
 public:
  double now() const override;
  LocalTime localTime(Instant instant) const override;
  Instant instantOf(const LocalTime& local) const override;
  std::string timeZone() const override;

 private:
  void followZone() const;
  void followZoneFile(const char* variable) const;

  mutable std::atomic<std::int64_t> lookedAt_ = -1;  // Seconds of the monotonic clock.
  mutable std::mutex zoneFile_;
  mutable std::string seenFile_;  // What told the zone file of TZ from its earlier self. Under zoneFile_.
};

}  // namespace varnok
