// ReminderWatch: shows the reminder while the application runs, where no timer
// does.
//
//   ReminderWatch watch(reminders, clock, tasks, log, [&] { delegate.didReceiveLocalNotification(state()); });
//   watch.start();
//
// Lifetime. The references outlive it, and so does the main thread's loop what
// it posts there: its end stops it. Threads. Main thread.

#pragma once

#include <functional>
#include <memory>

#include "platform/clock.h"
#include "platform/linux/desktop/desktop_notification_scheduler.h"

namespace varnok {

class ReminderWatch {
 public:
  // `fired` is called on the main thread when a reminder's time has come while
  // the application runs. It is shown by another program then, which asks the
  // application to come to the front when the user opens it.
  ReminderWatch(DesktopNotificationScheduler& reminders, const Clock& clock, TaskRunner& tasks, DeveloperLog& log,
                std::function<void()> fired);
  ReminderWatch(const ReminderWatch&) = delete;
  ReminderWatch& operator=(const ReminderWatch&) = delete;
  ~ReminderWatch();

  // Also has the desktop agree with what is planned: it may have been told
  // nothing, or by a program that stood elsewhere.
  void start();

 private:
  void look();
  void deliver();

  DesktopNotificationScheduler& reminders_;
  const Clock& clock_;
  TaskRunner& tasks_;
  DeveloperLog& log_;
  const std::function<void()> fired_;
  const std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

}  // namespace varnok
