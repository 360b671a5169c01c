// DateFormatter: instants for people to read, in their language and in the
// device's time zone, and texts read back. Any thread.

#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/value.h"

namespace varnok {

// How much of a date or a time is written. The numbers are the platform's.
enum class DateStyle : int {
  none = 0,
  shortStyle = 1,   // "05.03.24", "14:07"
  mediumStyle = 2,  // "05.03.2024", "14:07:09"
  longStyle = 3,    // "5. März 2024", with the offset from UTC behind the time
  fullStyle = 4,    // "Dienstag, 5. März 2024"
};

// `language` is one of the user's preferred languages ("de", "de-AT", "de_AT").
class DateFormatter {
 public:
  virtual ~DateFormatter() = default;

  // Empty when both styles are none.
  virtual std::string format(Instant instant, DateStyle date, DateStyle time, std::string_view language) const = 0;

  // `pattern` is one of Unicode's, such as "dd MMM yyyy HH:mm".
  virtual std::string formatPattern(Instant instant, std::string_view pattern, std::string_view language) const = 0;

  // Reads the whole of `text` strictly and in no person's language. UTC where
  // `pattern` names no zone. Nothing when the text is another or no such
  // moment exists.
  virtual std::optional<Instant> parse(std::string_view text, std::string_view pattern) const = 0;
};

}  // namespace varnok
