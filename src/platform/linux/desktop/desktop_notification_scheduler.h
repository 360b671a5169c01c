// DesktopNotificationScheduler: reminders that the desktop shows when their time
// has come.
//
// The planned reminder is kept in a file; that file counts, and everything else
// is made to agree with it: a timer of the user's service manager, or where
// there is none an entry that the desktop starts at log-in. Both run
//
//   varnokctl reminder deliver --if-due --wait
//
// which shows what is due and has the next showing arranged. While no timer can
// be had, a running application looks too (ReminderWatch).
//
// Lifetime. The references outlive it; the end arranges what is not arranged
// yet. Threads. The interface's operations are called on the main thread and do
// not wait for the service manager; arrange() is called on any thread.

#pragma once

#include <atomic>
#include <mutex>
#include <string>

#include "platform/developer_log.h"
#include "platform/file_system.h"
#include "platform/linux/desktop/file_notification_scheduler.h"
#include "platform/linux/desktop/reminder_units.h"
#include "platform/task_runner.h"

namespace varnok {

struct ReminderPlaces {
  std::string memory;  // The file of the planned reminder.

  // The user's directories for configuration and for data, where the service
  // manager and the desktop look; empty when the user has none. Then only a
  // running application shows reminders.
  std::string configuration;
  std::string data;
};

class DesktopNotificationScheduler : public NotificationScheduler {
 public:
  DesktopNotificationScheduler(ReminderPlaces places, ReminderCall call, FileSystem& files, TaskRunner& tasks,
                               DeveloperLog& log);
  DesktopNotificationScheduler(const DesktopNotificationScheduler&) = delete;
  DesktopNotificationScheduler& operator=(const DesktopNotificationScheduler&) = delete;
  ~DesktopNotificationScheduler() override;

  // A desktop lets every program notify.
  void requestPermission() override {}

  // Each answers for the file; what the desktop is told follows, and how that
  // went is in the log.
  Status cancelAllLocalNotifications() override;
  Status scheduleLocalNotification(LocalNotification notification) override;
  Status notificationWasShown(Instant now);  // As the file's scheduler has it.

  std::optional<LocalNotification> pending() const override { return memory_.pending(); }

  // Makes the desktop agree with the file. Blocks for as long as the service
  // manager takes, at most the time limit of a few calls.
  void arrange();

  // The same, soon and on another thread.
  void arrangeLater();

  // Whether a timer fires the reminder.
  bool hasTimer() const;

  const ReminderCall& call() const { return call_; }

  // Taken by whoever shows the reminder. Null when another does.
  std::unique_ptr<FileLock> tryDeliver(Status& status) { return files_.tryLock(lock_, status); }

 private:
  void set(const LocalNotification& notification);
  void clear();
  void removeUnits();
  Status startTimer(const LocalNotification& notification);
  Status write(const std::string& path, const std::string& text);

  const ReminderPlaces places_;
  const ReminderCall call_;
  const std::string lock_;
  const std::string name_;    // Of the units.
  const std::string timer_;   // Whole paths.
  const std::string wanted_;  // The link by which the timer starts at log-in.
  const std::string service_;
  const std::string stamp_;  // Where the service manager notes when the timer fired.
  const std::string autostart_;
  FileSystem& files_;
  TaskRunner& tasks_;
  DeveloperLog& log_;
  FileNotificationScheduler memory_;
  std::mutex arranging_;
  std::atomic<bool> wanting_ = false;  // Something is not arranged yet.
};

}  // namespace varnok
