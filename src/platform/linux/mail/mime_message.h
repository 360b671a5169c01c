// A mail message as the bytes that a mail program takes on its standard input.
//
// Lines end with LF: that is the line end of text on this system, which every
// sendmail program expects on its input and turns into the network's own. All
// content is encoded, so no line end of an attachment is ever touched.

#pragma once

#include <optional>
#include <string>

#include "platform/mail_composer.h"
#include "platform/status.h"
#include "platform/value.h"

namespace varnok {

struct MimeEnvelope {
  // Left out when absent: the mail program then fills in the user's address,
  // which it knows better, with the domain that mail from here is sent under.
  std::optional<std::string> from;
  Instant date;
  // Without angle brackets. Left out when absent; the mail program makes one.
  std::optional<std::string> messageID;
  // Letters and digits. Tells the parts from each other together with characters
  // that encoded content never holds.
  std::string boundary;
};

// Nothing, with a Status, when an address could smuggle in another address or a
// header line. Such characters in the subject and in file names are replaced.
std::optional<std::string> mimeMessage(const MailMessage& message, const MimeEnvelope& envelope, Status& status);

}  // namespace varnok
