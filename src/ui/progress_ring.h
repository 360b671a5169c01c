// ProgressRing: how much of a run is done, as an arc from the top round.

#pragma once

#include <QColor>
#include <QQuickPaintedItem>

namespace varnok {

class ProgressRing : public QQuickPaintedItem {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(double value READ value WRITE setValue NOTIFY changed)  // 0 to 1.
  Q_PROPERTY(QColor color MEMBER color_ NOTIFY changed)
  Q_PROPERTY(QColor trackColor MEMBER trackColor_ NOTIFY changed)
  Q_PROPERTY(double thickness MEMBER thickness_ NOTIFY changed)

 public:
  explicit ProgressRing(QQuickItem* parent = nullptr);

  double value() const { return value_; }
  void setValue(double value);

  void paint(QPainter* painter) override;

 Q_SIGNALS:
  void changed();

 private:
  double value_ = 0;
  QColor color_ = Qt::black;
  QColor trackColor_ = Qt::gray;
  double thickness_ = 8;
};

}  // namespace varnok
