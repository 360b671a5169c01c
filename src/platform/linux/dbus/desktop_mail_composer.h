// DesktopMailComposer: a message goes to the user's mail program, where the user
// finishes it. In this order, each when the one before it is not there or
// refuses, which is told in the log:
//
//   1. the desktop portal's mail,
//   2. the mail program that is registered, through xdg-email,
//   3. a sendmail-compatible program, which sends at once.
//
// Where nobody sits at a desktop it is the last alone.

#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "platform/developer_log.h"
#include "platform/linux/dbus/lazy_service.h"
#include "platform/linux/dbus/open_questions.h"
#include "platform/linux/mail/sendmail_mail_composer.h"
#include "platform/mail_composer.h"
#include "platform/task_runner.h"

namespace varnok {

class DesktopMailComposer : public MailComposer {
 public:
  struct Settings {
    bool desktop = false;     // Somebody sits at one.
    std::string attachments;  // A directory for copies; made when it is needed.
    BusSettings bus{};
  };

  // The references, and this, outlive every message under way.
  DesktopMailComposer(Settings settings, SendmailMailComposer& sendmail, TaskRunner& tasks, DeveloperLog& log);

  // Not asking anybody: also true when all that could take mail may refuse it.
  bool canSendMail() const override;

  // `finished` gets sent when the mail program has the message; the user may
  // still drop it there. There is no time limit while the portal waits for the
  // user; a portal that goes away meanwhile gives failed.
  void present(MailMessage message, std::function<void(MailComposeResult)> finished) override;

  // A message that the portal still shows is cancelled.
  void dismiss() override;

  // No answer comes from another thread any more. Before the end of what they
  // would be posted to.
  void stop();

 private:
  struct Composition;

  void compose(const std::shared_ptr<Composition>& composition);
  bool composeInPortal(const std::shared_ptr<Composition>& composition);
  bool composeInMailProgram(const std::shared_ptr<Composition>& composition);
  void settle(const std::shared_ptr<Composition>& composition, MailComposeResult result);

  const Settings settings_;
  SendmailMailComposer& sendmail_;
  TaskRunner& tasks_;
  DeveloperLog& log_;
  OpenQuestions questions_;
  std::map<OpenQuestions::Number, std::shared_ptr<Composition>> open_;  // Main thread.
  LazyService<DesktopPortal> portal_;
};

// Removes what messages of more than a day ago left in the directory of
// attachments. A mail program takes an attachment when the user sends it.
void removeOldAttachments(const std::string& directory);

// HTML as a mail program shows it that takes plain text only.
std::string plainTextOfHTML(std::string_view html);

}  // namespace varnok
