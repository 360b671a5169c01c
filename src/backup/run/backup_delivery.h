// BackupDelivery: what the main screen offers when a backup is done: a mail that
// carries it, and after that an upload to Dropbox.
//
// Lifetime. Part of the main screen. Threads. Main thread.

#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "backup/dropbox/dropbox_session.h"
#include "engagement/corvel_rating.h"
#include "platform/file_system.h"
#include "platform/mail_composer.h"
#include "platform/preference_store.h"
#include "platform/screen_presenter.h"
#include "platform/task_runner.h"
#include "platform/text_catalog.h"
#include "platform/while_alive.h"

namespace varnok {

struct BackupDeliveryServices {
  PreferenceStore& preferences;
  FileSystem& files;
  const TextCatalog& texts;
  TaskRunner& tasks;
  ScreenPresenter& presenter;
  MailComposer& mail;
  DropboxSession& dropbox;
  CorvelRating& rating;
};

// The message that carries a backup of that type ("vcf", "zip", "csv"); without
// an attachment when there are no `bytes`.
MailMessage backupMail(std::string_view fileType, std::optional<std::string> bytes, std::string fileName,
                       const TextCatalog& texts);

class BackupDelivery {
 public:
  // `mailGivenUp` is called when the composer closes without having sent.
  BackupDelivery(BackupDeliveryServices services, std::function<void()> mailGivenUp)
      : services_(services), mailGivenUp_(std::move(mailGivenUp)) {}

  // Opens the composer with the last backup.
  void onClick_Send();
  void mailComposeDidFinish(MailComposeResult result);

  // The user has answered an alert about a finished backup. That counts for the
  // rating, and the upload is offered a moment later.
  void alertWasAnswered();

  // Nothing where no account is linked.
  void showDropBoxOption();
  void clickedButtonAtIndex(const ActionSheet& sheet, int index);

 private:
  void showNotice(AlertView alert);
  void offerDropBoxSoon();
  std::string stored(std::string_view key) const;

  BackupDeliveryServices services_;
  std::function<void()> mailGivenUp_;
  WhileAlive whileAlive_;
};

}  // namespace varnok
