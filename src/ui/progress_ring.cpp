#include "ui/progress_ring.h"

#include <QPainter>
#include <algorithm>
#include <cmath>

namespace varnok {
namespace {

// Finer steps cannot be seen, and each costs a painting.
constexpr double kSteps = 360;

}  // namespace

ProgressRing::ProgressRing(QQuickItem* parent) : QQuickPaintedItem(parent) {
  setAntialiasing(true);
  connect(this, &ProgressRing::changed, this, [this] { update(); });
}

void ProgressRing::setValue(double value) {
  const double held = std::round(std::clamp(value, 0.0, 1.0) * kSteps) / kSteps;
  if (held == value_) return;
  value_ = held;
  Q_EMIT changed();
}

void ProgressRing::paint(QPainter* painter) {
  const double inset = thickness_ / 2;
  const QRectF circle = boundingRect().adjusted(inset, inset, -inset, -inset);
  painter->setRenderHint(QPainter::Antialiasing);
  painter->setPen(QPen(trackColor_, thickness_));
  painter->drawEllipse(circle);
  if (value_ <= 0) return;
  // Sixteenths of a degree, against the clock.
  painter->setPen(QPen(color_, thickness_, Qt::SolidLine, Qt::RoundCap));
  painter->drawArc(circle, 90 * 16, -static_cast<int>(std::lround(value_ * 360 * 16)));
}

}  // namespace varnok
