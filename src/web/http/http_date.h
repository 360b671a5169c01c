// Dates as HTTP writes them: "Sun, 06 Nov 1994 08:49:37 GMT".

#pragma once

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "platform/clock.h"

namespace varnok {

// `seconds` since 1970-01-01 00:00 UTC; the year has four digits.
std::string httpDate(std::int64_t seconds);

// Nothing for any other form.
std::optional<std::int64_t> parseHTTPDate(std::string_view text);

// The present date, written anew once a second. Any thread.
class HTTPDateNow {
 public:
  explicit HTTPDateNow(const Clock& clock) : clock_(clock) {}

  void appendTo(std::string& text);

 private:
  const Clock& clock_;
  std::mutex mutex_;
  std::int64_t second_ = -1;
  std::string text_;
};

}  // namespace varnok
