// What a command prints: text or one JSON document on stdout, notices and
// errors on stderr.

#pragma once

#include <string>
#include <string_view>

#include <boost/json/value.hpp>

#include "platform/status.h"
#include "platform/value.h"

namespace varnok {

enum ExitCode : int { kDone = 0, kFailed = 1, kWrongUsage = 2, kInterrupted = 130 };

struct Report {
  bool json = false;
  bool quiet = false;

  // The command's result: `document` where JSON was asked for, else `text`,
  // which ends in a line end of its own or is empty.
  void result(const boost::json::value& document, std::string_view text) const;

  void notice(std::string_view line) const;

  // One clear line; answers kFailed.
  int failure(std::string_view line) const;
  int failure(const Status& status) const { return failure(status.message()); }
};

// Text that is shown in a terminal: control characters become blanks, bytes
// that are not UTF-8 U+FFFD.
std::string shown(std::string_view text);

// Text for JSON: well-formed UTF-8, every character kept.
boost::json::string jsonText(std::string_view text);

// "2024-03-05T13:07:09Z".
std::string utcText(Instant instant);

}  // namespace varnok
