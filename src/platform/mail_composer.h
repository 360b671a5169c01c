// MailComposer: a message handed to the user's mail service. Main thread.

#pragma once

#include <functional>
#include <string>
#include <vector>

namespace varnok {

enum class MailComposeResult : int { cancelled = 0, saved = 1, sent = 2, failed = 3 };

struct MailAttachment {
  std::string bytes;
  std::string mimeType;  // With its parameters: "text/csv;charset=UTF-8".
  std::string fileName;
};

struct MailMessage {
  std::vector<std::string> to;  // May be empty: the composer asks.
  std::string subject;
  std::string body;
  bool bodyIsHTML = false;
  std::vector<MailAttachment> attachments;
};

class MailComposer {
 public:
  virtual ~MailComposer() = default;

  virtual bool canSendMail() const = 0;

  // Shows the composer with `message`; `finished` runs once on the main thread.
  // It stays in front until dismiss().
  virtual void present(MailMessage message, std::function<void(MailComposeResult)> finished) = 0;

  // Takes the composer away, if one is shown.
  virtual void dismiss() = 0;
};

}  // namespace varnok
