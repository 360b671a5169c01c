// Services: everything that the core asks of its surroundings. Built by main(),
// outlives every screen. The core owns none of it.

#pragma once

#include <string>

#include "backup/dropbox/dropbox_session.h"
#include "backup/run/varnok_view_controller.h"
#include "contacts/contact_store.h"
#include "engagement/corvel_rating.h"
#include "platform/clock.h"
#include "platform/crash_reporter.h"
#include "platform/date_formatter.h"
#include "platform/developer_log.h"
#include "platform/device.h"
#include "platform/document_hand_over.h"
#include "platform/feedback_service.h"
#include "platform/file_system.h"
#include "platform/idle_timer.h"
#include "platform/image_codec.h"
#include "platform/mail_composer.h"
#include "platform/network_monitor.h"
#include "platform/notification_center.h"
#include "platform/notification_scheduler.h"
#include "platform/preference_store.h"
#include "platform/random.h"
#include "platform/screen_presenter.h"
#include "platform/task_runner.h"
#include "platform/text_catalog.h"
#include "platform/text_codec.h"
#include "platform/text_collation.h"

namespace varnok {

struct Services {
  PreferenceStore& preferences;  // standardUserDefaults: one store for the process.
  ContactStoreProvider& contacts;
  FileSystem& files;
  const TextCatalog& texts;
  const TextCodec& codec;
  const TextCollation& collation;
  const Clock& clock;
  const DateFormatter& dates;
  RandomSource& random;
  const ImageCodec& images;
  TaskRunner& tasks;
  ScreenPresenter& presenter;
  NotificationCenter& notifications;
  NotificationScheduler& reminders;
  MailComposer& mail;
  DocumentHandOver& handOver;
  NetworkMonitor& network;
  IdleTimer& idleTimer;
  DropboxClient& dropboxClient;
  DropboxSession& dropbox;  // sharedInstance: one session for the process.
  CorvelRating& rating;     // sharedInstance: one for the process.
  CrashReporter& crashReporter;
  FeedbackService& feedback;
  DeveloperLog& log;
  const Device& device;
  std::string documents;   // The documents directory. Private to the application.
  std::string backupLock;  // Held while a backup runs; outside the documents.
  std::string webPages;    // The folder of the browser pages.
};

// What the parts of the application ask for, each from the whole.
BackupListServices backupListServices(const Services& services);
CleanupServices cleanupServices(const Services& services);
ReminderServices reminderServices(const Services& services);
SettingsServices settingsServices(const Services& services);
VarnokViewServices viewServices(const Services& services);
WebServices webServices(const Services& services);

}  // namespace varnok
