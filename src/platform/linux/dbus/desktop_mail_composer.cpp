#include "platform/linux/dbus/desktop_mail_composer.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <utility>

#include "platform/linux/mail/child_process.h"
#include "platform/linux/posix/optional_module.h"
#include "platform/linux/posix/posix_io.h"

namespace varnok {
namespace {

namespace fs = std::filesystem;

constexpr std::chrono::hours kAttachmentLife{24};

// A mail program may run in xdg-email's place and stay.
constexpr std::chrono::seconds kTimeToStart{10};

constexpr std::string_view kUnsafe = "/";

std::string safeName(const std::string& name) {
  const std::string last = name.substr(name.find_last_of(kUnsafe) + 1);
  return last.empty() || last == "." || last == ".." ? "attachment" : last;
}

Status writeFile(const std::string& path, std::string_view bytes) {
  const FileDescriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
  if (!file.valid()) return statusOfErrno(errno, "create", path);
  const int error = writeAll(file.get(), bytes);
  return error == 0 ? Status() : statusOfErrno(error, "write", path);
}

// A registered mail program; without one xdg-email asks a browser.
bool hasMailProgram(std::chrono::milliseconds limit) {
  return runProgram({"/bin/sh", "-c", "test -n \"$(xdg-mime query default x-scheme-handler/mailto)\""}, "", limit).ok();
}

}  // namespace

struct DesktopMailComposer::Composition {
  MailMessage message;
  std::function<void(MailComposeResult)> finished;
  OpenQuestions::Number number = 0;
  std::string folder;  // Of the attachments' copies; empty until they are made.
  PortalMail mail;     // For those that take files.

  // Copies of the attachments in a folder of their own. The mail program reads
  // them when it wants to.
  Status writeAttachments(const std::string& directory) {
    std::error_code error;
    fs::create_directories(directory, error);
    if (error) return statusOfErrno(error.value(), "make", directory);
    std::string name = directory + "/XXXXXX";
    if (::mkdtemp(name.data()) == nullptr) return statusOfErrno(errno, "make", name);
    folder = name;
    for (const MailAttachment& attachment : message.attachments) {
      const std::string path = folder + "/" + safeName(attachment.fileName);
      if (Status status = writeFile(path, attachment.bytes); !status.ok()) return status;
      mail.attachments.push_back(path);
    }
    mail.to = message.to;
    mail.subject = message.subject;
    mail.body = message.bodyIsHTML ? plainTextOfHTML(message.body) : message.body;
    return {};
  }

