#include "backup/run/varnok_view_controller.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cmath>
#include <mutex>
#include <utility>

#include "app/preferences/export_settings.h"
#include "app/preferences/preference_keys.h"
#include "backup/files/backup_file.h"
#include "contacts/address_book.h"
#include "platform/cause_text.h"
#include "platform/text_key.h"

namespace varnok {
namespace {

constexpr int kSizeWarningTag = 9999;

// Above this size many mail servers refuse an attachment. In bytes, 3 MiB.
constexpr std::uint64_t kWarnAboveSize = 3145728;

// Progress updates of one backup. More could not be told apart on a bar.
constexpr int kMostUpdates = 100;

// Platforms from this version on ask the user for access to the contacts.
constexpr int kFirstVersionWithAccessControl = 60000;

}  // namespace

struct VarnokViewController::Run {
  std::string path;
  std::string language;
  std::atomic<bool> begun = false;
  std::atomic<bool> operationCancelled = false;

  int stepsOfAnUpdate = 1;

  // Contacts whose step has not reached the bar, and the latest name to show.
  std::mutex mutex;
  int pendingSteps = 0;
  std::string pendingName;

  // Main thread: the status line shows the outcome, which no late name replaces.
  bool ended = false;
};

// Lets the run ask and tell the screen, from the run's thread.
class VarnokViewController::RunHost : public BackupRun::Host {
 public:
  RunHost(VarnokViewController& screen, std::shared_ptr<Run> run)
      : tasks_(screen.services_.tasks),
        run_(std::move(run)),
        applyProgress_(screen.whileAlive_([&screen, updated = run_] { screen.applyProgress(*updated); })) {}

  bool operationCancelled() const override { return run_->operationCancelled; }

  // Each contact counts. In a large book several make one update: nobody sees
  // more of them, and each would wake two threads.
  void personTaken(const PersonRef& person) override {
    {
      const std::scoped_lock lock(run_->mutex);
      if (++run_->pendingSteps % run_->stepsOfAnUpdate != 0) return;
      run_->pendingName = ABRecordCopyCompositeName(person).value_or("");
    }
    refreshView();
  }

  // The steps that have not been worth an update of their own.
  void runEnded() const { refreshView(); }

 private:
  // Updates may be late and the screen gone: nothing of it is touched off the
  // main thread.
  void refreshView() const {
    tasks_.detached([&tasks = tasks_, apply = applyProgress_] { tasks.mainThread(apply); });
  }

