#include "platform/linux/text/icu_date_formatter.h"

#include <gtest/gtest.h>

#include "backup/files/vnk_util.h"
#include "platform/testing/fake_clock.h"

namespace varnok {
namespace {

constexpr Instant kInstant{std::chrono::seconds(1709647629)};  // 2024-03-05 14:07:09 UTC.

class Dates : public testing::Test {
 protected:
  FakeClock clock;
  IcuDateFormatter dates{clock};
};

TEST_F(Dates, AreWrittenInTheLanguageAndTheLocalZone) {
  struct Row {
    std::string language;
    DateStyle date;
    DateStyle time;
    std::string text;
  };
  using enum DateStyle;
  clock.offset = std::chrono::hours(10);
  for (const auto& [language, date, time, text] : {
           Row{"en-GB", fullStyle, none, "Wednesday, 6 March 2024"},
           Row{"de", fullStyle, mediumStyle, "Mittwoch, 6. März 2024 um 00:07:09"},
           Row{"de-AT", mediumStyle, none, "06.03.2024"},
           Row{"de_AT.UTF-8", shortStyle, none, "06.03.24"},
           Row{"tr", longStyle, shortStyle, "6 Mart 2024 00:07"},
           Row{"en-GB", none, longStyle, "00:07:09 GMT+10"},
           Row{"he", none, shortStyle, "0:07"},
           Row{"en", none, none, ""},
       })
    EXPECT_EQ(dates.format(kInstant, date, time, language), text) << language;
  EXPECT_EQ(dates.formatPattern(kInstant, "dd MMM yyyy HH:mm", "de"), "06 März 2024 00:07");
  EXPECT_EQ(dates.formatPattern(kInstant, "dd MMM yyyy", "tr-TR"), "06 Mar 2024");
  EXPECT_EQ(dates.formatPattern(kInstant, "not a pattern", "en"), "");
}

// Order, hours and month names are those of the language as it is written where
// the user is.
TEST_F(Dates, TakeTheRegionFromTheLocaleOfTimes) {
  struct Row {
    std::string locale;
    std::string language;
    std::string text;
  };
  for (const auto& [locale, language, text] : {
           Row{"", "en", "Mar 5, 2024, 2:07\u202FPM"},
           Row{"de_AT.UTF-8", "en", "5 Mar 2024, 14:07"},
           Row{"en_US.UTF-8", "en", "Mar 5, 2024, 2:07\u202FPM"},
           Row{"en_US.UTF-8", "en-GB", "5 Mar 2024, 14:07"},  // A language with a region keeps it.
           Row{"en_GB.UTF-8", "de", "05.03.2024, 14:07"},     // Nobody writes German so: it is as everywhere.
           Row{"nonsense", "de", "05.03.2024, 14:07"},
       })
    EXPECT_EQ(IcuDateFormatter(clock, locale).format(kInstant, DateStyle::mediumStyle, DateStyle::shortStyle, language),
              text)
        << locale << ' ' << language;
  EXPECT_EQ(IcuDateFormatter(clock, "de_AT.UTF-8").formatPattern(Instant(), "dd MMM yyyy", "de"), "01 Jän. 1970");
  // A Tuesday, where weeks begin on Sunday and where they begin on Monday.
  EXPECT_EQ(IcuDateFormatter(clock, "en_US.UTF-8").formatPattern(kInstant, "e", "en"), "3");
  EXPECT_EQ(IcuDateFormatter(clock, "de_AT.UTF-8").formatPattern(kInstant, "e", "en"), "2");
}

TEST_F(Dates, AreReadStrictly) {
  const std::optional<Instant> hourBefore = kInstant - std::chrono::hours(1);
  struct Row {
    std::string text;
    std::optional<Instant> instant;
  };
  const Row rows[] = {
      {"2024-03-05 14:07:09 +0000", kInstant},
      {"2024-03-05 14:07:09 -0000", kInstant},
      {"2024-03-05 12:37:09 -0130", kInstant},
      {"2024-03-05 14:07:09 +0100", hourBefore},
      {"2024-03-05 14:07:09 +01:00", hourBefore},
      {"2024-03-05 14:07:09 GMT", kInstant},
      {"2024-03-05 14:07:09 UTC", kInstant},
      {"2024-03-05 14:07:09 GMT+01:00", hourBefore},
      {"1969-12-31 23:59:59 +0000", Instant(std::chrono::seconds(-1))},
      {"2023-02-29 14:07:09 +0000", std::nullopt},
      {"2024-13-05 14:07:09 +0000", std::nullopt},
      {"2024-03-05 24:07:09 +0000", std::nullopt},
      {"2024-03-05 14:60:09 GMT", std::nullopt},
      {"2024-03-05 14:07:09", std::nullopt},
      {"2024-03-05 14:07:09 +0000 ", std::nullopt},
      {"2024-03-05", std::nullopt},
      {"", std::nullopt},
      {"\xFF", std::nullopt},
  };
  for (const Row& row : rows)
    EXPECT_EQ(VNKUtil::stringToDate(row.text, dates), row.instant) << row.text;
}

TEST_F(Dates, InTheCommonFormMeanTheSameByHandAndByPattern) {
  for (const char* text : {"2024-03-05 14:07:09 +0000", "2024-02-29 00:00:00 +1345", "1999-12-31 23:59:59 -1200",
                           "2024-03-05 14:07:09 +2400", "2024-03-05 14:07:60 +0000", "2024-00-05 14:07:09 +0000"})
    EXPECT_EQ(VNKUtil::stringToDate(text, dates), dates.parse(text, "yyyy-MM-dd HH:mm:ss zzz")) << text;
}

TEST_F(Dates, AreFormattedFromTheirTextOrNotAtAll) {
  EXPECT_EQ(VNKUtil::formatDate("2024-03-05 14:07:09 +0000", DateStyle::fullStyle, DateStyle::mediumStyle, dates, "fr"),
            "mardi 5 mars 2024 à 14:07:09");
  EXPECT_EQ(VNKUtil::formatDate("yesterday", DateStyle::fullStyle, DateStyle::mediumStyle, dates, "fr"), std::nullopt);
}

}  // namespace
}  // namespace varnok
