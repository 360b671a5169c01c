#include "platform/linux/mail/sendmail_mail_composer.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cmath>
#include <memory>
#include <random>
#include <utility>

#include "platform/linux/mail/child_process.h"
#include "platform/linux/mail/mime_message.h"

namespace varnok {
namespace {

bool isProgram(const std::string& path) {
  struct stat information {};
  return ::stat(path.c_str(), &information) == 0 && S_ISREG(information.st_mode) && ::access(path.c_str(), X_OK) == 0;
}

// Directories that are empty or relative are passed over: what mail goes through
// must not depend on where the program was started.
std::optional<std::string> findInPath(std::string_view name, std::string_view path) {
  while (!path.empty()) {
    const std::size_t end = std::min(path.find(':'), path.size());
    const std::string candidate = std::string(path.substr(0, end)).append("/").append(name);
    if (path.starts_with('/') && isProgram(candidate)) return candidate;
    path.remove_prefix(std::min(end + 1, path.size()));
  }
  return std::nullopt;
}

std::string randomBoundary() {
  static constexpr std::string_view kCharacters = "abcdefghijklmnopqrstuvwxyz0123456789";
  std::random_device source;
  std::uniform_int_distribution<std::size_t> pick(0, kCharacters.size() - 1);
  std::string text(24, ' ');
  for (char& c : text)
    c = kCharacters[pick(source)];
  return text;
}

}  // namespace

SendmailMailComposer::SendmailMailComposer(Settings settings, TaskRunner& tasks, const Clock& clock, DeveloperLog& log)
    : settings_(std::move(settings)), tasks_(tasks), clock_(clock), log_(log) {}

bool SendmailMailComposer::canSendMail() const {
  return program().has_value();
}

std::optional<std::string> SendmailMailComposer::program() const {
  if (settings_.program.empty()) return findInPath("sendmail", settings_.searchPath);
  return isProgram(settings_.program) ? std::optional(settings_.program) : std::nullopt;
}

void SendmailMailComposer::present(MailMessage message, std::function<void(MailComposeResult)> finished) {
  if (!message.to.empty() || recipients_ == nullptr) {
    start(std::move(message), std::move(finished));
    return;
  }
  const auto asked = std::make_shared<MailMessage>(std::move(message));
  recipients_->ask(*asked, [this, asked, finished = std::move(finished)](std::vector<std::string> to) {
    asked->to = std::move(to);
    start(std::move(*asked), finished);
  });
}

void SendmailMailComposer::dismiss() {
  if (recipients_ != nullptr) recipients_->dismiss();
}

void SendmailMailComposer::start(MailMessage message, std::function<void(MailComposeResult)> finished) {
  if (message.to.empty()) {
    log_.write("Mail \"" + message.subject + "\" has no recipient and is not sent");
    finish(MailComposeResult::cancelled, std::move(finished));
    return;
  }
  // A task is copied; the attachments are not.
  auto shared = std::make_shared<const MailMessage>(std::move(message));
  tasks_.globalQueue(
      [this, shared, finished = std::move(finished)]() mutable { finish(send(*shared), std::move(finished)); });
}

void SendmailMailComposer::finish(MailComposeResult result, std::function<void(MailComposeResult)> finished) {
  tasks_.mainThread([result, finished = std::move(finished)] { finished(result); });
}

MailComposeResult SendmailMailComposer::send(const MailMessage& message) {
  const auto sendmail = program();
  if (!sendmail) {
    log_.write("Mail cannot be sent: there is no sendmail program");
    return MailComposeResult::failed;
  }
  MimeEnvelope envelope;
  envelope.date = Instant(std::chrono::seconds(std::llround(std::floor(clock_.now()))));
  envelope.boundary = randomBoundary();
  Status status;
  const auto bytes = mimeMessage(message, envelope, status);
  if (status.ok()) status = runProgram({*sendmail, "-i", "-t"}, *bytes, settings_.timeLimit);
  if (status.ok()) return MailComposeResult::sent;
  log_.write("Mail cannot be sent: " + status.message());
  return MailComposeResult::failed;
}

}  // namespace varnok
