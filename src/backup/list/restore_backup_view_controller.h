// RestoreBackupViewController: the vCard backups below the documents directory,
// each to be mailed, uploaded, handed to another application or deleted.
//
// The list is made with the screen: files that come or go meanwhile are not
// seen before it is opened again.
//
// Lifetime. Made for one showing. Threads. Main thread.

#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "backup/dropbox/dropbox_session.h"
#include "platform/date_formatter.h"
#include "platform/developer_log.h"
#include "platform/device.h"
#include "platform/document_hand_over.h"
#include "platform/file_system.h"
#include "platform/mail_composer.h"
#include "platform/preference_store.h"
#include "platform/screen_presenter.h"
#include "platform/task_runner.h"
#include "platform/text_catalog.h"
#include "platform/while_alive.h"

namespace varnok {

struct BackupListServices {
  PreferenceStore& preferences;
  FileSystem& files;
  const TextCatalog& texts;
  const DateFormatter& dates;
  const Device& device;
  TaskRunner& tasks;
  ScreenPresenter& presenter;
  MailComposer& mail;
  DocumentHandOver& handOver;
  DropboxSession& dropbox;
  DeveloperLog& log;
  std::string documents;  // The documents directory.
};

class RestoreBackupViewController : public Screen, private DropboxSessionDelegate {
 public:
  explicit RestoreBackupViewController(BackupListServices services);
  RestoreBackupViewController(const RestoreBackupViewController&) = delete;
  RestoreBackupViewController& operator=(const RestoreBackupViewController&) = delete;
  ~RestoreBackupViewController() override;

  std::string_view screenName() const override { return "RestoreBackupViewController"; }
  std::optional<std::string> tableHeader() const override;
  std::vector<ScreenControl> controls() const override;
  bool tapControl(std::string_view control, int segment) override;

  int numberOfSections() const override { return 1; }
  int numberOfRowsInSection(int section) const override;
  TableRow cellForRowAtIndexPath(const IndexPath& indexPath) const override;
  // False for a row that is being uploaded: it does not react to touches.
  bool selectRow(const IndexPath& indexPath) override;
  bool allowsDeletion() const override { return true; }
  bool isEditing() const override { return editing_; }
  bool deleteRow(const IndexPath& indexPath) override;

  void clickedButtonAtIndex(const ActionSheet& sheet, int index);
  void clickedButtonAtIndex(const AlertView& alert, int index);
  void mailComposeDidFinish(MailComposeResult result);

  // Of the row last tapped.
  void sendEmailButton();
  void openQLPreview();

  void edit();
  void close() { services_.presenter.dismiss(*this); }

 private:
  struct Item {
    std::string path;
    // Of the bar, which takes the place of the detail text; nothing while it is hidden.
    std::optional<double> progress = std::nullopt;
  };

  void progressUploadFile(double progress, const std::string& file, const std::string& source) override;
  void finishUploadFile(const std::string& file, const std::string& source, const DropboxMetadata& metadata) override;

  void showUploadsUnderWay();
  void uploadToDropbox();
  // Null when no row was tapped, or it has gone since.
  const Item* clickedItem() const;
  Item* uploadedItem(const std::string& source);
  std::string detailOf(const std::string& path) const;
  void showNotice(std::string_view titleKey, std::optional<std::string> message);
  void changed() { services_.presenter.screenDidChange(*this); }

  BackupListServices services_;
  std::vector<Item> items_;
  // File name to the row where the file was when its upload began. Quirk: stays
  // as it is when a row above goes, so the progress then shows one row too low.
  std::map<std::string, std::int32_t, std::less<>> uploadedItem_;
  std::int32_t clickedIndex_ = -1;
  bool editing_ = false;
  WhileAlive whileAlive_;
};

}  // namespace varnok
