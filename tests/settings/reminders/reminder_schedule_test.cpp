#include "settings/reminders/reminder_schedule.h"

#include <gtest/gtest.h>

#include "app/preferences/preference_keys.h"
#include "platform/testing/fake_clock.h"
#include "platform/testing/fake_services.h"
#include "platform/testing/in_memory_preference_store.h"
#include "platform/testing/recording_presenter.h"
#include "settings/reminders/reminder_view_controller.h"

namespace varnok {
namespace {

constexpr std::int64_t kNow = 1709647629;  // As the fake clock says.
constexpr std::int64_t kDay = 86400;

struct Reminders : testing::Test {
  InMemoryPreferenceStore preferences;
  FakeTextCatalog texts;
  FakeClock clock;
  FakeDateFormatter dates;
  Device device;
  FakeNotificationScheduler scheduler;

  Reminders() {
    preferences.registerDefaults(registeredDefaults());
    device.appleLanguages = {"de-AT", "en"};
    texts.texts["REMINDER_MESSAGE"] = "since %@";
    texts.texts["WEEK"] = "Weekly";
  }
  Status schedule() { return scheduleRemainder({preferences, texts, clock, dates, device, scheduler}); }
};

struct ScheduleCase {
  std::string name;
  Value every;
  Value last;  // EXPORT_LAST.
  std::int64_t fireDate;
  LocalNotification::Repeat repeat;
  std::string body;
};

class Schedule : public Reminders, public testing::WithParamInterface<ScheduleCase> {};

TEST_P(Schedule, CountsFromTheLastBackup) {
  const ScheduleCase& c = GetParam();
  preferences.setObject("YES", key::REMINDER);
  preferences.setObject(c.every, key::EVERY);
  preferences.setObject(c.last, key::EXPORT_LAST);
  ASSERT_TRUE(schedule().ok());
  const LocalNotification expected{
      Instant(std::chrono::seconds(c.fireDate)), c.repeat, c.body, "Backup", "Europe/Vienna", /*defaultSound=*/true};
  EXPECT_EQ(scheduler.planned, expected);
  EXPECT_EQ(scheduler.log, "cancel schedule ");
}

constexpr auto kWeek = LocalNotification::Repeat::week;
constexpr auto kMonth = LocalNotification::Repeat::month;

INSTANTIATE_TEST_SUITE_P(
    , Schedule,
    testing::Values(
        ScheduleCase{"NoBackupYetWeekly", "WEEK", "", kNow + 7 * kDay, kWeek, "REMINDER_MESSAGE_FIRST"},
        ScheduleCase{"NoBackupYetMonthly", "MONTH", 0, kNow + 30 * kDay, kMonth, "REMINDER_MESSAGE_FIRST"},
        ScheduleCase{"FirstOfMarch", "MONTH", 1709251200.75, 1709251200 + 30 * kDay, kMonth,
                     "since dd MMM yyyy@1709251200"},
        ScheduleCase{"LongAgoLiesInThePast", "WEEK", 1000, 1000 + 7 * kDay, kWeek, "since dd MMM yyyy@1000"},
        ScheduleCase{"AnyOtherPeriodIsAMonth", "YEAR", 1000, 1000 + 30 * kDay, kMonth, "since dd MMM yyyy@1000"},
        // The last day that a four-figure year has.
        ScheduleCase{"NoSuchTime", "WEEK", 1e300, 253402214400 + 7 * kDay, kWeek, "since dd MMM yyyy@253402214400"}),
    [](const auto& tested) { return tested.param.name; });

TEST_F(Reminders, TurnedOffLeaveNothingPlanned) {
  scheduler.planned = LocalNotification{};
  ASSERT_TRUE(schedule().ok());
  EXPECT_EQ(scheduler.planned, std::nullopt);
  EXPECT_EQ(scheduler.log, "cancel ");
}

struct PeriodChoice : Reminders, ReminderViewController::Delegate {
  RecordingPresenter presenter;
  ReminderViewController screen{preferences, texts, presenter, *this};
  std::string stored;  // When the delegate was told.
  void reminderDidFinish() override { stored = preferences.stringForKey(key::EVERY).value_or(""); }

  std::string seen() {
    std::string text = *screen.sections().front().title + ":";
    for (const TableRow& row : screen.sections().front().rows)
      text += (row.checked ? " [x] " : " [ ] ") + row.text;
    return text;
  }
};

TEST_F(PeriodChoice, IsStoredWithDone) {
  screen.viewDidLoad();
  EXPECT_EQ(seen(), "EVERY: [ ] Weekly [x] MONTH");
  EXPECT_TRUE(screen.selectRow({0, 0}));
  EXPECT_FALSE(screen.selectRow({0, 2}));
  EXPECT_EQ(seen(), "EVERY: [x] Weekly [ ] MONTH");
  EXPECT_EQ(preferences.stringForKey(key::EVERY), "MONTH");
  EXPECT_TRUE(screen.tapControl("onTap_Done", 0));
  EXPECT_EQ(stored, "WEEK");
}

TEST_F(PeriodChoice, QuirkAnUnknownPeriodHasNoCheckmarkAndDoneStoresWeeks) {
  preferences.setObject("YEAR", key::EVERY);
  screen.viewDidLoad();
  EXPECT_EQ(seen(), "EVERY: [ ] Weekly [ ] MONTH");
  screen.onTap_Done();
  EXPECT_EQ(stored, "WEEK");
}

}  // namespace
}  // namespace varnok
