// MailRecipients: asks the user who is to get a message. Main thread.

#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/mail_composer.h"

namespace varnok {

class MailRecipients {
 public:
  virtual ~MailRecipients() = default;

  // `answered` runs once, with nobody when the user gives up.
  virtual void ask(const MailMessage& message, std::function<void(std::vector<std::string> to)> answered) = 0;

  // Gives up the question under way, if there is one.
  virtual void dismiss() = 0;
};

}  // namespace varnok
