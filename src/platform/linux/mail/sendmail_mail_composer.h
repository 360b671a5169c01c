// SendmailMailComposer: sends a message through a sendmail-compatible program
// (`sendmail -i -t`, which reads the recipients from the message). There is no
// window but for the recipients: present() sends at once when it knows them, and
// answers when the program has taken the message over.

#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>

#include "platform/clock.h"
#include "platform/developer_log.h"
#include "platform/linux/mail/mail_recipients.h"
#include "platform/mail_composer.h"
#include "platform/task_runner.h"

namespace varnok {

class SendmailMailComposer : public MailComposer {
 public:
  struct Settings {
    // The program's path. Empty: the first `sendmail` in searchPath.
    std::string program;
    // Directories with ":" between them.
    std::string searchPath;
    // A program that takes longer is ended, and so are those it started.
    std::chrono::milliseconds timeLimit = std::chrono::seconds(60);
  };

  // The references outlive every message under way.
  SendmailMailComposer(Settings settings, TaskRunner& tasks, const Clock& clock, DeveloperLog& log);

  // Asked for the recipients of a message that has none. Outlives every message
  // under way.
  void setRecipients(MailRecipients& recipients) { recipients_ = &recipients; }

  bool canSendMail() const override;

  // sent when the program took the message; cancelled when it has no recipient
  // and nobody names one; failed otherwise, with the reason in the log.
  void present(MailMessage message, std::function<void(MailComposeResult)> finished) override;

  void dismiss() override;

 private:
  std::optional<std::string> program() const;
  void start(MailMessage message, std::function<void(MailComposeResult)> finished);
  void finish(MailComposeResult result, std::function<void(MailComposeResult)> finished);
  MailComposeResult send(const MailMessage& message);

  const Settings settings_;
  TaskRunner& tasks_;
  const Clock& clock_;
  DeveloperLog& log_;
  MailRecipients* recipients_ = nullptr;
};

}  // namespace varnok
