#include "ui/qr_item.h"

#include <qrencode.h>

#include <QPainter>
#include <cmath>
#include <memory>

namespace varnok {
namespace {

constexpr int kMargin = 4;  // Modules; fewer and some cameras do not find it.

}  // namespace

void QrItem::setText(const QString& text) {
  if (text_ == text) return;
  text_ = text;
  image_ = image(text);
  update();
  Q_EMIT textChanged();
}

QImage QrItem::image(const QString& text) {
  if (text.isEmpty()) return {};
  const std::unique_ptr<QRcode, void (*)(QRcode*)> code(
      QRcode_encodeString(text.toUtf8().constData(), /*version=*/0, QR_ECLEVEL_M, QR_MODE_8, /*casesensitive=*/1),
      &QRcode_free);
  if (code == nullptr) return {};
  QImage image(code->width + 2 * kMargin, code->width + 2 * kMargin, QImage::Format_RGB32);
  image.fill(Qt::white);
  for (int y = 0; y < code->width; ++y) {
    for (int x = 0; x < code->width; ++x) {
      if ((code->data[y * code->width + x] & 1U) != 0) image.setPixel(x + kMargin, y + kMargin, qRgb(0, 0, 0));
    }
  }
  return image;
}

// Whole pixels a module where they fit, so that the edges are sharp.
void QrItem::paint(QPainter* painter) {
  painter->fillRect(boundingRect(), Qt::white);
  if (image_.isNull()) return;
  const double side = std::min(width(), height());
  const double module = std::max(1.0, std::floor(side / image_.width()));
  const double drawn = module * image_.width();
  painter->drawImage(QRectF((width() - drawn) / 2, (height() - drawn) / 2, drawn, drawn), image_);
}

}  // namespace varnok
