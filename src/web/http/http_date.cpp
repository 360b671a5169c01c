#include "web/http/http_date.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>

namespace varnok {
namespace {

constexpr std::array<std::string_view, 7> kDays{"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
constexpr std::array<std::string_view, 12> kMonths{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                   "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

// Where the parts stand in the text; the rest is as in this pattern.
constexpr std::string_view kPattern = "ddd, 00 mmm 0000 00:00:00 GMT";

void putNumber(std::string& text, std::size_t at, std::size_t digits, unsigned number) {
  for (; digits > 0; number /= 10)
    text[at + --digits] = static_cast<char>('0' + number % 10);
}

std::optional<int> numberAt(std::string_view text, std::size_t at, std::size_t digits) {
  int number = 0;
  const char* const begin = text.data() + at;
  const auto [end, error] = std::from_chars(begin, begin + digits, number);
  if (error != std::errc() || end != begin + digits || number < 0) return std::nullopt;
  return number;
}

}  // namespace

std::string httpDate(std::int64_t seconds) {
  const std::chrono::sys_seconds time{std::chrono::seconds(seconds)};
  const auto day = std::chrono::floor<std::chrono::days>(time);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss clock(time - day);
  std::string text(kPattern);
  text.replace(0, 3, kDays[std::chrono::weekday(day).c_encoding()]);
  putNumber(text, 5, 2, static_cast<unsigned>(date.day()));
  text.replace(8, 3, kMonths[static_cast<unsigned>(date.month()) - 1]);
  putNumber(text, 12, 4, static_cast<unsigned>(static_cast<int>(date.year())));
  putNumber(text, 17, 2, static_cast<unsigned>(clock.hours().count()));
  putNumber(text, 20, 2, static_cast<unsigned>(clock.minutes().count()));
  putNumber(text, 23, 2, static_cast<unsigned>(clock.seconds().count()));
  return text;
}

std::optional<std::int64_t> parseHTTPDate(std::string_view text) {
  if (text.size() != kPattern.size()) return std::nullopt;
  const auto month = std::ranges::find(kMonths, text.substr(8, 3));
  const auto day = numberAt(text, 5, 2);
  const auto year = numberAt(text, 12, 4);
  const auto hour = numberAt(text, 17, 2);
  const auto minute = numberAt(text, 20, 2);
  const auto second = numberAt(text, 23, 2);
  if (month == kMonths.end() || !day || !year || !hour || !minute || !second) return std::nullopt;
  const std::chrono::year_month_day date(std::chrono::year(*year),
                                         std::chrono::month(static_cast<unsigned>(month - kMonths.begin()) + 1),
                                         std::chrono::day(static_cast<unsigned>(*day)));
  if (!date.ok()) return std::nullopt;
  const auto time = std::chrono::sys_days(date) + std::chrono::hours(*hour) + std::chrono::minutes(*minute) +
                    std::chrono::seconds(*second);
  const std::int64_t seconds = std::chrono::duration_cast<std::chrono::seconds>(time.time_since_epoch()).count();
  // Whatever else the text says has to agree: the day of the week, the commas, the zone.
  if (httpDate(seconds) != text) return std::nullopt;
  return seconds;
}

void HTTPDateNow::appendTo(std::string& text) {
  const auto second = static_cast<std::int64_t>(std::floor(clock_.now()));
  const std::scoped_lock lock(mutex_);
  if (second != second_) {
    second_ = second;
    text_ = httpDate(second);
  }
  text += text_;
}

}  // namespace varnok
