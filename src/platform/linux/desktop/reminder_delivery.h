// A reminder on the screen, and what happens when its user opens it.
//
// Threads. Everything blocks as it says; any thread but a main thread with
// windows.

#pragma once

#include <memory>

#include "platform/linux/dbus/desktop_notifier.h"
#include "platform/linux/desktop/reminder_units.h"
#include "platform/notification_scheduler.h"
#include "platform/status.h"

namespace varnok {

// Null with a Status when nobody can be notified. With `waits` the reminder has
// its button, and a service that is not there is waited for: half a minute.
std::unique_ptr<DesktopNotifier> showReminder(const LocalNotification& reminder, bool waits, Status& status);

// Brings the application to the front as a reminder that was opened does: the
// one that runs, else another one. `token` is the desktop's leave for that.
// unavailable when the one that runs does not answer, notFound when none is
// installed.
Status openApplicationByReminder(const ReminderCall& call, const std::string& token);

}  // namespace varnok
