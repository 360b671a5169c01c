#include "ui/mail_question.h"

#include <QRegularExpression>
#include <QStringList>
#include <utility>

namespace varnok {
namespace {

bool isAddress(const QString& text) {
  static const QRegularExpression kAddress(R"(^[^@\p{C}<>"]+@[^@\p{C}<>"]+$)",
                                           QRegularExpression::UseUnicodePropertiesOption);
  return kAddress.match(text).hasMatch();
}

}  // namespace

void MailQuestion::ask(const MailMessage& message, std::function<void(std::vector<std::string> to)> answered) {
  cancel();
  subject_ = QString::fromStdString(message.subject);
  QStringList names;
  for (const MailAttachment& attachment : message.attachments)
    names.append(QString::fromStdString(attachment.fileName));
  attachments_ = names.join('\n');
  answered_ = std::move(answered);
  Q_EMIT changed();
}

bool MailQuestion::send(const QString& addresses) {
  static const QRegularExpression kBetween(R"([,;\s]+)");
  std::vector<std::string> to;
  for (const QString& address : addresses.split(kBetween, Qt::SkipEmptyParts)) {
    if (!isAddress(address)) return false;
    to.push_back(address.toStdString());
  }
  if (to.empty()) return false;
  answer(std::move(to));
  return true;
}

void MailQuestion::answer(std::vector<std::string> to) {
  const auto answered = std::exchange(answered_, nullptr);
  if (!answered) return;
  Q_EMIT changed();
  answered(std::move(to));
}

}  // namespace varnok
