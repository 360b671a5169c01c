#include "backup/run/backup_delivery.h"

#include <algorithm>
#include <array>
#include <chrono>

#include "app/preferences/export_settings.h"
#include "app/preferences/preference_keys.h"
#include "backup/files/backup_file.h"
#include "platform/text_key.h"

namespace varnok {
namespace {

using namespace std::chrono_literals;

struct BackupMail {
  std::string_view fileType;
  std::string_view subject;
  std::string_view body;
  std::string_view mimeType;
};
constexpr std::array kMails{
    BackupMail{"vcf", text_key::BACKUP_MAIL_SUBJECT, text_key::BACKUP_MAIL_BODY, "text/x-vcard;charset=UTF-8"},
    BackupMail{"zip", text_key::EXPORT_MAIL_SUBJECT_ZIP, text_key::EXPORT_MAIL_BODY_ZIP, "application/zip"},
    BackupMail{"csv", text_key::EXPORT_MAIL_SUBJECT, text_key::EXPORT_MAIL_BODY, "text/csv;charset=UTF-8"},
};

}  // namespace

MailMessage backupMail(std::string_view fileType, std::optional<std::string> bytes, std::string fileName,
                       const TextCatalog& texts) {
  const auto* found = std::ranges::find(kMails, fileType, &BackupMail::fileType);
  // Every other type is written as CSV, too.
  const BackupMail& mail = found == kMails.end() ? kMails.back() : *found;
  MailMessage message;
  message.subject = texts.text(mail.subject);
  message.body = texts.text(mail.body);
  message.bodyIsHTML = true;
  if (bytes) message.attachments.push_back({std::move(*bytes), std::string(mail.mimeType), std::move(fileName)});
  return message;
}

void BackupDelivery::onClick_Send() {
  Status status;
  std::optional<std::string> bytes = services_.files.readFile(stored(key::FILE_PATH), status);
  // Quirk: either alone still opens the composer, which then says what it lacks.
  if (!bytes && !services_.mail.canSendMail()) {
    AlertView alert;
    alert.title = services_.texts.text(text_key::ALERTVIEWTITLE);
    alert.message = services_.texts.text(text_key::MAILCOMPOSER_CANT_SEND);
    showNotice(std::move(alert));
    return;
  }
  services_.mail.present(
      backupMail(backupFileType(services_.preferences), std::move(bytes), stored(key::FILE_NAME), services_.texts),
      whileAlive_([this](MailComposeResult result) { mailComposeDidFinish(result); }));
}

void BackupDelivery::mailComposeDidFinish(MailComposeResult result) {
  services_.mail.dismiss();
  if (result != MailComposeResult::sent) {
    mailGivenUp_();
    offerDropBoxSoon();
    return;
  }
  AlertView alert;
  alert.title = services_.texts.text(text_key::EXPORT_INFO);
  alert.delegate = whileAlive_([this](const AlertView& /*answered*/, int /*index*/) { alertWasAnswered(); });
  showNotice(std::move(alert));
}

void BackupDelivery::alertWasAnswered() {
  services_.rating.userDidSignificantEvent(/*canPromptForRating=*/true);
  offerDropBoxSoon();
}

void BackupDelivery::offerDropBoxSoon() {
  services_.tasks.mainThreadAfter(500ms, whileAlive_([this] { showDropBoxOption(); }));
}

void BackupDelivery::showDropBoxOption() {
  if (!services_.dropbox.isLinked()) return;
  ActionSheet sheet;
  sheet.title = "Would you upload Dropbox?";
  sheet.buttons = {services_.texts.text(text_key::Upload), services_.texts.text(text_key::Close)};
  sheet.cancelButtonIndex = 1;
  sheet.delegate =
      whileAlive_([this](const ActionSheet& answered, int index) { clickedButtonAtIndex(answered, index); });
  services_.presenter.showActionSheet(std::move(sheet));
}

void BackupDelivery::clickedButtonAtIndex(const ActionSheet& /*sheet*/, int index) {
  if (index != 0) return;
  const std::string path = stored(key::FILE_PATH);
  services_.dropbox.uploadFile(path, std::string(lastPathComponent(path)));
}

void BackupDelivery::showNotice(AlertView alert) {
  alert.buttons = {services_.texts.text(text_key::OK)};
  services_.presenter.showAlert(std::move(alert));
}

std::string BackupDelivery::stored(std::string_view key) const {
  return services_.preferences.stringForKey(key).value_or("");
}

}  // namespace varnok
