#include "canvas/CursorImages.h"

#include <QGuiApplication>
#include <QPainter>
#include <QPixmap>
#include <QPoint>
#include <QSvgRenderer>
#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

namespace orvanel {
namespace {

/// The side of the drawings, in points.
constexpr int side = 24;

struct Drawing {
  const char* name;
  QPoint hotSpot;
};

Drawing drawingOf(CursorShape shape) {
  constexpr QPoint center(10, 10);
  constexpr QPoint palm(11, 12);
  switch (shape) {
    case CursorShape::openHand:
      return {"openHand", palm};
    case CursorShape::closedHand:
      return {"closedHand", palm};
    case CursorShape::move:
      return {"move", center};
    case CursorShape::rotate:
      return {"rotate", center};
    case CursorShape::zoomIn:
      return {"zoomIn", center};
    case CursorShape::zoomOut:
      return {"zoomOut", center};
    case CursorShape::add:
      return {"add", center};
    case CursorShape::subtract:
      return {"subtract", center};
    case CursorShape::intersect:
      return {"intersect", center};
    case CursorShape::arrow:
    case CursorShape::crosshair:
      break;
  }
  return {"crosshair", center};
}

QCursor drawCursor(CursorShape shape, int scale) {
  const Drawing drawing = drawingOf(shape);
  QSvgRenderer renderer(QStringLiteral(":/cursors/%1.svg").arg(QLatin1String(drawing.name)));
  QPixmap image(side * scale, side * scale);
  image.fill(Qt::transparent);
  QPainter painter(&image);
  renderer.render(&painter);
  painter.end();
  // On X11 the toolkit takes images and hot spots in device pixels, whatever the image's ratio says.
  const bool isInDevicePixels = QGuiApplication::platformName() == QLatin1String("xcb");
  image.setDevicePixelRatio(isInDevicePixels ? 1 : scale);
  const QPoint hotSpot = drawing.hotSpot * (isInDevicePixels ? scale : 1);
  return QCursor(image, hotSpot.x(), hotSpot.y());
}

}  // namespace

QCursor cursorImage(CursorShape shape, double scale) {
  if (shape == CursorShape::arrow) return Qt::ArrowCursor;
  static std::map<std::pair<CursorShape, int>, QCursor> cursors;
  const int wholeScale = std::max(1, static_cast<int>(std::lround(scale)));
  const auto [position, isNew] = cursors.try_emplace({shape, wholeScale});
  if (isNew) position->second = drawCursor(shape, wholeScale);
  return position->second;
}

}  // namespace orvanel
