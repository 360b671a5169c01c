#include "settings/reminders/reminder_schedule.h"

#include "app/preferences/export_settings.h"
#include "app/preferences/preference_keys.h"
#include "platform/text_key.h"

namespace varnok {
namespace {

using namespace std::chrono_literals;

LocalNotification reminder(const ReminderServices& services) {
  LocalNotification notification;
  notification.timeZone = services.clock.timeZone();
  Instant base{std::chrono::seconds(static_cast<std::int64_t>(services.clock.now()))};
  if (const std::optional<Instant> last = timeOfLastBackup(services.preferences)) {
    base = *last;
    const std::string date = services.dates.formatPattern(base, "dd MMM yyyy", services.device.appleLanguages.front());
    notification.alertBody = services.texts.format(text_key::REMINDER_MESSAGE, {date});
  } else {
    notification.alertBody = services.texts.text(text_key::REMINDER_MESSAGE_FIRST);
  }
  notification.alertAction = services.texts.text(text_key::Backup);
  const bool weekly = services.preferences.stringForKey(key::EVERY) == "WEEK";
  notification.fireDate = base + (weekly ? 24h * 7 : 24h * 30);
  notification.repeat = weekly ? LocalNotification::Repeat::week : LocalNotification::Repeat::month;
  return notification;
}

}  // namespace

Status scheduleRemainder(const ReminderServices& services) {
  if (Status status = services.scheduler.cancelAllLocalNotifications(); !status.ok()) return status;
  if (!services.preferences.boolForKey(key::REMINDER)) return {};
  return services.scheduler.scheduleLocalNotification(reminder(services));
}

}  // namespace varnok
