#include "ui/icon_item.h"

#include <QPainter>
#include <QPainterPath>
#include <array>
#include <cctype>
#include <cstdlib>
#include <string_view>

namespace varnok {
namespace {

constexpr double kGrid = 24;  // The side of the square that the paths are drawn in.
constexpr double kStroke = 2;

struct LineIcon {
  std::string_view name;
  const char* path;  // M, L, C and Z of the SVG path language, absolute; O x y r is a circle.
};
constexpr std::array kIcons{
    LineIcon{"back", "M 15 5 L 8 12 L 15 19"},
    LineIcon{"forward", "M 9 5 L 16 12 L 9 19"},
    LineIcon{"check", "M 4.5 12.5 L 10 18 L 19.5 7"},
    LineIcon{"close", "M 6 6 L 18 18 M 18 6 L 6 18"},
    LineIcon{"up", "M 12 19 L 12 5 M 5.5 11.5 L 12 5 L 18.5 11.5"},
    LineIcon{"backup", "M 12 3.5 L 12 14.5 M 7 9.5 L 12 14.5 L 17 9.5 M 4 15.5 L 4 20 L 20 20 L 20 15.5"},
    LineIcon{"import", "M 12 14.5 L 12 3.5 M 7 8.5 L 12 3.5 L 17 8.5 M 4 15.5 L 4 20 L 20 20 L 20 15.5"},
    LineIcon{"trash",
             "M 4 6.5 L 20 6.5 M 9 6.5 L 9 3.5 L 15 3.5 L 15 6.5 M 6 6.5 L 7 20.5 L 17 20.5 L 18 6.5"
             " M 10 10.5 L 10 16.5 M 14 10.5 L 14 16.5"},
    LineIcon{"copy", "M 8.5 8.5 L 20 8.5 L 20 20.5 L 8.5 20.5 Z M 15.5 8.5 L 15.5 4 L 4 4 L 4 15.5 L 8.5 15.5"},
    LineIcon{"send", "M 3.5 11.5 L 20.5 4 L 14.5 20.5 L 11 13.5 Z M 11 13.5 L 20.5 4"},
    LineIcon{"attach",
             "M 18.5 11 L 11.5 18 C 9.5 20 6.5 20 5 18.5 C 3.5 17 3.5 14 5.5 12 L 13 4.5"
             " C 14.3 3.2 16.3 3.2 17.5 4.5 C 18.7 5.7 18.7 7.7 17.5 9 L 10.5 16"},
    LineIcon{"lock", "M 5 11 L 19 11 L 19 20.5 L 5 20.5 Z M 8 11 L 8 8 C 8 2.5 16 2.5 16 8 L 16 11"},
    LineIcon{"people",
             "O 9 8.5 3.5 M 2.5 19.5 C 2.5 12.8 15.5 12.8 15.5 19.5 Z M 15.5 5.2 C 19.8 5.6 19.8 11.2 15.8 11.8"
             " M 18 14.6 C 20.6 15.4 21.5 17.2 21.5 19.5 L 19 19.5"},
    LineIcon{"settings",
             "M 3.5 7 L 12.5 7 O 15 7 2.5 M 17.5 7 L 20.5 7 M 3.5 17 L 6.5 17 O 9 17 2.5 M 11.5 17 L 20.5 17"},
    LineIcon{"help", "O 12 12 9 M 9 9.5 C 9 5.8 15 5.8 15 9.5 C 15 11.8 12 11.8 12 14 M 12 17 L 12 17.2"},
};

// The next number of `text`, which moves behind it.
double number(const char*& text) {
  char* end = nullptr;
  const double value = std::strtod(text, &end);
  text = end;
  return value;
}

QPointF point(const char*& text) {
  const double x = number(text);
  const double y = number(text);
  return {x, y};
}

QPainterPath pathOf(const char* text) {
  QPainterPath path;
  while (*text != '\0') {
    const char command = *text++;
    switch (command) {
      case 'M': path.moveTo(point(text)); break;
      case 'L': path.lineTo(point(text)); break;
      case 'C': {
        const QPointF first = point(text);
        const QPointF second = point(text);
        path.cubicTo(first, second, point(text));
        break;
      }
      case 'Z': path.closeSubpath(); break;
      case 'O': {
        const QPointF center = point(text);
        const double radius = number(text);
        path.addEllipse(center, radius, radius);
        break;
      }
      default: break;  // Blanks.
    }
  }
  return path;
}

}  // namespace

IconItem::IconItem(QQuickItem* parent) : QQuickPaintedItem(parent) {
  setAntialiasing(true);
  setImplicitSize(kGrid, kGrid);
}

void IconItem::setName(const QString& name) {
  if (name_ == name) return;
  name_ = name;
  redraw();
}

void IconItem::setColor(const QColor& color) {
  if (color_ == color) return;
  color_ = color;
  redraw();
}

void IconItem::setMirrored(bool mirrored) {
  if (mirrored_ == mirrored) return;
  mirrored_ = mirrored;
  redraw();
}

void IconItem::redraw() {
  update();
  Q_EMIT changed();
}

void IconItem::paint(QPainter* painter) {
  const std::string name = name_.toStdString();
  for (const LineIcon& icon : kIcons) {
    if (icon.name != name) continue;
    painter->setRenderHint(QPainter::Antialiasing);
    painter->scale(width() / kGrid, height() / kGrid);
    if (mirrored_) {
      painter->translate(kGrid, 0);
      painter->scale(-1, 1);
    }
    painter->strokePath(pathOf(icon.path), QPen(color_, kStroke, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  }
}

}  // namespace varnok
