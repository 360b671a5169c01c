// NotificationScheduler: reminders that the platform shows when their time has
// come, also when the application does not run. Main thread.

#pragma once

#include <optional>
#include <string>

#include "platform/status.h"
#include "platform/value.h"

namespace varnok {

struct LocalNotification {
  enum class Repeat { week, month };  // A calendar month.

  // Of the first showing; the later ones are counted from it. One that has
  // passed is shown at the next chance, once.
  Instant fireDate;
  Repeat repeat = Repeat::month;
  std::string alertBody;
  std::string alertAction;  // The button's text.
  std::string timeZone;     // In which the periods are counted, such as "Europe/Vienna".
  bool defaultSound = true;

  bool operator==(const LocalNotification&) const = default;
};

class NotificationScheduler {
 public:
  virtual ~NotificationScheduler() = default;

  // Asks the user for alerts, badges and sounds, where the platform wants that
  // asked.
  virtual void requestPermission() = 0;

  // Removes every trace of what was scheduled.
  virtual Status cancelAllLocalNotifications() = 0;
  virtual Status scheduleLocalNotification(LocalNotification notification) = 0;

  // What is scheduled now.
  virtual std::optional<LocalNotification> pending() const = 0;
};

}  // namespace varnok
