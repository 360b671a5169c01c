// MailQuestion: who is to get a message, for QML, where the mail service cannot
// ask that itself. Main thread.

#pragma once

#include <QObject>
#include <QQmlEngine>
#include <functional>

#include "platform/linux/mail/mail_recipients.h"

namespace varnok {

class MailQuestion : public QObject, public MailRecipients {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("made by the application")
  Q_PROPERTY(bool shown READ shown NOTIFY changed)
  Q_PROPERTY(QString subject READ subject NOTIFY changed)
  // Names of files, a line each.
  Q_PROPERTY(QString attachments READ attachments NOTIFY changed)

 public:
  bool shown() const { return answered_ != nullptr; }
  QString subject() const { return subject_; }
  QString attachments() const { return attachments_; }

  // To these addresses, with commas, semicolons or blanks between them. False,
  // and the question stays, when there is none or one is wrong.
  Q_INVOKABLE bool send(const QString& addresses);
  Q_INVOKABLE void cancel() { answer({}); }

  void ask(const MailMessage& message, std::function<void(std::vector<std::string> to)> answered) override;
  void dismiss() override { cancel(); }

 Q_SIGNALS:
  void changed();

 private:
  void answer(std::vector<std::string> to);

  QString subject_;
  QString attachments_;
  std::function<void(std::vector<std::string> to)> answered_;
};

}  // namespace varnok
