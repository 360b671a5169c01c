#include "platform/linux/desktop/file_notification_scheduler.h"

#include <gtest/gtest.h>

#include "platform/testing/in_memory_file_system.h"

namespace varnok {
namespace {

using std::chrono::days;
using std::chrono::hours;
using std::chrono::seconds;
using std::chrono::sys_days;
using std::chrono::year;
using Repeat = LocalNotification::Repeat;

const std::string kPath = "/data/reminder.json";

Instant at(int y, unsigned month, unsigned day, int hour) {
  return sys_days(year(y) / static_cast<int>(month) / static_cast<int>(day)) + hours(hour);
}

struct ReminderFile : testing::Test {
  InMemoryFileSystem files;
  FileNotificationScheduler scheduler{kPath, files};

  static LocalNotification reminder(Instant fireDate, Repeat repeat, std::string zone = "Europe/Vienna") {
    return {fireDate, repeat, "Zeit für \"Backup\"\n✓", "Backup", std::move(zone), /*defaultSound=*/false};
  }
};

TEST_F(ReminderFile, KeepsAllOfAReminderAndOneOnly) {
  EXPECT_EQ(scheduler.pending(), std::nullopt);
  ASSERT_TRUE(scheduler.scheduleLocalNotification(reminder(at(2024, 1, 1, 9), Repeat::month)).ok());
  const LocalNotification second = reminder(at(2024, 3, 5, 14), Repeat::week);
  ASSERT_TRUE(scheduler.scheduleLocalNotification(second).ok());
  EXPECT_EQ(FileNotificationScheduler(kPath, files).pending(), second);
  ASSERT_TRUE(scheduler.cancelAllLocalNotifications().ok());
  EXPECT_EQ(scheduler.pending(), std::nullopt);
  EXPECT_TRUE(scheduler.cancelAllLocalNotifications().ok());  // Nothing to cancel is no failure.
  EXPECT_TRUE(scheduler.notificationWasShown(at(2030, 1, 1, 0)).ok());
  EXPECT_TRUE(files.files.empty());
}

TEST_F(ReminderFile, FailsWithoutLosingTheEarlierOne) {
  const LocalNotification first = reminder(at(2024, 1, 1, 9), Repeat::month);
  ASSERT_TRUE(scheduler.scheduleLocalNotification(first).ok());
  files.failCommits = true;
  EXPECT_FALSE(scheduler.scheduleLocalNotification(reminder(at(2024, 3, 5, 14), Repeat::week)).ok());
  EXPECT_FALSE(scheduler.notificationWasShown(at(2024, 2, 1, 9)).ok());
  EXPECT_EQ(scheduler.pending(), first);
}

struct NextCase {
  std::string name;
  Instant fireDate;
  Repeat repeat;
  std::vector<std::pair<Instant, Instant>> showings;  // When it was shown, and when it comes next.
  std::string zone = "Europe/Vienna";
};

class NextShowing : public ReminderFile, public testing::WithParamInterface<NextCase> {};

TEST_P(NextShowing, IsCountedFromTheFirst) {
  const NextCase& c = GetParam();
  ASSERT_TRUE(scheduler.scheduleLocalNotification(reminder(c.fireDate, c.repeat, c.zone)).ok());
  for (const auto& [shown, next] : c.showings) {
    ASSERT_TRUE(scheduler.notificationWasShown(shown).ok());
    EXPECT_EQ(scheduler.pending(), reminder(next, c.repeat, c.zone)) << (next - scheduler.pending()->fireDate).count();
  }
}

INSTANTIATE_TEST_SUITE_P(
    , NextShowing,
    testing::Values(
        NextCase{"Early", at(2024, 5, 6, 8), Repeat::week, {{at(2024, 5, 5, 8), at(2024, 5, 6, 8)}}},
        NextCase{"InTime",
                 at(2024, 5, 6, 8),
                 Repeat::week,
                 {{at(2024, 5, 6, 8), at(2024, 5, 13, 8)}, {at(2024, 5, 13, 9), at(2024, 5, 20, 8)}}},
        NextCase{
            "ManyMissedWeeksAreShownOnce", at(2023, 5, 8, 8), Repeat::week, {{at(2024, 5, 6, 8), at(2024, 5, 13, 8)}}},
        // The clocks go forward on 31 March: still nine o'clock in Vienna.
        NextCase{"SummerTime", at(2024, 3, 25, 8), Repeat::week, {{at(2024, 3, 25, 8), at(2024, 4, 1, 7)}}},
        NextCase{"ShortMonths",
                 at(2024, 1, 31, 11),
                 Repeat::month,
                 {{at(2024, 1, 31, 12), at(2024, 2, 29, 11)},
                  {at(2024, 3, 1, 0), at(2024, 3, 31, 10)},
                  {at(2024, 3, 31, 10), at(2024, 4, 30, 10)}}},
        NextCase{"YearsMissed", at(1999, 1, 31, 11), Repeat::month, {{at(2024, 2, 29, 10), at(2024, 2, 29, 11)}}},
        NextCase{"MonthOfTheZone", at(2024, 1, 31, 23), Repeat::month, {{at(2024, 2, 1, 0), at(2024, 2, 29, 23)}}},
        NextCase{"UnknownZoneIsTheSystems",
                 at(2024, 1, 31, 23),
                 Repeat::month,
                 {{at(2024, 2, 1, 0), at(2024, 2, 29, 23)}},
                 "CET-1CEST,M3.5.0"}),
    [](const auto& tested) { return tested.param.name; });

TEST_F(ReminderFile, ReadsNothingFromADamagedFile) {
  for (const char* damaged :
       {"", "{", "[]", "null", R"({"fireDate":"1"})", R"({"fireDate":1.5})", R"({"fireDate":9223372036854775807})",
        R"({"fireDate":-9223372036854775808})", "{\"fireDate\":1,\"alertBody\":\"\xff\"}"}) {
    files.files[kPath] = damaged;
    EXPECT_EQ(scheduler.pending(), std::nullopt) << damaged;
    EXPECT_TRUE(scheduler.notificationWasShown(at(2024, 1, 1, 0)).ok());
    EXPECT_EQ(files.files.at(kPath), damaged);
  }
  files.files[kPath] = R"({"fireDate":1,"nextFireDate":[],"repeat":7,"defaultSound":"x"})";
  EXPECT_EQ(scheduler.pending(), (LocalNotification{Instant(seconds(1)), Repeat::month, "", "", "", true}));
}

}  // namespace
}  // namespace varnok
