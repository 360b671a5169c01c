#include "backup/list/restore_backup_view_controller.h"

#include <algorithm>

#include "app/preferences/preference_keys.h"
#include "backup/files/backup_file.h"
#include "backup/files/vnk_util.h"
#include "backup/list/vcard_backups.h"
#include "platform/cause_text.h"
#include "platform/text_key.h"

namespace varnok {
namespace {

constexpr int kMailSentTag = 1;

}  // namespace

RestoreBackupViewController::RestoreBackupViewController(BackupListServices services) : services_(std::move(services)) {
  for (const std::string& name : services_.files.filesBelow(services_.documents)) {
    if (isVCardBackup(name)) items_.push_back({services_.documents + "/" + name});
  }
  std::ranges::reverse(items_);
  showUploadsUnderWay();
  services_.dropbox.setTheDelegate(this);
}

RestoreBackupViewController::~RestoreBackupViewController() {
  services_.dropbox.clearTheDelegate(this);
}

// Quirk: their bars begin at zero, whatever has been sent already.
void RestoreBackupViewController::showUploadsUnderWay() {
  std::int32_t row = 0;
  for (Item& item : items_) {
    if (services_.dropbox.uploadQueue().contains(item.path)) {
      uploadedItem_.emplace(lastPathComponent(item.path), row);
      item.progress = 0.0;
    }
    ++row;
  }
}

std::optional<std::string> RestoreBackupViewController::tableHeader() const {
  return services_.texts.text(text_key::RESTORE_MESSAGE);
}

std::vector<ScreenControl> RestoreBackupViewController::controls() const {
  return {{.name = "close", .text = services_.texts.text(text_key::CLOSE)},
          {.name = "edit", .text = services_.texts.text(editing_ ? text_key::DONE : text_key::EDIT_LIST)}};
}

bool RestoreBackupViewController::tapControl(std::string_view control, int /*segment*/) {
  if (control == "close") {
    close();
  } else if (control == "edit") {
    edit();
  } else {
    return false;
  }
  return true;
}

int RestoreBackupViewController::numberOfRowsInSection(int /*section*/) const {
  return static_cast<int>(items_.size());
}

TableRow RestoreBackupViewController::cellForRowAtIndexPath(const IndexPath& indexPath) const {
  const Item& item = items_.at(static_cast<std::size_t>(indexPath.row));
  TableRow row;
  row.text = lastPathComponent(item.path);
  row.accesorType = RowAccessory::disclosure;
  row.selectionStyle = RowSelection::highlight;
  row.progress = item.progress;
  if (!item.progress) row.detail = detailOf(item.path);
  return row;
}

std::string RestoreBackupViewController::detailOf(const std::string& path) const {
  const FileAttributes attributes = services_.files.attributes(path).value_or(FileAttributes{});
  const std::string size = VNKUtil::convertSize(static_cast<double>(attributes.size));
  return services_.dates.format(attributes.modified, DateStyle::fullStyle, DateStyle::mediumStyle,
                                services_.device.appleLanguages.front()) +
         "\n" + services_.texts.format(text_key::FILE_SIZE_MESSAGE, {size});
}

bool RestoreBackupViewController::selectRow(const IndexPath& indexPath) {
  if (!hasRow(*this, indexPath)) return false;
  const Item& item = items_[static_cast<std::size_t>(indexPath.row)];
  if (item.progress) return false;
  clickedIndex_ = indexPath.row;
  ActionSheet sheet;
  sheet.title = lastPathComponent(item.path);
  sheet.buttons = {"Email", "Dropbox", services_.texts.text(text_key::RESTORE), services_.texts.text(text_key::Cancel)};
  sheet.cancelButtonIndex = 3;
  sheet.delegate =
      whileAlive_([this](const ActionSheet& answered, int index) { clickedButtonAtIndex(answered, index); });
  services_.presenter.showActionSheet(std::move(sheet));
  return true;
}

void RestoreBackupViewController::clickedButtonAtIndex(const ActionSheet& /*sheet*/, int index) {
  switch (index) {
    case 0: sendEmailButton(); break;
    case 1: uploadToDropbox(); break;
    case 2: openQLPreview(); break;
    default: break;
  }
}

void RestoreBackupViewController::sendEmailButton() {
  const Item* item = clickedItem();
  if (item == nullptr) return;
  services_.log.write("path: " + item->path);
  if (!services_.mail.canSendMail()) {
    showNotice(text_key::ALERTVIEWTITLE, services_.texts.text(text_key::MAILCOMPOSER_CANT_SEND));
    return;
  }
  Status status;
  std::optional<std::string> bytes = services_.files.readFile(item->path, status);
  if (!bytes) {
    const std::string cause = causeText(status, services_.texts);
    showNotice(text_key::ALERTVIEWTITLE, services_.texts.format(text_key::BACKUP_UNREADABLE, {cause}));
    return;
  }
  services_.mail.present(vCardMail(std::move(*bytes), item->path, services_.texts),
                         whileAlive_([this](MailComposeResult result) { mailComposeDidFinish(result); }));
}

void RestoreBackupViewController::mailComposeDidFinish(MailComposeResult result) {
  if (result != MailComposeResult::sent) {
    services_.mail.dismiss();
    return;
  }
  AlertView alert;
  alert.title = services_.texts.text(text_key::EXPORT_INFO);
  alert.buttons = {services_.texts.text(text_key::OK)};
  alert.tag = kMailSentTag;
  alert.delegate = whileAlive_([this](const AlertView& answered, int index) { clickedButtonAtIndex(answered, index); });
  services_.presenter.showAlert(std::move(alert));
}

void RestoreBackupViewController::clickedButtonAtIndex(const AlertView& alert, int /*index*/) {
  if (alert.tag == kMailSentTag) services_.mail.dismiss();
}

void RestoreBackupViewController::uploadToDropbox() {
  const Item* item = clickedItem();
  if (item == nullptr) return;
  if (!services_.dropbox.isLinked()) {
    services_.dropbox.showDropboxLinkScreen(services_.presenter);
    return;
  }
  const std::string name(lastPathComponent(item->path));
  uploadedItem_.emplace(name, clickedIndex_);
  services_.dropbox.uploadFile(item->path, name);
}

void RestoreBackupViewController::progressUploadFile(double progress, const std::string& /*file*/,
                                                     const std::string& source) {
  Item* item = uploadedItem(source);
  if (item == nullptr) return;
  item->progress = progress;
  changed();
}

// Quirk: nothing here follows a failed upload: its row stays as the last
// progress left it.
void RestoreBackupViewController::finishUploadFile(const std::string& /*file*/, const std::string& source,
                                                   const DropboxMetadata& /*metadata*/) {
  Item* item = uploadedItem(source);
  if (item == nullptr) return;
  item->progress.reset();
  changed();
}

void RestoreBackupViewController::openQLPreview() {
  const Item* item = clickedItem();
  if (item == nullptr) return;
  services_.tasks.mainThread(
      [&handOver = services_.handOver, path = item->path] { handOver.presentOptionsMenu(path); });
}

bool RestoreBackupViewController::deleteRow(const IndexPath& indexPath) {
  if (!hasRow(*this, indexPath)) return false;
  const auto item = items_.begin() + indexPath.row;
  if (lastPathComponent(item->path) == services_.preferences.stringForKey(key::FILE_NAME)) {
    showNotice("", services_.texts.text(text_key::LAST_BACKUP_ERROR_MESSAGE));
    return true;
  }
  services_.files.remove(item->path).ignore("a file that stays is in the list when that is opened again");
  items_.erase(item);
  changed();
  return true;
}

void RestoreBackupViewController::edit() {
  editing_ = !editing_;
  changed();
}

const RestoreBackupViewController::Item* RestoreBackupViewController::clickedItem() const {
  const auto index = static_cast<std::size_t>(clickedIndex_);
  return clickedIndex_ >= 0 && index < items_.size() ? &items_[index] : nullptr;
}

RestoreBackupViewController::Item* RestoreBackupViewController::uploadedItem(const std::string& source) {
  const auto found = uploadedItem_.find(lastPathComponent(source));
  if (found == uploadedItem_.end()) return nullptr;
  const auto index = static_cast<std::size_t>(found->second);
  return index < items_.size() ? &items_[index] : nullptr;
}

void RestoreBackupViewController::showNotice(std::string_view titleKey, std::optional<std::string> message) {
  AlertView alert;
  if (!titleKey.empty()) alert.title = services_.texts.text(titleKey);
  alert.message = std::move(message);
  alert.buttons = {services_.texts.text(text_key::OK)};
  services_.presenter.showAlert(std::move(alert));
}

}  // namespace varnok
