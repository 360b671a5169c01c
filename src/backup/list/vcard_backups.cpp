#include "backup/list/vcard_backups.h"

#include <algorithm>

#include "backup/files/backup_file.h"
#include "platform/text_key.h"

namespace varnok {

bool isVCardBackup(std::string_view path) {
  const auto lowerCase = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
  return std::ranges::equal(pathExtension(path), std::string_view("vcf"), {}, lowerCase);
}

MailMessage vCardMail(std::string bytes, std::string_view path, const TextCatalog& texts) {
  MailMessage message;
  message.subject = texts.text(text_key::Varnok);
  message.body = texts.text(text_key::BACKUP_MAIL_BODY);
  message.attachments.push_back({std::move(bytes), "text/x-vcard;charset=UTF-8", std::string(lastPathComponent(path))});
  return message;
}

}  // namespace varnok
