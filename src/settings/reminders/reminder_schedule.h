// The one repeating reminder to make a backup.

#pragma once

#include "platform/clock.h"
#include "platform/date_formatter.h"
#include "platform/device.h"
#include "platform/notification_scheduler.h"
#include "platform/preference_store.h"
#include "platform/text_catalog.h"

namespace varnok {

struct ReminderServices {
  PreferenceStore& preferences;
  const TextCatalog& texts;
  const Clock& clock;
  const DateFormatter& dates;
  const Device& device;
  NotificationScheduler& scheduler;
};

// Plans the reminder afresh from the preferences; none when reminders are off.
// It is counted from the last backup, or from now when there was none: after a
// long pause its time has passed already. Main thread.
//
// After a failure no reminder is planned, or still the earlier one.
Status scheduleRemainder(const ReminderServices& services);

}  // namespace varnok
