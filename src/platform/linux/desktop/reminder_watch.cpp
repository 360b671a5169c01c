#include "platform/linux/desktop/reminder_watch.h"

#include <algorithm>

#include "platform/linux/mail/child_process.h"

namespace varnok {
namespace {

using namespace std::chrono_literals;

// Looked at again and again: delays stand still while the machine sleeps, and
// the clock may be set.
constexpr std::chrono::milliseconds kLongestPause = 5min;
constexpr std::chrono::milliseconds kShortestPause = 1s;

// Until the notification is shown or cannot be; after that it waits for its
// user.
constexpr std::chrono::seconds kTimeToShow{45};

}  // namespace

ReminderWatch::ReminderWatch(DesktopNotificationScheduler& reminders, const Clock& clock, TaskRunner& tasks,
                             DeveloperLog& log, std::function<void()> fired)
    : reminders_(reminders), clock_(clock), tasks_(tasks), log_(log), fired_(std::move(fired)) {}

ReminderWatch::~ReminderWatch() {
  *alive_ = false;
}

void ReminderWatch::start() {
  if (reminders_.pending()) reminders_.arrangeLater();
  look();
}

void ReminderWatch::look() {
  std::chrono::milliseconds pause = kLongestPause;
  if (const std::optional<LocalNotification> planned = reminders_.pending(); planned && !reminders_.hasTimer()) {
    const double left = static_cast<double>(planned->fireDate.time_since_epoch().count()) - clock_.now();
    if (left <= 0) {
      deliver();
    } else if (left < std::chrono::duration<double>(kLongestPause).count()) {
      pause = std::max(kShortestPause, std::chrono::milliseconds(static_cast<std::int64_t>(left * 1000) + 1));
    }
  }
  tasks_.mainThreadAfter(pause, [this, alive = alive_] {
    if (*alive) look();
  });
}

void ReminderWatch::deliver() {
  if (fired_) fired_();
  tasks_.globalQueue([words = reminderDeliveryCommand(reminders_.call()), &log = log_] {
    const Status status = launchProgram(words, kTimeToShow);
    if (!status.ok()) log.write("reminder: not shown: " + status.message());
  });
}

}  // namespace varnok
