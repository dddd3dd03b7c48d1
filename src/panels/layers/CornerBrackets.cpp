#include "panels/layers/CornerBrackets.h"

#include <QPainter>
#include <QPainterPath>
#include <algorithm>

#include "look/Look.h"

namespace orvanel {

namespace {

constexpr double legLength = 8.0;
constexpr double cornerRadius = 2.0;
constexpr double lineWidth = 2.0;

}  // namespace

void paintCornerBrackets(QPainter& painter, const QRectF& picture) {
  const QRectF box = picture.adjusted(-lineWidth, -lineWidth, lineWidth, lineWidth);
  // The legs of small pictures don't meet.
  const double leg = std::min({legLength, box.width() / 3, box.height() / 3});
  QPainterPath bracket;
  bracket.moveTo(0, leg);
  bracket.lineTo(0, cornerRadius);
  bracket.quadTo(0, 0, cornerRadius, 0);
  bracket.lineTo(leg, 0);

  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(QPen(look::color::accent, lineWidth, Qt::SolidLine, Qt::FlatCap));
  painter.setBrush(Qt::NoBrush);
  const auto paintAt = [&](const QPointF& corner, double flipX, double flipY) {
    painter.drawPath(QTransform(flipX, 0, 0, flipY, corner.x(), corner.y()).map(bracket));
  };
  paintAt(box.topLeft(), 1, 1);
  paintAt(box.topRight(), -1, 1);
  paintAt(box.bottomLeft(), 1, -1);
  paintAt(box.bottomRight(), -1, -1);
  painter.restore();
}

}  // namespace orvanel
