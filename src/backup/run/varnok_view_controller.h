// VarnokViewController: the first screen, and the owner of the backup run.
//
// Lifetime. One object for the whole run of the application. Destroying it
// cancels a backup and waits for its thread.
//
// Threads. Main thread only; the run works on the screen's operation queue.

#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "backup/run/backup_delivery.h"
#include "backup/run/backup_run.h"
#include "backup/run/corvel_progress.h"
#include "platform/device.h"
#include "platform/idle_timer.h"
#include "platform/notification_center.h"
#include "platform/screen_presenter.h"
#include "platform/task_runner.h"
#include "platform/text_catalog.h"
#include "platform/while_alive.h"
#include "settings/reminders/reminder_schedule.h"
#include "settings/screen/varnok_settings_view_controller.h"

namespace varnok {

struct Control {
  std::string text;
  bool hidden = false;
  bool enabled = true;
};

struct VarnokViewState {
  Control btn_Backup;
  Control btn_Export;
  Control btn_Cancel;
  Control btn_Send;
  Control btn_Settings;
  Control lbl_Backup;
  Control lbl_PrivacyMessage;
  Control control11111;  // Decoration around the start button.
  CorvelProgress progress;
};

struct VarnokViewServices {
  BackupRunServices run;
  const TextCatalog& texts;
  TaskRunner& tasks;
  ScreenPresenter& presenter;
  IdleTimer& idleTimer;
  NotificationCenter& notifications;
  const Device& device;
  std::string documents;   // The documents directory.
  std::string backupLock;  // Held while a backup runs; outside the documents.
  BackupDeliveryServices delivery;
  ReminderServices reminders;
  SettingsServices settings;
};

class VarnokViewController : public Screen, public VarnokSettingsViewController::Delegate {
 public:
  explicit VarnokViewController(VarnokViewServices services);
  VarnokViewController(const VarnokViewController&) = delete;
  VarnokViewController& operator=(const VarnokViewController&) = delete;
  ~VarnokViewController() override;

  std::string_view screenName() const override { return "VarnokViewController"; }
  const VarnokViewState& state() const { return state_; }

  // How the last run ended; nothing before the first and while one is under way.
  const std::optional<BackupOutcome>& lastOutcome() const { return lastOutcome_; }

  void viewDidLoad() override;
  std::vector<ScreenControl> controls() const override;
  std::optional<ScreenProgress> progressBar() const override;
  bool tapControl(std::string_view control, int segment) override;
  void refreshContactCount();

  void onClick_Backup();
  void onClick_Export() { onClick_Backup(); }
  void onClick_Cancel();
  void onClick_Send() { delivery_.onClick_Send(); }
  void onClick_Settings();

  void settingsDidFinish() override;
  Status scheduleRemainder() { return varnok::scheduleRemainder(services_.reminders); }

  // 1 ready, 2 running, 3 finished, 4 no access. Any other value only lets the
  // backup button react to touches again.
  void setViewState(int viewState);
  void setViewStateSend() { setViewState(3); }

  void clickedButtonAtIndex(const AlertView& alert, int index);

  bool hasMultipleVCF() const;
  std::string fileType() const;
  bool isBackup() const;
  std::optional<std::string> fileName() const;
  std::optional<std::string> filePath() const;
  int numberOfContacts();
  int getSystemVersionAsAnInteger() const;
  bool photoExportClosedForLastBackup() const { return photoExportClosedForLastBackup_; }

 private:
  // What one run and its progress updates share. It outlives the screen when
  // an update is late.
  struct Run;
  class RunHost;

  // The buttons with their operations.
  struct Button;
  static const Button kButtons[];

  bool openForCounting(int& count);
  std::shared_ptr<FileLock> takeLock();
  void setFileName(int contacts);
  void backup(const std::shared_ptr<Run>& run, const std::shared_ptr<FileLock>& lock);
  void applyProgress(Run& run);
  void backupDidFinish(const std::shared_ptr<Run>& run, const BackupOutcome& outcome);
  void backupDidFail(const Status& status);
  void removeLastBackup();
  void checkAndShowFirstBackupAlertView();
  void showSize(std::uint64_t bytes);
  void requestAccess();
  void accessAnswered(bool granted);
  // An alert with the single button "OK", whose answer nobody waits for.
  void showNotice(std::string message);
  // Runs `task` on the main thread unless the screen has gone by then.
  void onMainThread(Task task);
  void changed() { services_.presenter.screenDidChange(*this); }

  VarnokViewServices services_;
  VarnokViewState state_;
  std::optional<BackupOutcome> lastOutcome_;
  std::shared_ptr<Run> run_;  // The latest; null before the first.
  bool photoExportClosedForLastBackup_ = false;
  std::unique_ptr<ScreenPresenter::Overlay> overlay_;
  NotificationCenter::Observation becameActive_;
  std::weak_ptr<FileLock> lock_;    // Held by the run under way, if any.
  std::weak_ptr<Screen> settings_;  // The latest; the presenter keeps them while they are open.
  BackupDelivery delivery_;
  WhileAlive whileAlive_;

  // Last: goes first, and waits for a run that uses the members above.
  std::unique_ptr<SerialQueue> operationQueue_;
};

}  // namespace varnok
