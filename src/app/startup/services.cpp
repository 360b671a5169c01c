#include "app/startup/services.h"

namespace varnok {

BackupListServices backupListServices(const Services& services) {
  return {.preferences = services.preferences,
          .files = services.files,
          .texts = services.texts,
          .dates = services.dates,
          .device = services.device,
          .tasks = services.tasks,
          .presenter = services.presenter,
          .mail = services.mail,
          .handOver = services.handOver,
          .dropbox = services.dropbox,
          .log = services.log,
          .documents = services.documents};
}

CleanupServices cleanupServices(const Services& services) {
  return {.contacts = services.contacts,
          .texts = services.texts,
          .collation = services.collation,
          .clock = services.clock,
          .tasks = services.tasks,
          .presenter = services.presenter,
          .idleTimer = services.idleTimer};
}

ReminderServices reminderServices(const Services& services) {
  return {.preferences = services.preferences,
          .texts = services.texts,
          .clock = services.clock,
          .dates = services.dates,
          .device = services.device,
          .scheduler = services.reminders};
}

WebServices webServices(const Services& services) {
  return {.preferences = services.preferences,
          .contacts = services.contacts,
          .files = services.files,
          .texts = services.texts,
          .images = services.images,
          .clock = services.clock,
          .random = services.random,
          .tasks = services.tasks,
          .notifications = services.notifications,
          .idleTimer = services.idleTimer,
          .network = services.network,
          .log = services.log,
          .documents = services.documents,
          .webPages = services.webPages};
}

SettingsServices settingsServices(const Services& services) {
  return {.preferences = services.preferences,
          .contacts = services.contacts,
          .texts = services.texts,
          .dates = services.dates,
          .device = services.device,
          .presenter = services.presenter,
          .notifications = services.notifications,
          .reminders = services.reminders,
          .feedback = services.feedback,
          .dropbox = services.dropbox,
          .backups = backupListServices(services),
          .cleanup = cleanupServices(services),
          .web = webServices(services)};
}

VarnokViewServices viewServices(const Services& services) {
  return {.run = {.writing = {services.preferences, services.clock, services.images, services.codec, services.random},
                  .contacts = services.contacts,
                  .files = services.files,
                  .log = services.log,
                  .texts = services.texts,
                  .tasks = services.tasks},
          .texts = services.texts,
          .tasks = services.tasks,
          .presenter = services.presenter,
          .idleTimer = services.idleTimer,
          .notifications = services.notifications,
          .device = services.device,
          .documents = services.documents,
          .backupLock = services.backupLock,
          .delivery = {.preferences = services.preferences,
                       .files = services.files,
                       .texts = services.texts,
                       .tasks = services.tasks,
                       .presenter = services.presenter,
                       .mail = services.mail,
                       .dropbox = services.dropbox,
                       .rating = services.rating},
          .reminders = reminderServices(services),
          .settings = settingsServices(services)};
}

}  // namespace varnok
