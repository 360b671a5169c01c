#include "platform/linux/desktop/desktop_notification_scheduler.h"

#include <filesystem>

#include "platform/linux/dbus/desktop_module.h"
#include "platform/linux/posix/optional_module.h"
#include "platform/linux/posix/posix_file_system.h"

namespace varnok {
namespace {

// Links count too, wherever they lead.
bool isThere(const std::string& path) {
  std::error_code error;
  return std::filesystem::exists(std::filesystem::symlink_status(path, error));
}

std::string nameIn(const std::string& path) {
  return path.substr(path.rfind('/') + 1);
}

// Null when there is no bus to ask, or no means to.
std::unique_ptr<UnitManager> unitManager() {
  if (!hasSessionBus()) return nullptr;
  return makeDesktopService<UnitManager>("varnokMakeUnitManager", BusSettings());
}

Status noManager() {
  return {Status::Code::unavailable, "there is no session bus"};
}

}  // namespace

DesktopNotificationScheduler::DesktopNotificationScheduler(ReminderPlaces places, ReminderCall call, FileSystem& files,
                                                           TaskRunner& tasks, DeveloperLog& log)
    : places_(std::move(places)),
      call_(std::move(call)),
      lock_(places_.memory + ".lock"),
      name_(reminderUnitName(call_.home)),
      timer_(places_.configuration + "/systemd/user/" + name_ + ".timer"),
      wanted_(places_.configuration + "/systemd/user/timers.target.wants/" + name_ + ".timer"),
      service_(places_.configuration + "/systemd/user/" + name_ + ".service"),
      stamp_(places_.data + "/systemd/timers/stamp-" + name_ + ".timer"),
      autostart_(places_.configuration + "/autostart/" + name_ + ".desktop"),
      files_(files),
      tasks_(tasks),
      log_(log),
      memory_(places_.memory, files) {}

DesktopNotificationScheduler::~DesktopNotificationScheduler() {
  if (wanting_) arrange();
}

Status DesktopNotificationScheduler::cancelAllLocalNotifications() {
  Status status = memory_.cancelAllLocalNotifications();
  files_.remove(lock_).ignore("made again by whoever needs it");
  arrangeLater();
  return status;
}

Status DesktopNotificationScheduler::scheduleLocalNotification(LocalNotification notification) {
  Status status = memory_.scheduleLocalNotification(std::move(notification));
  arrangeLater();
  return status;
}

Status DesktopNotificationScheduler::notificationWasShown(Instant now) {
  Status status = memory_.notificationWasShown(now);
  arrangeLater();
  return status;
}

// Cancelling and scheduling come together, and are arranged once.
void DesktopNotificationScheduler::arrangeLater() {
  if (wanting_.exchange(true)) return;
  tasks_.globalQueue([this] { arrange(); });
}

void DesktopNotificationScheduler::arrange() {
  const std::lock_guard lock(arranging_);
  wanting_ = false;  // What is asked for from here on needs another turn.
  const std::optional<LocalNotification> planned = memory_.pending();
  if (planned && places_.configuration.empty()) {
    log_.write("reminder: the user has no home directory, so only a running application shows it");
  } else if (planned) {
    set(*planned);
  } else if (!places_.configuration.empty()) {
    clear();
  }
}

bool DesktopNotificationScheduler::hasTimer() const {
  return isThere(wanted_);
}

void DesktopNotificationScheduler::set(const LocalNotification& notification) {
  const Status status = startTimer(notification);
  if (status.ok()) {
    files_.remove(autostart_).ignore("most often there is none");
    return;
  }
  log_.write("reminder: no timer, an entry for the log-in instead: " + status.message());
  removeUnits();
  if (const Status written = write(autostart_, reminderAutostartEntry(call_)); !written.ok()) {
    log_.write("reminder: only a running application shows it: " + written.message());
  }
}

Status DesktopNotificationScheduler::startTimer(const LocalNotification& notification) {
  const std::unique_ptr<UnitManager> manager = unitManager();
  if (manager == nullptr) return noManager();
  if (Status status = write(service_, reminderServiceUnit(call_)); !status.ok()) return status;
  if (Status status = write(timer_, reminderTimerUnit(notification.fireDate)); !status.ok()) return status;
  return manager->enable(service_, timer_);
}

// The files go also when the service manager cannot be told: then the timer
// ends with the session at the latest, and what it starts finds nothing to show.
void DesktopNotificationScheduler::clear() {
  for (const std::string& path : {autostart_, stamp_})
    files_.remove(path).ignore("most often there is none");
  if (isThere(timer_) || isThere(service_) || isThere(wanted_)) {
    const std::unique_ptr<UnitManager> manager = unitManager();
    Status status = manager == nullptr ? noManager() : manager->disable(nameIn(service_), nameIn(timer_));
    removeUnits();
    if (status.ok()) status = manager->forget(nameIn(service_));
    if (!status.ok()) log_.write("reminder: the timer's files are removed, nobody was told: " + status.message());
  }
}

void DesktopNotificationScheduler::removeUnits() {
  for (const std::string& path : {wanted_, timer_, service_})
    files_.remove(path).ignore("it may not have been there");
}

Status DesktopNotificationScheduler::write(const std::string& path, const std::string& text) {
  if (Status status = makeDirectories(path.substr(0, path.rfind('/'))); !status.ok()) return status;
  Status status;
  const auto file = files_.createAtomic(path, status);
  if (file == nullptr) return status;
  if (status = file->append(text); !status.ok()) return status;
  return file->commit();
}

}  // namespace varnok
