#include "platform/linux/desktop/reminder_delivery.h"

#include <unistd.h>

#include "platform/linux/dbus/desktop_module.h"
#include "platform/linux/mail/child_process.h"
#include "platform/linux/posix/optional_module.h"

namespace varnok {
namespace {

using namespace std::chrono_literals;

// At the beginning of a session programs start in no order.
constexpr std::chrono::seconds kPatience = 30s;

// An application that has come so far stays.
constexpr std::chrono::seconds kTimeToStart = 5s;

Status noBus() {
  return {Status::Code::unavailable, "no notification can be shown: there is no session bus"};
}

// Of a home of its own, which the bus does not know, or where the bus cannot
// start it.
Status launchApplication(const ReminderCall& call) {
  std::vector<std::string> words{call.program.substr(0, call.program.rfind('/')) + "/varnok"};
  if (::access(words.front().c_str(), X_OK) != 0) {
    return {Status::Code::notFound, "the application varnok is not installed"};
  }
  if (!call.home.empty()) words.insert(words.end(), {"--home", call.home});
  words.emplace_back("--reminder");
  return launchProgram(words, kTimeToStart);
}

}  // namespace

std::unique_ptr<DesktopNotifier> showReminder(const LocalNotification& reminder, bool waits, Status& status) {
  auto notifier =
      hasSessionBus() ? makeDesktopService<DesktopNotifier>("varnokMakeDesktopNotifier", BusSettings()) : nullptr;
  if (notifier == nullptr) {
    status = noBus();
    return nullptr;
  }
  DesktopNotification notification{"Varnok", reminder.alertBody, waits ? reminder.alertAction : "",
                                   reminder.defaultSound ? "message-new-instant" : ""};
  status = notifier->show(notification, waits ? kPatience : 0s);
  return status.ok() ? std::move(notifier) : nullptr;
}

Status openApplicationByReminder(const ReminderCall& call, const std::string& token) {
  auto bus = call.home.empty() && hasSessionBus()
                 ? makeDesktopService<ApplicationBus>("varnokMakeApplicationBus", BusSettings())
                 : nullptr;
  if (bus != nullptr) {
    ApplicationRequest request;
    request.kind = ApplicationRequest::Kind::action;
    request.action = kReminderAction;
    request.activationToken = token;
    Status status = bus->send(request, /*start=*/true);
    if (status.code() != Status::Code::notFound) return status;
  }
  return launchApplication(call);
}

}  // namespace varnok
