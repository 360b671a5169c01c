// IconItem: one of the application's line icons in any colour and size.

#pragma once

#include <QColor>
#include <QQuickPaintedItem>
#include <QString>

namespace varnok {

class IconItem : public QQuickPaintedItem {
  Q_OBJECT
  QML_NAMED_ELEMENT(Icon)
  Q_PROPERTY(QString name READ name WRITE setName NOTIFY changed)
  Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY changed)
  // Points towards where the text begins, so it is mirrored with it.
  Q_PROPERTY(bool mirrored READ mirrored WRITE setMirrored NOTIFY changed)

 public:
  explicit IconItem(QQuickItem* parent = nullptr);

  QString name() const { return name_; }
  QColor color() const { return color_; }
  bool mirrored() const { return mirrored_; }
  void setName(const QString& name);
  void setColor(const QColor& color);
  void setMirrored(bool mirrored);

  void paint(QPainter* painter) override;

 Q_SIGNALS:
  void changed();

 private:
  void redraw();

  QString name_;
  QColor color_ = Qt::black;
  bool mirrored_ = false;
};

}  // namespace varnok
