#include "cli/report.h"

#include <boost/json.hpp>
#include <cstdio>

#include <fmt/format.h>

#include "platform/utf8.h"

namespace varnok {

void Report::result(const boost::json::value& document, std::string_view text) const {
  if (json) {
    std::printf("%s\n", boost::json::serialize(document).c_str());
  } else {
    std::fwrite(text.data(), 1, text.size(), stdout);
  }
  std::fflush(stdout);
}

void Report::notice(std::string_view line) const {
  if (!quiet) std::fprintf(stderr, "%s\n", shown(line).c_str());
}

int Report::failure(std::string_view line) const {
  std::fprintf(stderr, "varnokctl: %s\n", shown(line).c_str());
  return kFailed;
}

std::string shown(std::string_view text) {
  std::string copy;
  std::string result(validUTF8(text, copy));
  for (std::size_t i = 0; i < result.size(); ++i) {
    const auto byte = static_cast<unsigned char>(result[i]);
    // U+0080 to U+009F, which terminals obey too, are C2 80 to C2 9F.
    const bool high = byte == 0xC2 && static_cast<unsigned char>(result[i + 1]) < 0xA0;
    if (high) result.erase(i + 1, 1);
    if (high || byte < 0x20 || byte == 0x7f) result[i] = ' ';
  }
  return result;
}

std::string utcText(Instant instant) {
  const auto day = std::chrono::floor<std::chrono::days>(instant);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss time(instant - day);
  return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}Z", static_cast<int>(date.year()),
                     static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()), time.hours().count(),
                     time.minutes().count(), time.seconds().count());
}

boost::json::string jsonText(std::string_view text) {
  std::string copy;
  const std::string_view valid = validUTF8(text, copy);
  return boost::json::string(valid.data(), valid.size());
}

}  // namespace varnok
