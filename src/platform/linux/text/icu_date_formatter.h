// IcuDateFormatter: DateFormatter over ICU and the texts that come with it.
//
// Lifetime. `clock` outlives it; the time zone is asked there each time, and
// zones are written as offsets from UTC ("GMT+1").

#pragma once

#include "platform/clock.h"
#include "platform/date_formatter.h"

namespace varnok {

class IcuDateFormatter final : public DateFormatter {
 public:
  explicit IcuDateFormatter(const Clock& clock) : clock_(clock) {}

  std::string format(Instant instant, DateStyle date, DateStyle time, std::string_view language) const override;
  std::string formatPattern(Instant instant, std::string_view pattern, std::string_view language) const override;
  std::optional<Instant> parse(std::string_view text, std::string_view pattern) const override;

 private:
  const Clock& clock_;
};

}  // namespace varnok
