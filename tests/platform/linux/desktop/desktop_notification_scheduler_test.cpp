#include "platform/linux/desktop/desktop_notification_scheduler.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "platform/linux/desktop/reminder_watch.h"
#include "platform/linux/posix/posix_file_system.h"
#include "platform/linux/posix/temporary_directory.h"
#include "platform/testing/fake_clock.h"
#include "platform/testing/fake_services.h"
#include "platform/testing/manual_task_runner.h"

namespace varnok {
namespace {

using namespace std::chrono_literals;

// On a desktop without a bus.
class Reminders : public testing::Test {
 protected:
  Reminders() {
    ::unsetenv("DBUS_SESSION_BUS_ADDRESS");
    ::unsetenv("XDG_RUNTIME_DIR");
    std::filesystem::create_directory(directory.path() + "/data");
  }

  std::unique_ptr<DesktopNotificationScheduler> scheduler() {
    return std::make_unique<DesktopNotificationScheduler>(
        ReminderPlaces{directory / "data/reminder.json", directory / "config", directory / "data"}, call, files, tasks,
        log);
  }

  LocalNotification reminderIn(std::chrono::seconds time) {
    return {Instant(std::chrono::seconds(static_cast<std::int64_t>(clock.seconds))) + time,
            LocalNotification::Repeat::week, "Time for a backup", "Backup", "UTC"};
  }

  bool hasEntry() const { return std::filesystem::exists(entry); }

  std::vector<std::string> filesLeft() { return files.filesBelow(directory.path()); }

  const TemporaryDirectory directory;
  const std::string entry = directory / "config/autostart/varnok-reminder.desktop";
  PosixFileSystem files;
  ManualTaskRunner tasks;
  FakeDeveloperLog log;
  FakeClock clock;
  ReminderCall call{"/usr/bin/varnokctl", "", {}};
};

TEST_F(Reminders, WithoutATimerAreLookedForAtLogIn) {
  const auto reminders = scheduler();
  ASSERT_TRUE(reminders->scheduleLocalNotification(reminderIn(1h)).ok());
  EXPECT_FALSE(hasEntry());  // The main thread does not wait for a service manager.
  tasks.runUntilIdle();
  EXPECT_NE(contentOf(entry).find("reminder\" \"deliver\" \"--if-due\""), std::string::npos);
  EXPECT_FALSE(reminders->hasTimer());
  ASSERT_EQ(log.lines.size(), 1U);
  EXPECT_NE(log.lines[0].find("no timer"), std::string::npos);
}

TEST_F(Reminders, LeaveNoTraceWhenTheyAreCancelled) {
  const auto reminders = scheduler();
  ASSERT_TRUE(reminders->scheduleLocalNotification(reminderIn(1h)).ok());
  tasks.runUntilIdle();
  // As a session with a service manager has left them.
  for (const char* unit : {"varnok-reminder.timer", "varnok-reminder.service"}) {
    std::filesystem::create_directories(directory / "config/systemd/user/timers.target.wants");
    setContent(directory / "config/systemd/user/" + unit, "");
  }
  std::filesystem::create_symlink("/nowhere",
                                  directory / "config/systemd/user/timers.target.wants/varnok-reminder.timer");
  std::filesystem::create_directories(directory / "data/systemd/timers");
  setContent(directory / "data/systemd/timers/stamp-varnok-reminder.timer", "");
  Status status;
  ASSERT_NE(reminders->tryDeliver(status), nullptr);
  ASSERT_TRUE(reminders->cancelAllLocalNotifications().ok());
  tasks.runUntilIdle();
  EXPECT_EQ(filesLeft(), std::vector<std::string>());
  EXPECT_FALSE(reminders->hasTimer());
}

TEST_F(Reminders, AreArrangedOnceHoweverOftenTheyChange) {
  const auto reminders = scheduler();
  for (int i = 0; i < 3; ++i) {
    ASSERT_TRUE(reminders->cancelAllLocalNotifications().ok());
    ASSERT_TRUE(reminders->scheduleLocalNotification(reminderIn(1h)).ok());
  }
  EXPECT_EQ(tasks.backgroundTasks.size(), 1U);
  tasks.runUntilIdle();
  EXPECT_TRUE(hasEntry());
  ASSERT_TRUE(reminders->cancelAllLocalNotifications().ok());
  tasks.runUntilIdle();
  EXPECT_FALSE(hasEntry());
}

TEST_F(Reminders, AreArrangedAtTheEndWhenNoThreadCameToIt) {
  auto reminders = scheduler();
  ASSERT_TRUE(reminders->scheduleLocalNotification(reminderIn(1h)).ok());
  tasks.backgroundTasks.clear();
  reminders.reset();
  EXPECT_TRUE(hasEntry());
}

TEST_F(Reminders, OfAUserWithoutAHomeAreKeptAllTheSame) {
  DesktopNotificationScheduler reminders({directory / "data/reminder.json", "", ""}, call, files, tasks, log);
  ASSERT_TRUE(reminders.scheduleLocalNotification(reminderIn(1h)).ok());
  tasks.runUntilIdle();
  EXPECT_TRUE(reminders.pending());
  EXPECT_EQ(filesLeft(), std::vector<std::string>{"data/reminder.json"});
}

// The program that shows the reminder is a script that notes its arguments.
class Watch : public Reminders {
 protected:
  Watch() {
    call.program = directory / "shows";
    setContent(call.program, "#!/bin/sh\necho \"$@\" >> \"" + directory / "shown" + "\"\n");
    std::filesystem::permissions(call.program, std::filesystem::perms::owner_all);
  }

