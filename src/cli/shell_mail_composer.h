// ShellMailComposer: the mail composer as the shell shows it. The message is in
// front until the one at the keyboard, or the program that drives the shell,
// says what became of it. Main thread.

#pragma once

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/mail_composer.h"

namespace varnok {

class ShellMailComposer : public MailComposer {
 public:
  // A program that drives the shell can send mail itself.
  void setDrivenByProgram(bool driven) { drivenByProgram_ = driven; }
  // What sends in earnest; set before the first message, outlives it.
  void setPlatform(MailComposer& platform) { platform_ = &platform; }

  bool canSendMail() const override { return drivenByProgram_ || platform_->canSendMail(); }
  void present(MailMessage message, std::function<void(MailComposeResult)> finished) override;
  void dismiss() override { message_.reset(); }

  // Null when no composer is in front.
  const MailMessage* message() const { return message_ ? &*message_ : nullptr; }
  // Whether the message still waits for finish() or send().
  bool waits() const { return finished_ != nullptr; }

  // Ends the composing. Nothing is sent by this.
  void finish(MailComposeResult result);
  // Hands the message to the platform's composer, whose result is taken over.
  void send(std::vector<std::string> to);

 private:
  bool drivenByProgram_ = false;
  MailComposer* platform_ = nullptr;
  std::optional<MailMessage> message_;
  std::function<void(MailComposeResult)> finished_;
};

}  // namespace varnok
