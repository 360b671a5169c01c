// FileNotificationScheduler: keeps the planned reminder in a small file, for
// whatever shows reminders:
//
//   {"fireDate":SECONDS,"nextFireDate":SECONDS,"repeat":"WEEK"|"MONTH",
//    "alertBody":T,"alertAction":T,"timeZone":T,"defaultSound":B}
//
// "fireDate" is that of the first showing, from which the later ones are
// counted: a reminder of the 31st comes on the last day of a shorter month and
// on the 31st again after it. "nextFireDate" is that of the next one.

#pragma once

#include <string>

#include "platform/file_system.h"
#include "platform/notification_scheduler.h"

namespace varnok {

class FileNotificationScheduler : public NotificationScheduler {
 public:
  // `path` is the file, which need not be there. `files` outlives this.
  FileNotificationScheduler(std::string path, FileSystem& files) : path_(std::move(path)), files_(files) {}

  // A desktop lets every program notify.
  void requestPermission() override {}
  Status cancelAllLocalNotifications() override;
  Status scheduleLocalNotification(LocalNotification notification) override;

  // With the fire date of the next showing, which may have passed. Nothing also
  // when the file cannot be read as a reminder.
  std::optional<LocalNotification> pending() const override;

  // The pending one has been shown. One that was due comes again at the first of
  // its times after `now`, however many have been missed; one that was shown
  // early comes at its time all the same.
  Status notificationWasShown(Instant now);

 private:
  struct Planned;
  std::optional<Planned> read() const;
  Status write(const Planned& planned);

  const std::string path_;
  FileSystem& files_;
};

}  // namespace varnok
