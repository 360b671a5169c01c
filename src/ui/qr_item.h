// QrItem: a text as a QR code, black on white with its margin, whatever the
// theme: cameras want it so.

#pragma once

#include <QImage>
#include <QQuickPaintedItem>
#include <QString>

namespace varnok {

class QrItem : public QQuickPaintedItem {
  Q_OBJECT
  QML_NAMED_ELEMENT(QrCode)
  Q_PROPERTY(QString text READ text WRITE setText NOTIFY textChanged)

 public:
  explicit QrItem(QQuickItem* parent = nullptr) : QQuickPaintedItem(parent) {}

  QString text() const { return text_; }
  void setText(const QString& text);

  // One pixel a module, with the margin. Empty for a text too long to encode.
  static QImage image(const QString& text);

  void paint(QPainter* painter) override;

 Q_SIGNALS:
  void textChanged();

 private:
  QString text_;
  QImage image_;
};

}  // namespace varnok
