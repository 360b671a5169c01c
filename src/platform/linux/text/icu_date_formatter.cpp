#include "platform/linux/text/icu_date_formatter.h"

#include <unicode/datefmt.h>
#include <unicode/locid.h>
#include <unicode/parsepos.h>
#include <unicode/simpletz.h>
#include <unicode/smpdtfmt.h>
#include <unicode/unistr.h>

#include <cmath>
#include <memory>

namespace varnok {
namespace {

constexpr double kMillisecond = 1000.0;  // ICU's unit, in a second.

// Made for each text: an ICU formatter must not be shared between threads, and
// dates are written by the screenful.
using Formatter = std::unique_ptr<icu::DateFormat>;

icu::UnicodeString unicode(std::string_view text) {
  return icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
}

icu::Locale localeOf(const std::string& name) {
  return icu::Locale::createFromName(name.c_str());
}

icu::DateFormat::EStyle styleOf(DateStyle style) {
  switch (style) {
    case DateStyle::none: return icu::DateFormat::kNone;
    case DateStyle::shortStyle: return icu::DateFormat::kShort;
    case DateStyle::mediumStyle: return icu::DateFormat::kMedium;
    case DateStyle::longStyle: return icu::DateFormat::kLong;
    case DateStyle::fullStyle: return icu::DateFormat::kFull;
  }
  return icu::DateFormat::kNone;
}

// Null when ICU does not take the pattern.
Formatter patternFormatter(std::string_view pattern, const icu::Locale& locale) {
  UErrorCode error = U_ZERO_ERROR;
  auto formatter = std::make_unique<icu::SimpleDateFormat>(unicode(pattern), locale, error);
  return U_FAILURE(error) ? nullptr : std::move(formatter);
}

std::chrono::milliseconds offsetFromUTC(Instant instant, const Clock& clock) {
  const LocalTime local = clock.localTime(instant);
  const std::chrono::year_month_day date(std::chrono::year(local.year),
                                         std::chrono::month(static_cast<unsigned>(local.month)),
                                         std::chrono::day(static_cast<unsigned>(local.day)));
  const Instant asUTC = std::chrono::sys_days(date) + std::chrono::hours(local.hour) +
                        std::chrono::minutes(local.minute) + std::chrono::seconds(local.second);
  return asUTC - instant;
}

std::string formatted(const Formatter& formatter, Instant instant, const Clock& clock) {
  if (formatter == nullptr) return {};
  const auto offset = static_cast<int32_t>(offsetFromUTC(instant, clock).count());
  formatter->setTimeZone(icu::SimpleTimeZone(offset, icu::UnicodeString()));
  icu::UnicodeString text;
  formatter->format(static_cast<UDate>(instant.time_since_epoch().count()) * kMillisecond, text);
  std::string result;
  return text.toUTF8String(result);
}

}  // namespace

IcuDateFormatter::IcuDateFormatter(const Clock& clock, const std::string& locale)
    : clock_(clock), region_(localeOf(locale.empty() ? "root" : locale).getCountry()) {}

// A language that is not written in that region is taken as it is: ICU finds no
// such locale and goes back to the language.
std::string IcuDateFormatter::localeFor(std::string_view language) const {
  const icu::Locale locale = localeOf(std::string(language));
  if (region_.empty() || *locale.getCountry() != '\0' || *locale.getLanguage() == '\0') return std::string(language);
  return std::string(locale.getBaseName()) + "_" + region_;
}

std::string IcuDateFormatter::format(Instant instant, DateStyle date, DateStyle time, std::string_view language) const {
  if (date == DateStyle::none && time == DateStyle::none) return {};
  const Formatter formatter(
      icu::DateFormat::createDateTimeInstance(styleOf(date), styleOf(time), localeOf(localeFor(language))));
  return formatted(formatter, instant, clock_);
}

std::string IcuDateFormatter::formatPattern(Instant instant, std::string_view pattern,
                                            std::string_view language) const {
  return formatted(patternFormatter(pattern, localeOf(localeFor(language))), instant, clock_);
}

std::optional<Instant> IcuDateFormatter::parse(std::string_view text, std::string_view pattern) const {
  // Of no language: others read and write digits of their own.
  const Formatter formatter = patternFormatter(pattern, icu::Locale("en_US_POSIX"));
  if (formatter == nullptr) return std::nullopt;
  formatter->setLenient(false);
  formatter->setTimeZone(*icu::TimeZone::getGMT());
  const icu::UnicodeString given = unicode(text);
  icu::ParsePosition position(0);
  const UDate milliseconds = formatter->parse(given, position);
  if (position.getErrorIndex() >= 0 || position.getIndex() != given.length()) return std::nullopt;
  return Instant(std::chrono::seconds(std::llround(std::floor(milliseconds / kMillisecond))));
}

}  // namespace varnok