  void removeAttachments() {
    std::error_code ignored;
    if (!folder.empty()) fs::remove_all(folder, ignored);
    folder.clear();
  }
};

DesktopMailComposer::DesktopMailComposer(Settings settings, SendmailMailComposer& sendmail, TaskRunner& tasks,
                                         DeveloperLog& log)
    : settings_(std::move(settings)),
      sendmail_(sendmail),
      tasks_(tasks),
      log_(log),
      portal_("varnokMakePortal", settings_.bus) {}

bool DesktopMailComposer::canSendMail() const {
  return settings_.desktop || sendmail_.canSendMail();
}

void DesktopMailComposer::present(MailMessage message, std::function<void(MailComposeResult)> finished) {
  if (!settings_.desktop) {
    sendmail_.present(std::move(message), std::move(finished));
    return;
  }
  const auto composition = std::make_shared<Composition>();
  composition->message = std::move(message);
  composition->finished = std::move(finished);
  composition->number = questions_.begin();
  open_.emplace(composition->number, composition);
  tasks_.globalQueue([this, composition] { compose(composition); });
}

void DesktopMailComposer::compose(const std::shared_ptr<Composition>& composition) {
  removeOldAttachments(settings_.attachments);
  if (const Status status = composition->writeAttachments(settings_.attachments); !status.ok()) {
    log_.write("No attachment for a mail program: " + status.message());
  } else if (composeInPortal(composition) || composeInMailProgram(composition)) {
    return;
  }
  composition->removeAttachments();
  tasks_.mainThread([this, composition] {
    if (!open_.contains(composition->number)) return;
    sendmail_.present(std::move(composition->message),
                      [this, composition](MailComposeResult result) { settle(composition, result); });
  });
}

bool DesktopMailComposer::composeInPortal(const std::shared_ptr<Composition>& composition) {
  const auto portal = hasSessionBus() ? portal_.get() : nullptr;
  if (portal == nullptr) {
    log_.write("Mail: there is no portal to ask");
    return false;
  }
  Status status;
  auto question = portal->composeMail(
      composition->mail,
      [this, composition](PortalAnswer answer) {
        tasks_.mainThread([this, composition, answer] {
          if (answer == PortalAnswer::failed) log_.write("Mail: the portal gave up");
          settle(composition, answer == PortalAnswer::done        ? MailComposeResult::sent
                              : answer == PortalAnswer::cancelled ? MailComposeResult::cancelled
                                                                  : MailComposeResult::failed);
        });
      },
      status);
  if (question == nullptr) {
    log_.write("Mail: not through the portal: " + status.message());
    return status.code() == Status::Code::cancelled;  // Then nobody waits for it.
  }
  questions_.keep(composition->number, std::move(question));
  return true;
}

bool DesktopMailComposer::composeInMailProgram(const std::shared_ptr<Composition>& composition) {
  if (!questions_.isOpen(composition->number)) return false;  // Dismissed meanwhile.
  if (!hasMailProgram(settings_.bus.callLimit)) {
    log_.write("Mail: no mail program is registered");
    return false;
  }
  const PortalMail& mail = composition->mail;
  std::vector<std::string> arguments = {"xdg-email", "--utf8", "--subject", mail.subject, "--body", mail.body};
  for (const std::string& path : mail.attachments) {
    arguments.emplace_back("--attach");
    arguments.push_back(path);
  }
  // An address that begins with "-" would be taken for an option.
  std::ranges::copy_if(mail.to, std::back_inserter(arguments), [](const auto& to) { return !to.starts_with('-'); });
  const Status status = launchProgram(arguments, kTimeToStart);
  if (!status.ok()) {
    log_.write("Mail: not through the mail program: " + status.message());
    return false;
  }
  tasks_.mainThread([this, composition] { settle(composition, MailComposeResult::sent); });
  return true;
}

void DesktopMailComposer::settle(const std::shared_ptr<Composition>& composition, MailComposeResult result) {
  questions_.end(composition->number);
  if (open_.erase(composition->number) == 0) return;
  if (result != MailComposeResult::sent) composition->removeAttachments();
  composition->finished(result);
}

void DesktopMailComposer::dismiss() {
  while (!open_.empty()) {
    const auto composition = open_.begin()->second;  // settle() ends the map's own.
    settle(composition, MailComposeResult::cancelled);
  }
  sendmail_.dismiss();
}

void DesktopMailComposer::stop() {
  questions_.stop();
  portal_.stop();
}

void removeOldAttachments(const std::string& directory) {
  std::error_code error;
  const auto oldest = fs::file_time_type::clock::now() - kAttachmentLife;
  for (const auto& entry : fs::directory_iterator(directory, error)) {
    std::error_code ignored;
    if (entry.last_write_time(ignored) < oldest && !ignored) fs::remove_all(entry.path(), ignored);
  }
}

std::string plainTextOfHTML(std::string_view html) {
  static constexpr std::array<std::pair<std::string_view, std::string_view>, 11> kReplacements{{{"<br>", "\n"},
                                                                                                {"<br/>", "\n"},
                                                                                                {"<br />", "\n"},
                                                                                                {"</p>", "\n"},
                                                                                                {"</div>", "\n"},
                                                                                                {"&lt;", "<"},
                                                                                                {"&gt;", ">"},
                                                                                                {"&quot;", "\""},
                                                                                                {"&#39;", "'"},
                                                                                                {"&nbsp;", " "},
                                                                                                {"&amp;", "&"}}};
  std::string text;
  while (!html.empty()) {
    const auto* known =
        std::ranges::find_if(kReplacements, [&](const auto& entry) { return html.starts_with(entry.first); });
    if (known != kReplacements.end()) {
      text += known->second;
      html.remove_prefix(known->first.size());
    } else if (const std::size_t end = html.find('>'); html.front() == '<' && end != std::string_view::npos) {
      html.remove_prefix(end + 1);
    } else {
      text += html.front();
      html.remove_prefix(1);
    }
  }
  return text;
}

}  // namespace varnok
