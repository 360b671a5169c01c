#include <boost/json.hpp>

#include <fmt/format.h>

#include "cli/commands.h"

namespace varnok {
namespace {

namespace json = boost::json;

std::string_view periodName(LocalNotification::Repeat repeat) {
  return repeat == LocalNotification::Repeat::week ? "WEEK" : "MONTH";
}

json::value jsonOf(const std::optional<LocalNotification>& notification) {
  if (!notification) return nullptr;
  return {{"fireDate", utcText(notification->fireDate)},
          {"repeat", periodName(notification->repeat)},
          {"alertBody", jsonText(notification->alertBody)},
          {"alertAction", jsonText(notification->alertAction)}};
}

// "2024-03-05 14:07  WEEK  Your last backup ...", or that there is none.
std::string textOf(const std::optional<LocalNotification>& notification, const Clock& clock) {
  if (!notification) return "no reminder is planned\n";
  const LocalTime at = clock.localTime(notification->fireDate);
  return fmt::format("{:04}-{:02}-{:02} {:02}:{:02}  {}  {}\n", at.year, at.month, at.day, at.hour, at.minute,
                     periodName(notification->repeat), shown(notification->alertBody));
}

}  // namespace

int reminderCommand(CommandContext& context) {
  const std::optional<LocalNotification> pending = context.platform.reminders().pending();
  context.report.result({{"pending", jsonOf(pending)}}, textOf(pending, context.platform.services().clock));
  return kDone;
}

int reminderScheduleCommand(CommandContext& context) {
  if (Status status = scheduleRemainder(reminderServices(context.platform.services())); !status.ok()) {
    return context.report.failure(status);
  }
  return reminderCommand(context);
}

int reminderDeliverCommand(CommandContext& context) {
  FileNotificationScheduler& reminders = context.platform.reminders();
  const Clock& clock = context.platform.services().clock;
  const std::optional<LocalNotification> shownNow = reminders.pending();
  if (!shownNow) return reminderCommand(context);
  const Instant now{std::chrono::seconds(static_cast<std::int64_t>(clock.now()))};
  if (Status status = reminders.notificationWasShown(now); !status.ok()) return context.report.failure(status);
  context.report.result(
      {{"delivered", {{"alertBody", jsonText(shownNow->alertBody)}, {"alertAction", jsonText(shownNow->alertAction)}}},
       {"pending", jsonOf(reminders.pending())}},
      fmt::format("{}\n[{}]\n", shown(shownNow->alertBody), shown(shownNow->alertAction)));
  return kDone;
}

}  // namespace varnok