  void pass(std::chrono::seconds time) {
    clock.seconds += static_cast<double>(time.count());
    tasks.advance(time);
    tasks.runUntilIdle();
  }

  std::string shown() const { return contentOf(directory / "shown"); }

  int fired = 0;
};

TEST_F(Watch, ShowsAReminderWhenItsTimeHasCome) {
  const auto reminders = scheduler();
  ReminderWatch watch(*reminders, clock, tasks, log, [this] { ++fired; });
  ASSERT_TRUE(reminders->scheduleLocalNotification(reminderIn(90s)).ok());
  watch.start();
  tasks.runUntilIdle();
  pass(89s);
  EXPECT_EQ(fired, 0);
  pass(2s);
  EXPECT_EQ(fired, 1);
  EXPECT_EQ(shown(), "--quiet reminder deliver --if-due --wait\n");
}

TEST_F(Watch, FindsWhatWasPlannedMeanwhileAndLeavesItToATimer) {
  const auto reminders = scheduler();
  ReminderWatch watch(*reminders, clock, tasks, log, [this] { ++fired; });
  watch.start();
  ASSERT_TRUE(reminders->scheduleLocalNotification(reminderIn(-24h)).ok());
  tasks.runUntilIdle();
  std::filesystem::create_directories(directory / "config/systemd/user/timers.target.wants");
  std::filesystem::create_symlink("/nowhere",
                                  directory / "config/systemd/user/timers.target.wants/varnok-reminder.timer");
  pass(5min);
  EXPECT_EQ(fired, 0);
  ASSERT_TRUE(std::filesystem::remove(directory / "config/systemd/user/timers.target.wants/varnok-reminder.timer"));
  pass(5min);
  EXPECT_EQ(fired, 1);
}

TEST_F(Watch, EndsWithItsOwner) {
  const auto reminders = scheduler();
  ASSERT_TRUE(reminders->scheduleLocalNotification(reminderIn(90s)).ok());
  {
    ReminderWatch watch(*reminders, clock, tasks, log, [this] { ++fired; });
    watch.start();
  }
  pass(10min);
  EXPECT_EQ(fired, 0);
  EXPECT_EQ(shown(), "");
}

}  // namespace
}  // namespace varnok
