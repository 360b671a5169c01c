// The desktop portal, which shows the user what a program cannot show itself.
//
// Threads. Calls block for the time limit at most, and are made on worker
// threads. Answers come on the buses' thread, possibly before the call that
// they belong to has returned.

#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/status.h"

namespace varnok {

enum class PortalAnswer {
  done,
  cancelled,  // By the user.
  failed,     // Also when the portal went away while it was being waited for.
};

// What the user was asked. Its end takes the question away, if it is still
// there, and then no answer comes.
class PortalQuestion {
 public:
  virtual ~PortalQuestion() = default;
};

struct PortalMail {
  std::vector<std::string> to;
  std::string subject;
  std::string body;  // Plain text.
  // Files that stay where they are for as long as a mail program may need them.
  // The portal takes no others, such as deleted ones and those in memory.
  std::vector<std::string> attachments;
};

// Files of one kind, to choose among.
struct PortalFiles {
  std::string title;                  // Of the dialog.
  std::string kind;                   // What such files are called.
  std::vector<std::string> patterns;  // Of their names, such as "*.vcf".
};

class DesktopPortal {
 public:
  using Answered = std::function<void(PortalAnswer)>;
  // `uris` is empty unless the answer is done.
  using Chosen = std::function<void(PortalAnswer, std::vector<std::string> uris)>;

  virtual ~DesktopPortal() = default;

  // Each gives null with a Status when the portal did not take the question;
  // then no answer comes. The user has no time limit.
  virtual std::unique_ptr<PortalQuestion> composeMail(const PortalMail& mail, Answered answered, Status& status) = 0;
  // `ask` lets the user choose among the applications that open such files.
  virtual std::unique_ptr<PortalQuestion> openFile(const std::string& path, bool ask, Answered answered,
                                                   Status& status) = 0;
  virtual std::unique_ptr<PortalQuestion> chooseFiles(const PortalFiles& files, Chosen chosen, Status& status) = 0;
  virtual std::unique_ptr<PortalQuestion> openURI(const std::string& uri, Answered answered, Status& status) = 0;

  // Ends the calls under way; those that follow fail at once. Any thread.
  virtual void cancel() = 0;
};

}  // namespace varnok
