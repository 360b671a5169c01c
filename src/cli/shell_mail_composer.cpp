#include "cli/shell_mail_composer.h"

namespace varnok {

void ShellMailComposer::present(MailMessage message, std::function<void(MailComposeResult)> finished) {
  message_ = std::move(message);
  finished_ = std::move(finished);
}

void ShellMailComposer::finish(MailComposeResult result) {
  if (auto finished = std::exchange(finished_, nullptr)) finished(result);
}

void ShellMailComposer::send(std::vector<std::string> to) {
  MailMessage message = *message_;
  message.to = std::move(to);
  platform_->present(std::move(message), [this](MailComposeResult result) {
    platform_->dismiss();
    finish(result);
  });
}

}  // namespace varnok