  TaskRunner& tasks_;
  std::shared_ptr<Run> run_;
  Task applyProgress_;
};

struct VarnokViewController::Button {
  std::string_view name;
  Control VarnokViewState::*control;
  std::string_view text;
  void (VarnokViewController::*action)();
};

constexpr VarnokViewController::Button VarnokViewController::kButtons[] = {
    {"btn_Backup", &VarnokViewState::btn_Backup, text_key::Backup, &VarnokViewController::onClick_Backup},
    {"btn_Export", &VarnokViewState::btn_Export, text_key::EXPORT, &VarnokViewController::onClick_Export},
    {"btn_Cancel", &VarnokViewState::btn_Cancel, text_key::Cancel, &VarnokViewController::onClick_Cancel},
    {"btn_Send", &VarnokViewState::btn_Send, text_key::SEND, &VarnokViewController::onClick_Send},
    {"btn_Settings", &VarnokViewState::btn_Settings, text_key::SETTINGS, &VarnokViewController::onClick_Settings},
};

VarnokViewController::VarnokViewController(VarnokViewServices services)
    : services_(std::move(services)),
      delivery_(services_.delivery, [this] { setViewState(1); }),
      operationQueue_(services_.tasks.operationQueue()) {
  setViewState(1);
}

VarnokViewController::~VarnokViewController() {
  if (run_ != nullptr) run_->operationCancelled = true;
}

std::vector<ScreenControl> VarnokViewController::controls() const {
  std::vector<ScreenControl> shown;
  const auto add = [&shown](std::string_view name, const Control& control, std::string text) {
    shown.push_back({std::string(name), std::move(text), control.hidden, control.enabled});
  };
  for (const Button& button : kButtons)
    add(button.name, state_.*button.control, services_.texts.text(button.text));
  add("lbl_Backup", state_.lbl_Backup, state_.lbl_Backup.text);
  add("lbl_PrivacyMessage", state_.lbl_PrivacyMessage, state_.lbl_PrivacyMessage.text);
  return shown;
}

std::optional<ScreenProgress> VarnokViewController::progressBar() const {
  return ScreenProgress{state_.progress.minValue, state_.progress.maxValue, state_.progress.currentValue};
}

bool VarnokViewController::tapControl(std::string_view control, int /*segment*/) {
  const auto* button = std::ranges::find(kButtons, control, &Button::name);
  if (button == std::end(kButtons)) return false;
  const Control& tapped = state_.*button->control;
  if (tapped.hidden || !tapped.enabled) return false;
  (this->*button->action)();
  return true;
}

void VarnokViewController::viewDidLoad() {
  becameActive_ = services_.notifications.observe("applicationDidBecomeActive", [this] { refreshContactCount(); });
  setViewState(4);
  if (getSystemVersionAsAnInteger() < kFirstVersionWithAccessControl) return;
  switch (ABAddressBookGetAuthorizationStatus(services_.run.contacts)) {
    case AuthorizationStatus::notDetermined: requestAccess(); return;
    case AuthorizationStatus::restricted:
    case AuthorizationStatus::denied: accessAnswered(/*granted=*/false); return;
    case AuthorizationStatus::authorized: return;
  }
}

void VarnokViewController::requestAccess() {
  overlay_ = services_.presenter.showOverlay(services_.texts.text(text_key::LOADING));
  const auto answered = whileAlive_([this](bool granted) { accessAnswered(granted); });
  ABAddressBookRequestAccessWithCompletion(services_.run.contacts,
                                           [&tasks = services_.tasks, answered](bool granted, const Status& /*error*/) {
                                             tasks.mainThread([answered, granted] { answered(granted); });
                                           });
}

void VarnokViewController::accessAnswered(bool granted) {
  overlay_.reset();
  if (granted) {
    refreshContactCount();
    return;
  }
  state_.lbl_PrivacyMessage.text = services_.texts.text(text_key::PRIVACY_ERROR);
  changed();
}

void VarnokViewController::refreshContactCount() {
  // A backup runs, also when its first steps have not reached the bar.
  if (!state_.progress.isAtAnEnd() || !state_.btn_Cancel.hidden) return;
  const bool asks = getSystemVersionAsAnInteger() >= kFirstVersionWithAccessControl;
  const auto status = ABAddressBookGetAuthorizationStatus(services_.run.contacts);
  const bool allowed = !asks || status == AuthorizationStatus::authorized;
  if (allowed) state_.lbl_PrivacyMessage.text.clear();
  setViewState(allowed ? 1 : 4);
}

void VarnokViewController::setViewState(int viewState) {
  state_.btn_Backup.enabled = true;
  state_.btn_Export.enabled = true;
  switch (viewState) {
    case 1: {
      const int count = numberOfContacts();
      state_.lbl_Backup.text = services_.texts.formatCount(text_key::BACKUP_LABEL, count);
      state_.btn_Export.hidden = isBackup();
      state_.btn_Backup.hidden = !state_.btn_Export.hidden;
      state_.btn_Cancel.hidden = true;
      state_.btn_Send.hidden = true;
      state_.btn_Settings.hidden = false;
      state_.progress.maxValue = count;
      state_.progress.progressStart();
      break;
    }
    case 2:
      state_.btn_Cancel.hidden = false;
      state_.btn_Send.hidden = true;
      state_.btn_Settings.hidden = true;
      break;
    case 3:
      state_.btn_Cancel.hidden = true;
      state_.btn_Send.hidden = false;
      state_.btn_Settings.hidden = false;
      break;
    case 4:
      state_.btn_Send.hidden = true;
      state_.btn_Cancel.hidden = true;
      state_.btn_Backup.hidden = true;
      state_.btn_Export.hidden = true;
      state_.control11111.hidden = true;
      break;
    default: break;
  }
  changed();
}

void VarnokViewController::onClick_Backup() {
  int count = 0;
  if (!openForCounting(count)) return;
  if (count == 0) {
    showNotice(services_.texts.text(text_key::NOCONTACT));
    return;
  }
  auto lock = takeLock();
  if (lock == nullptr) return;
  lastOutcome_.reset();
  setFileName(count);
  run_ = std::make_shared<Run>();
  run_->path = filePath().value_or("");
  run_->language = languageCode(services_.device);
  run_->stepsOfAnUpdate = std::max(1, count / kMostUpdates);
  state_.progress.progressStart();
  state_.progress.maxValue = count;
  operationQueue_->post([this, run = run_, lock = std::move(lock)] { backup(run, lock); });
  setViewState(2);
}

// Counts the contacts. False, with an alert, when the store cannot be opened
// although access was given: a damaged store must not look like an empty one.
bool VarnokViewController::openForCounting(int& count) {
  Status status;
  const auto addressBook = ABAddressBookCreateWithOptions(services_.run.contacts, &status);
  count = ABAddressBookGetPersonCount(addressBook.get());
  if (addressBook != nullptr) status = addressBook->readStatus();
  if (status.ok() || status.code() == Status::Code::accessDenied) return true;
  backupDidFail(status);
  return false;
}

// One backup at a time in one home. A run of this process that is just ending
// keeps its lock; the operation queue makes the next one wait for it.
std::shared_ptr<FileLock> VarnokViewController::takeLock() {
  if (auto held = lock_.lock()) return held;
  Status status;
  std::shared_ptr<FileLock> lock = services_.run.files.tryLock(services_.backupLock, status);
  lock_ = lock;
  if (lock != nullptr) return lock;
  if (status.code() == Status::Code::busy) {
    lastOutcome_ = BackupOutcome{BackupOutcome::Kind::failed, status, 0, "", std::nullopt};
    showNotice(services_.texts.text(text_key::BACKUP_BUSY));
    changed();
  } else {
    backupDidFail(status);
  }
  return nullptr;
}

void VarnokViewController::setFileName(int contacts) {
  const Clock& clock = services_.run.writing.clock;
  const Instant now{std::chrono::seconds(static_cast<std::int64_t>(clock.now()))};
  const std::string name = backupFileName(clock.localTime(now), contacts, fileType());
  PreferenceStore& preferences = services_.run.writing.preferences;
  preferences.setObject(name, key::FILE_NAME);
  preferences.setObject(services_.documents + "/" + name, key::FILE_PATH);
  preferences.synchronize().ignore("the backup is made all the same; only its name may be forgotten");
}

// On the operation queue. The lock is held for as long as this runs.
void VarnokViewController::backup(const std::shared_ptr<Run>& run, const std::shared_ptr<FileLock>& /*lock*/) {
  run->begun = true;
  onMainThread([this] { services_.idleTimer.setIdleTimerDisabled(/*disabled=*/true); });
  RunHost host(*this, run);
  const BackupOutcome outcome = BackupRun(host, services_.run).run(run->path, run->language);
  host.runEnded();
  onMainThread([this] { services_.idleTimer.setIdleTimerDisabled(/*disabled=*/false); });
  if (outcome.kind == BackupOutcome::Kind::finished) backupDidFinish(run, outcome);
  onMainThread([this, run, outcome] {
    if (run != run_) return;  // It was cancelled, and the next one has begun.
    if (outcome.kind == BackupOutcome::Kind::failed && !run->operationCancelled) {
      run->operationCancelled = true;  // The bar is reset: late steps are dropped.
      backupDidFail(outcome.status);
      return;
    }
    lastOutcome_ = outcome;
    changed();
  });
}

void VarnokViewController::applyProgress(Run& run) {
  int steps = 0;
  std::string name;
  {
    const std::scoped_lock lock(run.mutex);
    steps = std::exchange(run.pendingSteps, 0);
    name = run.pendingName;
  }
  // A later run has reset the bar, or Cancel has.
  if (&run != run_.get() || run.operationCancelled) return;
  for (; steps > 0; --steps)
    state_.progress.progress();
  if (!run.ended) state_.lbl_Backup.text = std::move(name);
  changed();
}

// On the operation queue, after the file has its final name.
void VarnokViewController::backupDidFinish(const std::shared_ptr<Run>& run, const BackupOutcome& outcome) {
  services_.run.writing.preferences.removeObjectForKey(key::lastRecord);
  checkAndShowFirstBackupAlertView();
  onMainThread([this, run] {
    if (run != run_) return;  // The next one is on the screen.
    run->ended = true;
    setViewStateSend();
  });
  removeLastBackup();
  if (outcome.bytes) {
    onMainThread([this, run, bytes = *outcome.bytes] {
      if (run == run_) showSize(bytes);
    });
  }
}

void VarnokViewController::backupDidFail(const Status& status) {
  lastOutcome_ = BackupOutcome{BackupOutcome::Kind::failed, status, 0, "", std::nullopt};
  services_.run.log.write("backup failed: " + status.message());
  showNotice(services_.texts.format(text_key::BACKUP_FAILED, {causeText(status, services_.texts)}));
  setViewState(1);
}

void VarnokViewController::showSize(std::uint64_t bytes) {
  const double megabytes = static_cast<double>(bytes) / 1048576.0;
  const bool small = megabytes < 1;
  const std::string number = std::to_string(std::llround(small ? megabytes * 1024 : megabytes));
  state_.lbl_Backup.text = services_.texts.format(text_key::FILE_SIZE_MESSAGE, {number, small ? "KB" : "MB"});
  changed();
  if (bytes <= kWarnAboveSize || !services_.run.writing.preferences.boolForKey(key::EXPORT_CONF_PHOTOS)) return;
  AlertView warning;
  warning.title = services_.texts.text(text_key::Warning);
  warning.message = services_.texts.text(text_key::EXPORT_SIZE_WARNING);
  warning.buttons = {services_.texts.text(text_key::Cancel), services_.texts.text(text_key::OK)};
  warning.tag = kSizeWarningTag;
  warning.delegate = whileAlive_([this](const AlertView& alert, int index) { clickedButtonAtIndex(alert, index); });
  services_.presenter.showAlert(std::move(warning));
}

// Keeps only the newest CSV and zip backup; vCard backups accumulate.
void VarnokViewController::removeLastBackup() {
  const std::string type = fileType();
  const std::string newest = filePath().value_or("");
  if (type != "vcf") {
    for (const std::string& path : services_.run.files.filesBelow(services_.documents)) {
      const std::string full = services_.documents + "/" + path;
      if (pathExtension(path) != type || full == newest) continue;
      services_.run.files.remove(full).ignore("an old backup that stays does no harm");
    }
  }
  if (isBackup()) services_.run.writing.preferences.setDouble(services_.run.writing.clock.now(), key::EXPORT_LAST);
}

void VarnokViewController::checkAndShowFirstBackupAlertView() {
  PreferenceStore& preferences = services_.run.writing.preferences;
  if (preferences.stringForKey(key::ALERT_BACKUP_POPUP_SHOWED) != "NO") return;
  preferences.setObject("YES", key::ALERT_BACKUP_POPUP_SHOWED);
  preferences.synchronize().ignore("at worst the advice is given once more");
  onMainThread([this] { showNotice(services_.texts.text(text_key::FIRSTBACKUPALERTMESSAGE)); });
}

void VarnokViewController::onClick_Cancel() {
  if (run_ != nullptr) run_->operationCancelled = true;
  operationQueue_->cancelAll();
  // A run that had not begun never ends by itself.
  if (run_ != nullptr && !run_->begun) lastOutcome_ = BackupOutcome{BackupOutcome::Kind::cancelled, {}, 0, "", {}};
  setViewState(1);
}

void VarnokViewController::clickedButtonAtIndex(const AlertView& alert, int index) {
  if (alert.tag == kSizeWarningTag && index == 1) {
    services_.run.writing.preferences.setBool(/*value=*/false, key::EXPORT_CONF_PHOTOS);
    services_.run.writing.preferences.synchronize().ignore("the repeated backup reads the new value all the same");
    photoExportClosedForLastBackup_ = true;
    setViewState(1);
    onClick_Backup();
    return;
  }
  delivery_.alertWasAnswered();
}

void VarnokViewController::onClick_Settings() {
  auto settings = std::make_shared<VarnokSettingsViewController>(services_.settings, *this);
  settings_ = settings;
  services_.presenter.present(std::move(settings));
}

void VarnokViewController::settingsDidFinish() {
  if (const auto settings = settings_.lock()) services_.presenter.dismiss(*settings);
  const Status status = scheduleRemainder();
  if (status.ok()) return;
  services_.run.log.write("reminder: " + status.message());
  showNotice(services_.texts.format(text_key::REMINDER_FAILED, {causeText(status, services_.texts)}));
}

// Quirk: the switch is read twice, before and after the format could change.
bool VarnokViewController::hasMultipleVCF() const {
  const PreferenceStore& preferences = services_.run.writing.preferences;
  return preferences.boolForKey(key::multipleVCF) && multipleVCFChosen(preferences);
}

std::string VarnokViewController::fileType() const {
  return backupFileType(services_.run.writing.preferences);
}

bool VarnokViewController::isBackup() const {
  return singleVCFChosen(services_.run.writing.preferences);
}

std::optional<std::string> VarnokViewController::fileName() const {
  return services_.run.writing.preferences.stringForKey(key::FILE_NAME);
}

std::optional<std::string> VarnokViewController::filePath() const {
  return services_.run.writing.preferences.stringForKey(key::FILE_PATH);
}

int VarnokViewController::numberOfContacts() {
  const auto addressBook = ABAddressBookCreateWithOptions(services_.run.contacts);
  return ABAddressBookGetPersonCount(addressBook.get());
}

int VarnokViewController::getSystemVersionAsAnInteger() const {
  std::array<int, 3> components{};
  std::size_t index = 0;
  for (const char c : services_.device.platformVersion) {
    if (c == '.') {
      if (++index == components.size()) break;
    } else if (c >= '0' && c <= '9' && components[index] < 1000) {
      components[index] = components[index] * 10 + (c - '0');
    }
  }
  return components[0] * 10000 + components[1] * 100 + components[2];
}

void VarnokViewController::showNotice(std::string message) {
  AlertView alert;
  alert.title = services_.texts.text(text_key::ALERTVIEWTITLE);
  alert.message = std::move(message);
  alert.buttons = {services_.texts.text(text_key::OK)};
  services_.presenter.showAlert(std::move(alert));
}

void VarnokViewController::onMainThread(Task task) {
  services_.tasks.mainThread(whileAlive_(std::move(task)));
}

}  // namespace varnok
