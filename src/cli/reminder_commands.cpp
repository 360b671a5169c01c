#include <boost/json.hpp>
#include <cstdio>

#include <fmt/format.h>

#include "cli/commands.h"
#include "platform/linux/desktop/reminder_delivery.h"

namespace varnok {
namespace {

namespace json = boost::json;

// After it the notification may stay; nobody hears its button.
constexpr std::chrono::hours kLongestWait{12};

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

void printDelivered(CommandContext& context, const LocalNotification& reminder, bool notified) {
  context.report.result(
      {{"delivered", {{"alertBody", jsonText(reminder.alertBody)}, {"alertAction", jsonText(reminder.alertAction)}}},
       {"notified", notified},
       {"pending", jsonOf(context.platform.reminders().pending())}},
      fmt::format("{}\n[{}]\n", shown(reminder.alertBody), shown(reminder.alertAction)));
  std::fflush(stdout);
}

int answered(CommandContext& context, const NotificationAnswer& answer) {
  using Kind = NotificationAnswer::Kind;
  if (answer.kind == Kind::lost) context.platform.services().log.write("reminder: the notification service has gone");
  if (answer.kind != Kind::opened) return kDone;
  const Status status = openApplicationByReminder(context.platform.reminders().call(), answer.activationToken);
  return status.ok() ? kDone : context.report.failure(status);
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

// What the timer calls. A reminder that nobody could be notified of stays due,
// and the exit status says so. On request it is printed all the same.
int reminderDeliverCommand(CommandContext& context, const ReminderDelivery& delivery) {
  DesktopNotificationScheduler& reminders = context.platform.reminders();
  const Services services = context.platform.services();
  if (!reminders.pending()) {
    reminders.arrangeLater();  // Whoever called this should not have.
    return reminderCommand(context);
  }
  Status status;
  std::unique_ptr<FileLock> lock = reminders.tryDeliver(status);
  if (lock == nullptr && status.code() != Status::Code::busy) return context.report.failure(status);
  const std::optional<LocalNotification> reminder = reminders.pending();
  const Instant now{std::chrono::seconds(static_cast<std::int64_t>(services.clock.now()))};
  const bool notYet = delivery.ifDue && (lock == nullptr || (reminder && reminder->fireDate > now));
  if (!reminder || notYet) return reminderCommand(context);

  const auto notifier = showReminder(*reminder, delivery.wait, status);
  if (notifier == nullptr) {
    if (delivery.ifDue) return context.report.failure(status);
    services.log.write("reminder: printed only: " + status.message());
  }
  if (status = reminders.notificationWasShown(now); !status.ok()) return context.report.failure(status);
  lock.reset();
  printDelivered(context, *reminder, notifier != nullptr);
  if (notifier == nullptr || !delivery.wait) return kDone;
  return answered(context, notifier->waitForAnswer(kLongestWait));
}

}  // namespace varnok
