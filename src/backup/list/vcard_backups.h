// What makes a file one of the list of backups, and how one of them is mailed.

#pragma once

#include <string>
#include <string_view>

#include "platform/mail_composer.h"
#include "platform/text_catalog.h"

namespace varnok {

// Capitals in the extension make no difference here, as they do elsewhere.
bool isVCardBackup(std::string_view path);

// `bytes` are those of the file at `path`. The message has no recipient yet.
MailMessage vCardMail(std::string bytes, std::string_view path, const TextCatalog& texts);

}  // namespace varnok
