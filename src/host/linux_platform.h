// LinuxPlatform: the real services, made once for the process.
//
// Lifetime. Made in main, outlives every screen. Threads. Main thread.

#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "app/startup/services.h"
#include "host/paths.h"
#include "platform/linux/curl/curl_dropbox_client.h"
#include "platform/linux/dbus/desktop_document_hand_over.h"
#include "platform/linux/dbus/desktop_file_chooser.h"
#include "platform/linux/dbus/desktop_idle_timer.h"
#include "platform/linux/dbus/desktop_mail_composer.h"
#include "platform/linux/dbus/desktop_network_monitor.h"
#include "platform/linux/dbus/desktop_store_review.h"
#include "platform/linux/desktop/desktop_notification_scheduler.h"
#include "platform/linux/desktop/xdg_document_hand_over.h"
#include "platform/linux/imaging/turbo_image_codec.h"
#include "platform/linux/mail/sendmail_mail_composer.h"
#include "platform/linux/posix/developer_log_file.h"
#include "platform/linux/posix/log_services.h"
#include "platform/linux/posix/posix_clock.h"
#include "platform/linux/posix/posix_file_system.h"
#include "platform/linux/posix/preference_file_store.h"
#include "platform/linux/posix/system_random_source.h"
#include "platform/linux/text/icu_date_formatter.h"
#include "platform/linux/text/icu_text_codec.h"
#include "platform/linux/text/icu_text_collation.h"
#include "platform/linux/text/mo_text_catalog.h"

namespace varnok {

struct PlatformOptions {
  std::string home;                                              // Empty: where the desktop's conventions say.
  std::string languages;                                         // Separated by commas; empty: from the environment.
  std::vector<std::pair<std::string, std::string>> preferences;  // For this run only.
  bool windows = false;                                          // The front end has some: it may open others unasked.
};

class LinuxPlatform {
 public:
  // Makes the user's directories where they are missing. `tasks` goes first when
  // the platform does, so that what still runs finds everything in place. Null
  // with a Status when something it needs cannot be had.
  static std::unique_ptr<LinuxPlatform> make(const PlatformOptions& options, ScreenPresenter& presenter,
                                             std::unique_ptr<TaskRunner> tasks, Status& status);

  LinuxPlatform(const LinuxPlatform&) = delete;
  LinuxPlatform& operator=(const LinuxPlatform&) = delete;
  ~LinuxPlatform();

  // Asked where nothing else asks who is to get a message; outlives the platform.
  void setMailRecipients(MailRecipients& recipients) { sendmail_.setRecipients(recipients); }

  DesktopFileChooser& fileChooser() { return fileChooser_; }

  // `composer` stands in for the platform's mail composer; it outlives the
  // services' users.
  Services services(MailComposer* composer = nullptr);
  CurlDropboxClient& dropboxClient() { return dropboxClient_; }
  const Paths& paths() const { return paths_; }

  // What commands ask for beyond the interfaces.
  DesktopNotificationScheduler& reminders() { return reminders_; }
  XdgDocumentHandOver& handOver() { return handOver_; }

 private:
  LinuxPlatform(Paths paths, const PlatformOptions& options, std::unique_ptr<PreferenceFileStore> preferences,
                ScreenPresenter& presenter, std::unique_ptr<TaskRunner> tasks);

  Paths paths_;
  ScreenPresenter& presenter_;
  Device device_;
  std::unique_ptr<PreferenceFileStore> preferences_;
  FileDeveloperLog log_;
  PosixFileSystem files_;
  PosixClock clock_;
  IcuDateFormatter dates_;
  SystemRandomSource random_;
  IcuTextCodec codec_;
  IcuTextCollation collation_;
  TurboImageCodec images_;
  std::unique_ptr<MoTextCatalog> texts_;
  std::unique_ptr<ContactStoreProvider> contacts_;
  NotificationCenter notifications_;
  DesktopNotificationScheduler reminders_;
  SendmailMailComposer sendmail_;
  DesktopMailComposer mail_;
  XdgDocumentHandOver handOver_;
  DesktopDocumentHandOver desktopHandOver_;
  DesktopFileChooser fileChooser_;
  DesktopIdleTimer idleTimer_;
  CurlDropboxClient dropboxClient_;
  DropboxSession dropbox_;
  DesktopNetworkMonitor network_;
  DesktopStoreReview storeReview_;
  CorvelRating rating_;
  LogCrashReporter crashReporter_;
  LogFeedbackService feedback_;
  std::unique_ptr<TaskRunner> tasks_;
};

}  // namespace varnok
