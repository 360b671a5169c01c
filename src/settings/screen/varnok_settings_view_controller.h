// VarnokSettingsViewController: the settings, and the way to every other tool.
//
// It keeps nothing: each time it comes to the front its table is made anew from
// the preferences, the backups, the web access and the Dropbox account.
//
// Lifetime. Made for one showing; the delegate closes it and outlives it. The
// web access goes with it. Threads. Main thread.

#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "backup/list/restore_backup_view_controller.h"
#include "cleanup/duplicate_search.h"
#include "cleanup/remove_all_records.h"
#include "platform/feedback_service.h"
#include "platform/notification_center.h"
#include "platform/notification_scheduler.h"
#include "settings/fields/export_type_configuration_view_controller.h"
#include "settings/fields/export_type_view_controller.h"
#include "settings/reminders/reminder_view_controller.h"
#include "web/access/web_access.h"

namespace varnok {

struct SettingsServices {
  PreferenceStore& preferences;
  ContactStoreProvider& contacts;
  const TextCatalog& texts;
  const DateFormatter& dates;
  const Device& device;
  ScreenPresenter& presenter;
  NotificationCenter& notifications;
  NotificationScheduler& reminders;
  FeedbackService& feedback;
  DropboxSession& dropbox;
  BackupListServices backups;  // For the screens and the work behind the rows.
  CleanupServices cleanup;
  WebServices web;
};

class VarnokSettingsViewController : public TableScreen,
                                     public ExportTypeViewController::Delegate,
                                     public ExportTypeConfigurationViewController::Delegate,
                                     public ReminderViewController::Delegate {
 public:
  class Delegate {
   public:
    virtual ~Delegate() = default;
    virtual void settingsDidFinish() = 0;
  };

  // The keys of its table, for describe().
  static constexpr TableKeys kTableKeys{.title = "sectionHeader",
                                        .rows = "rows",
                                        .footer = "sectionFooter",
                                        .text = "textLabel.text",
                                        .detail = "detailTextLabel.text",
                                        .accesorType = "accesorType",
                                        .selectionStyle = "selectionStyle",
                                        .accessoryView = "accessoryView"};

  VarnokSettingsViewController(SettingsServices services, Delegate& delegate);

  std::string_view screenName() const override { return "VarnokSettingsViewController"; }
  std::optional<std::string> title() const override;
  void viewDidLoad() override;
  void viewWillAppear() override;
  std::vector<ScreenControl> controls() const override;
  const std::vector<TableSection>& sections() const override { return dataSource_; }

  bool tapControl(std::string_view control, int segment) override;
  bool selectRow(const IndexPath& indexPath) override;
  bool switchRow(const IndexPath& indexPath, bool on) override;
  bool pressRow(const IndexPath& indexPath) override;

  void onClickRestoreVcf();
  void onClickRemoveDuplicate();
  void onClickRemoveAll() { removeAllRecords_.onClickRemoveAll(); }
  void onClick_Support() { services_.feedback.present(); }
  void onClick_Done();
  void changeReminderStatus(bool on);
  void openDropBox(int selectedSegmentIndex);
  void refreshScreen();

  void serverEvent(bool on) { webAccess_->serverEvent(on); }
  void handleNetworkChange() { webAccess_->handleNetworkChange(); }
  std::optional<std::string> getIPAddress() const { return webAccess_->getIPAddress(); }
  bool hasBackup() const { return webAccess_->hasBackup(); }
  bool hasMultipleVCF() const { return webAccess_->hasMultipleVCF(); }

  void clickedButtonAtIndex(const AlertView& alert, int index);

  void exportTypeDidFinish() override;
  void exportTypeConfigurationDidFinish() override;
  void reminderDidFinish() override;

 private:
  enum class RowID {
    type,
    configure,
    restore,
    server,
    address,
    reminder,
    every,
    removeDuplicate,
    removeRecords,
    dropbox,
    removeAll,
    lastRecord,
  };
  struct Row {
    RowID id;
    TableRow row;
  };

  void buildExport();
  void buildRestore();
  void buildWebAccess(bool hasBackup);
  void buildReminder();
  void buildCleanUp();
  void buildDropbox();
  void buildEnd();
  void add(std::optional<std::string_view> headerKey, std::vector<Row> rows, std::optional<std::string> footer = {});
  TableRow textRow(std::string_view textKey) const;
  TableRow buttonRow(std::string_view textKey, TableButton::Tone tone) const;

  void webAccessDidChange();
  void storeReminder(bool on);
  void presentOverThis(std::shared_ptr<Screen> screen);
  void dismissPresented();
  std::string storedText(std::string_view key) const;
  // Of an existing row.
  RowID idOf(const IndexPath& indexPath) const;
  // Null when the table has no such row.
  TableRow* find(RowID id);
  void changed() { services_.presenter.screenDidChange(*this); }

  SettingsServices services_;
  Delegate& delegate_;
  DuplicateSearch duplicateSearch_;
  RemoveAllRecords removeAllRecords_;
  std::unique_ptr<WebAccess> webAccess_;  // Made when the view loads.
  std::vector<TableSection> dataSource_;
  std::vector<std::vector<RowID>> rowIDs_;  // Of the rows in dataSource_.
  std::weak_ptr<Screen> presented_;         // The latest over this one.
  NotificationCenter::Observation returnedToMenu_;
  WhileAlive whileAlive_;
};

}  // namespace varnok
