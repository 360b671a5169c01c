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
  // `locale` is the one that the user has chosen for times, such as
  // "de_AT.UTF-8"; empty for none. Its region stands where a language comes
  // without one, so that "en" in Austria has days before months and hours up to
  // 24.
  explicit IcuDateFormatter(const Clock& clock, const std::string& locale = "");

  std::string format(Instant instant, DateStyle date, DateStyle time, std::string_view language) const override;
  std::string formatPattern(Instant instant, std::string_view pattern, std::string_view language) const override;
  std::optional<Instant> parse(std::string_view text, std::string_view pattern) const override;

 private:
  std::string localeFor(std::string_view language) const;

  const Clock& clock_;
  std::string region_;  // "AT", or empty.
};

}  // namespace varnok
