#include "import/vcard_date.h"

#include <charconv>

#include "import/vcard_line.h"

namespace varnok {
namespace {

// Takes pieces off the front of a text. A piece that is not there takes nothing.
class Scanner {
 public:
  explicit Scanner(std::string_view text) : rest_(text) {}

  bool atEnd() const { return rest_.empty(); }
  bool atDigit() const { return !rest_.empty() && rest_.front() >= '0' && rest_.front() <= '9'; }

  bool take(std::string_view text) {
    if (!startsIgnoringCase(rest_, text)) return false;
    rest_.remove_prefix(text.size());
    return true;
  }

  // Exactly `count` digits.
  std::optional<int> number(std::size_t count) {
    if (rest_.size() < count || rest_.substr(0, count).find_first_not_of("0123456789") != std::string_view::npos) {
      return std::nullopt;
    }
    int value = 0;
    std::from_chars(rest_.data(), rest_.data() + count, value);
    rest_.remove_prefix(count);
    return value;
  }

  void skipDigits() {
    while (atDigit())
      rest_.remove_prefix(1);
  }

  bool skipBlanks() {
    const std::size_t before = rest_.size();
    rest_ = trimmedBlanks(rest_);
    return rest_.size() != before;
  }

 private:
  std::string_view rest_;
};

struct Moment {
  LocalTime local;
  bool hasTime = false;
  std::optional<std::chrono::seconds> offset;  // From UTC; absent without a zone.
};

bool scanDay(Scanner& scanner, LocalTime& local) {
  const bool hasYear = !scanner.take("--");
  const std::optional<int> year = hasYear ? scanner.number(4) : kNoYear;
  const bool dashed = hasYear && scanner.take("-");
  const std::optional<int> month = scanner.number(2);
  const bool dashedDay = scanner.take("-");
  const std::optional<int> day = scanner.number(2);
  if (!year || !month || !day || (hasYear && dashed != dashedDay) || scanner.atDigit()) return false;
  local.year = *year;
  local.month = *month;
  local.day = *day;
  return std::chrono::year_month_day(std::chrono::year(*year), std::chrono::month(static_cast<unsigned>(*month)),
                                     std::chrono::day(static_cast<unsigned>(*day)))
      .ok();
}

std::optional<std::chrono::seconds> scanZone(Scanner& scanner) {
  using namespace std::chrono_literals;
  const bool named = scanner.take("Z") || scanner.take("UTC") || scanner.take("GMT");
  const bool negative = scanner.take("-");
  if (!negative && !scanner.take("+")) return named ? std::optional(0s) : std::nullopt;
  const std::optional<int> hours = scanner.number(2);
  scanner.take(":");
  const std::chrono::seconds offset =
      std::chrono::hours(hours.value_or(0)) + std::chrono::minutes(scanner.number(2).value_or(0));
  return negative ? -offset : offset;
}

// False, and `moment` as it was, when there is no time.
bool scanTime(Scanner& scanner, Moment& moment) {
  if (!scanner.take("T") && !scanner.skipBlanks()) return false;
  const std::optional<int> hour = scanner.number(2);
  scanner.take(":");
  const std::optional<int> minute = scanner.number(2);
  if (!hour || !minute || *hour > 23 || *minute > 59) return false;
  scanner.take(":");
  const int second = scanner.number(2).value_or(0);
  if (scanner.take(".") || scanner.take(",")) scanner.skipDigits();
  scanner.skipBlanks();
  moment.hasTime = true;
  moment.local.hour = *hour;
  moment.local.minute = *minute;
  moment.local.second = second > 59 ? 59 : second;
  moment.offset = scanZone(scanner);
  return true;
}

Instant instantInUTC(const LocalTime& local) {
  const std::chrono::year_month_day day(std::chrono::year(local.year),
                                        std::chrono::month(static_cast<unsigned>(local.month)),
                                        std::chrono::day(static_cast<unsigned>(local.day)));
  return std::chrono::sys_days(day) + std::chrono::hours(local.hour) + std::chrono::minutes(local.minute) +
         std::chrono::seconds(local.second);
}

bool isMidnightWithoutOffset(const Moment& moment) {
  return moment.local.hour == 0 && moment.local.minute == 0 && moment.local.second == 0 &&
         moment.offset.value_or(std::chrono::seconds(0)).count() == 0;
}

}  // namespace

std::optional<Instant> parseVCardDate(std::string_view text, VCardDateMeaning meaning, const Clock& clock) {
  Scanner scanner(trimmedBlanks(text));
  Moment moment;
  if (!scanDay(scanner, moment.local)) return std::nullopt;
  const bool hasTime = scanTime(scanner, moment);
  if (!hasTime || (meaning == VCardDateMeaning::day && isMidnightWithoutOffset(moment))) {
    moment.local.hour = 12;
    return clock.instantOf(moment.local);
  }
  return moment.offset ? instantInUTC(moment.local) - *moment.offset : clock.instantOf(moment.local);
}

}  // namespace varnok
