#include "settings/screen/varnok_settings_view_controller.h"

#include "app/preferences/export_settings.h"
#include "app/preferences/preference_keys.h"
#include "backup/dropbox/dropbox_browser_view_controller.h"
#include "cleanup/remove_records_view_controller.h"
#include "contacts/address_book.h"
#include "platform/check.h"
#include "platform/text_key.h"

namespace varnok {
namespace {

constexpr std::string_view kCopyright = "Varnok by Corvel, 2026";

}  // namespace

VarnokSettingsViewController::VarnokSettingsViewController(SettingsServices services, Delegate& delegate)
    : services_(std::move(services)),
      delegate_(delegate),
      duplicateSearch_(services_.cleanup),
      removeAllRecords_(services_.cleanup) {}

void VarnokSettingsViewController::viewDidLoad() {
  webAccess_ = std::make_unique<WebAccess>(services_.web, [this] { webAccessDidChange(); });
  returnedToMenu_ = services_.notifications.observe("returnMainMenu", [this] { refreshScreen(); });
}

void VarnokSettingsViewController::viewWillAppear() {
  dataSource_.clear();
  rowIDs_.clear();
  const bool backedUp = hasBackup();
  buildExport();
  if (backedUp) buildRestore();
  buildWebAccess(backedUp);
  buildReminder();
  buildCleanUp();
  buildDropbox();
  buildEnd();
  changed();
}

void VarnokSettingsViewController::refreshScreen() {
  viewWillAppear();
}

void VarnokSettingsViewController::buildExport() {
  TableRow type = textRow(text_key::TYPE);
  type.detail = storedText(key::EXPORT_TYPE);
  type.accesorType = RowAccessory::disclosure;
  type.selectionStyle = RowSelection::highlight;
  TableRow configure = textRow(text_key::CONFIGURE);
  configure.accesorType = RowAccessory::disclosure;
  configure.selectionStyle = RowSelection::highlight;
  add(text_key::EXPORT, {{RowID::type, std::move(type)}, {RowID::configure, std::move(configure)}});
}

void VarnokSettingsViewController::buildRestore() {
  add(text_key::RESTORE, {{RowID::restore, buttonRow(text_key::RESTORE_VCF, TableButton::Tone::green)}});
}

void VarnokSettingsViewController::buildWebAccess(bool hasBackup) {
  webAccess_->refreshSwitch();
  TableRow server = textRow(text_key::WI_FI_SERVER);
  server.accessoryView =
      TableSwitch{.on = webAccess_->serverSwitch().on, .enabled = webAccess_->serverSwitch().enabled};
  TableRow address;
  address.text = webAccess_->addressRow();
  add(text_key::WI_FI_DOWNLOAD, {{RowID::server, std::move(server)}, {RowID::address, std::move(address)}},
      services_.texts.text(hasBackup ? text_key::WI_FI_INFO : text_key::WI_FI_INFO_NO_BACKUP));
}

void VarnokSettingsViewController::buildReminder() {
  TableRow reminder = textRow(text_key::REMINDER);
  reminder.accessoryView = TableSwitch{.on = services_.preferences.boolForKey(key::REMINDER)};
  TableRow every = textRow(text_key::EVERY);
  every.detail = services_.texts.text(storedText(key::EVERY));
  every.accesorType = RowAccessory::disclosure;
  every.selectionStyle = RowSelection::highlight;
  const std::optional<Instant> last = timeOfLastBackup(services_.preferences);
  const std::string date =
      last ? services_.dates.formatPattern(*last, "dd MMM yyyy HH:mm", services_.device.appleLanguages.front()) : "-";
  add(text_key::REMINDER, {{RowID::reminder, std::move(reminder)}, {RowID::every, std::move(every)}},
      services_.texts.format(text_key::EXPORT_LAST, {date}));
}

void VarnokSettingsViewController::buildCleanUp() {
  TableRow duplicates = buttonRow(text_key::REMOVE_DUPLICATE, TableButton::Tone::blue);
  duplicates.button->enabled =
      ABAddressBookGetAuthorizationStatus(services_.contacts) == AuthorizationStatus::authorized;
  TableRow records = textRow(text_key::REMOVE_RECORDS);
  records.accesorType = RowAccessory::disclosure;
  records.selectionStyle = RowSelection::highlight;
  add(std::nullopt, {{RowID::removeDuplicate, std::move(duplicates)}, {RowID::removeRecords, std::move(records)}});
}

void VarnokSettingsViewController::buildDropbox() {
  TableRow dropbox = textRow(text_key::Dropbox);
  const bool linked = services_.dropbox.isLinked();
  dropbox.segments = {services_.texts.text(linked ? text_key::Unlink : text_key::Link_Dropbox)};
  add(text_key::File_Storage, {{RowID::dropbox, std::move(dropbox)}}, services_.texts.text(text_key::DROPBOX_INFO));
}

void VarnokSettingsViewController::buildEnd() {
  add(std::nullopt, {{RowID::removeAll, buttonRow(text_key::REMOVE_ALL, TableButton::Tone::red)}});
  if (services_.preferences.objectForKey(key::lastRecord)) {
    TableRow last;
    last.text = "Last Record";
    last.detail = storedText(key::lastRecord);
    add(std::nullopt, {{RowID::lastRecord, std::move(last)}});
  }
  add(text_key::ABOUT, {}, std::string(kCopyright));
}

void VarnokSettingsViewController::add(std::optional<std::string_view> headerKey, std::vector<Row> rows,
                                       std::optional<std::string> footer) {
  TableSection& section = dataSource_.emplace_back();
  if (headerKey) section.title = services_.texts.text(*headerKey);
  section.footer = std::move(footer);
  std::vector<RowID>& ids = rowIDs_.emplace_back();
  for (Row& row : rows) {
    section.rows.push_back(std::move(row.row));
    ids.push_back(row.id);
  }
}

TableRow VarnokSettingsViewController::textRow(std::string_view textKey) const {
  TableRow row;
  row.text = services_.texts.text(textKey);
  return row;
}

TableRow VarnokSettingsViewController::buttonRow(std::string_view textKey, TableButton::Tone tone) const {
  TableRow row;
  row.button = TableButton{.title = services_.texts.text(textKey), .tone = tone};
  return row;
}

std::optional<std::string> VarnokSettingsViewController::title() const {
  return services_.texts.text(text_key::SETTINGS);
}

std::vector<ScreenControl> VarnokSettingsViewController::controls() const {
  return {{.name = "onClick_Done", .text = services_.texts.text(text_key::DONE)},
          {.name = "onClick_Support", .text = services_.texts.text(text_key::SUPPORT)}};
}

bool VarnokSettingsViewController::tapControl(std::string_view control, int /*segment*/) {
  if (control == "onClick_Done") {
    onClick_Done();
  } else if (control == "onClick_Support") {
    onClick_Support();
  } else {
    return false;
  }
  return true;
}

bool VarnokSettingsViewController::selectRow(const IndexPath& indexPath) {
  if (!hasRow(*this, indexPath)) return false;
  switch (idOf(indexPath)) {
    case RowID::type:
      presentOverThis(std::make_shared<ExportTypeViewController>(services_.preferences, services_.texts,
                                                                 services_.presenter, *this));
      return true;
    case RowID::configure:
      presentOverThis(std::make_shared<ExportTypeConfigurationViewController>(services_.preferences, services_.texts,
                                                                              services_.presenter, *this));
      return true;
    case RowID::every:
      presentOverThis(
          std::make_shared<ReminderViewController>(services_.preferences, services_.texts, services_.presenter, *this));
      return true;
    case RowID::removeRecords:
      presentOverThis(std::make_shared<RemoveRecordsViewController>(services_.cleanup));
      return true;
    case RowID::restore:
    case RowID::server:
    case RowID::address:
    case RowID::reminder:
    case RowID::removeDuplicate:
    case RowID::dropbox:
    case RowID::removeAll:
    case RowID::lastRecord: return false;
  }
  VARNOK_UNREACHABLE();
}

bool VarnokSettingsViewController::switchRow(const IndexPath& indexPath, bool on) {
  if (!hasRow(*this, indexPath)) return false;
  const std::optional<TableSwitch> control = cellForRowAtIndexPath(indexPath).accessoryView;
  if (!control || !control->enabled) return false;
  if (idOf(indexPath) == RowID::server) {
    serverEvent(on);
  } else {
    changeReminderStatus(on);
  }
  return true;
}

bool VarnokSettingsViewController::pressRow(const IndexPath& indexPath) {
  if (!hasRow(*this, indexPath)) return false;
  const TableRow row = cellForRowAtIndexPath(indexPath);
  if (row.button && !row.button->enabled) return false;
  switch (idOf(indexPath)) {
    case RowID::restore: onClickRestoreVcf(); return true;
    case RowID::removeDuplicate: onClickRemoveDuplicate(); return true;
    case RowID::removeAll: onClickRemoveAll(); return true;
    case RowID::dropbox: openDropBox(0); return true;
    case RowID::type:
    case RowID::configure:
    case RowID::server:
    case RowID::address:
    case RowID::reminder:
    case RowID::every:
    case RowID::removeRecords:
    case RowID::lastRecord: return false;
  }
  VARNOK_UNREACHABLE();
}

void VarnokSettingsViewController::onClickRestoreVcf() {
  if (hasBackup()) presentOverThis(std::make_shared<RestoreBackupViewController>(services_.backups));
}

void VarnokSettingsViewController::onClickRemoveDuplicate() {
  if (hasBackup()) duplicateSearch_.removeDuplitaceRecord();
}

// Quirk: the segmented control has one segment only, so the browser is opened by
// nobody but those who call this.
void VarnokSettingsViewController::openDropBox(int selectedSegmentIndex) {
  if (selectedSegmentIndex != 0) {
    presentOverThis(std::make_shared<DropboxBrowserViewController>(
        DropboxBrowserServices{services_.dropbox, services_.texts, services_.presenter, services_.backups.documents},
        "/"));
  } else if (services_.dropbox.isLinked()) {
    services_.dropbox.unLink();
    refreshScreen();
  } else {
    services_.dropbox.showDropboxLinkScreen(services_.presenter);
  }
}

void VarnokSettingsViewController::webAccessDidChange() {
  if (TableRow* server = find(RowID::server)) {
    server->accessoryView->on = webAccess_->serverSwitch().on;
    server->accessoryView->enabled = webAccess_->serverSwitch().enabled;
  }
  TableRow* address = find(RowID::address);
  if (address == nullptr) return;  // The screen has not appeared yet.
  address->text = webAccess_->addressRow();
  changed();
}

void VarnokSettingsViewController::changeReminderStatus(bool on) {
  services_.reminders.requestPermission();
  storeReminder(on);
}

void VarnokSettingsViewController::storeReminder(bool on) {
  services_.preferences.setObject(on ? "YES" : "NO", key::REMINDER);
  services_.preferences.synchronize().ignore("the reminder is planned by the new value all the same");
  if (TableRow* reminder = find(RowID::reminder)) reminder->accessoryView->on = on;
  changed();
}

void VarnokSettingsViewController::onClick_Done() {
  const TableRow* reminder = find(RowID::reminder);
  const bool reminds = reminder != nullptr && reminder->accessoryView->on;
  if (reminds || services_.preferences.stringForKey(key::AppFirstOpened) != "YES") {
    delegate_.settingsDidFinish();
    return;
  }
  services_.preferences.setObject("NO", key::AppFirstOpened);
  services_.preferences.synchronize().ignore("at worst reminders are offered once more");
  AlertView offer;
  offer.title = services_.texts.text(text_key::ALERTVIEWTITLE);
  offer.message = services_.texts.text(text_key::ALERTVIEWMESSAGE);
  offer.buttons = {services_.texts.text(text_key::NO), services_.texts.text(text_key::YES)};
  offer.delegate = whileAlive_([this](const AlertView& alert, int index) { clickedButtonAtIndex(alert, index); });
  services_.presenter.showAlert(std::move(offer));
}

void VarnokSettingsViewController::clickedButtonAtIndex(const AlertView& /*alert*/, int index) {
  if (index == 1) changeReminderStatus(/*on=*/true);
}

// Quirk: after a choice the row shows the format's text, when the screen is
// opened again the stored name.
void VarnokSettingsViewController::exportTypeDidFinish() {
  dismissPresented();
  if (TableRow* type = find(RowID::type)) type->detail = services_.texts.text(storedText(key::EXPORT_TYPE));
  changed();
}

void VarnokSettingsViewController::exportTypeConfigurationDidFinish() {
  dismissPresented();
}

void VarnokSettingsViewController::reminderDidFinish() {
  dismissPresented();
  if (TableRow* every = find(RowID::every)) every->detail = services_.texts.text(storedText(key::EVERY));
  changed();
}

void VarnokSettingsViewController::presentOverThis(std::shared_ptr<Screen> screen) {
  presented_ = screen;
  services_.presenter.present(std::move(screen));
}

void VarnokSettingsViewController::dismissPresented() {
  if (const auto screen = presented_.lock()) services_.presenter.dismiss(*screen);
}

std::string VarnokSettingsViewController::storedText(std::string_view key) const {
  return services_.preferences.stringForKey(key).value_or("");
}

VarnokSettingsViewController::RowID VarnokSettingsViewController::idOf(const IndexPath& indexPath) const {
  return rowIDs_.at(static_cast<std::size_t>(indexPath.section)).at(static_cast<std::size_t>(indexPath.row));
}

TableRow* VarnokSettingsViewController::find(RowID id) {
  for (std::size_t section = 0; section < rowIDs_.size(); ++section) {
    for (std::size_t row = 0; row < rowIDs_[section].size(); ++row) {
      if (rowIDs_[section][row] == id) return &dataSource_[section].rows[row];
    }
  }
  return nullptr;
}

}  // namespace varnok
