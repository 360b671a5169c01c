#pragma once

#include <atomic>
#include <cstdint>

#include "platform/clock.h"

namespace varnok {

// The system's clock and zone rules. A change of the TZ variable is seen at
// once, one of the system's zone file within a second. An instant whose year an
// int cannot hold reads as the start of 1970.
class PosixClock : public Clock {
 public:
  double now() const override;
  LocalTime localTime(Instant instant) const override;
  Instant instantOf(const LocalTime& local) const override;
  std::string timeZone() const override;

 private:
  void followZone() const;

  mutable std::atomic<std::int64_t> lookedAt_ = -1;  // Seconds of the monotonic clock.
};

}  // namespace varnok
