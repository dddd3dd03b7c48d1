#include "tools/transform/BoxHandle.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace orvanel::boxHandle {
namespace {

/// The positions as parts of the box's width and height.
constexpr Points unitPoints{QPointF(0.0, 0.0), QPointF(0.5, 0.0), QPointF(1.0, 0.0), QPointF(0.0, 0.5),
                            QPointF(1.0, 0.5), QPointF(0.0, 1.0), QPointF(0.5, 1.0), QPointF(1.0, 1.0)};

QPointF placed(const QRectF& box, QPointF unitPoint) {
  return {box.x() + box.width() * unitPoint.x(), box.y() + box.height() * unitPoint.y()};
}

QPointF unitPoint(BoxHandle handle) {
  return unitPoints.at(static_cast<std::size_t>(handle));
}

double distance(QPointF a, QPointF b) {
  return std::hypot(a.x() - b.x(), a.y() - b.y());
}

}  // namespace

bool isCorner(BoxHandle handle) {
  return handle == BoxHandle::topLeft || handle == BoxHandle::topRight || handle == BoxHandle::bottomLeft ||
         handle == BoxHandle::bottomRight;
}

bool isOnVerticalSide(BoxHandle handle) {
  return handle == BoxHandle::middleLeft || handle == BoxHandle::middleRight;
}

Points pointsOf(const QRectF& box) {
  Points points;
  std::ranges::transform(unitPoints, points.begin(), [&](QPointF unit) { return placed(box, unit); });
  return points;
}

Quad quadOf(const QRectF& box) {
  return {box.topLeft(), box.topRight(), box.bottomRight(), box.bottomLeft()};
}

QPointF pointOf(const QRectF& box, BoxHandle handle) {
  return placed(box, unitPoint(handle));
}

QPointF anchorOf(const QRectF& box, BoxHandle handle) {
  return placed(box, QPointF(1.0, 1.0) - unitPoint(handle));
}

std::optional<BoxHandle> hitHandle(const Points& handles, QPointF pointer) {
  for (std::size_t i = 0; i < handles.size(); ++i) {
    if (distance(handles[i], pointer) <= hitRadius) return static_cast<BoxHandle>(i);
  }
  const bool isInRing =
      std::ranges::any_of(handles, [&](QPointF point) { return distance(point, pointer) <= rotateRadius; });
  return isInRing ? std::optional(BoxHandle::rotate) : std::nullopt;
}

CursorShape cursorOver(std::optional<BoxHandle> hit) {
  if (hit == BoxHandle::inside) return CursorShape::move;
  return hit == BoxHandle::rotate ? CursorShape::rotate : CursorShape::arrow;
}

bool contains(const QRectF& box, QPointF point) {
  return point.x() >= box.left() && point.x() < box.right() && point.y() >= box.top() &&
         point.y() < box.bottom();
}

bool contains(const Quad& quad, QPointF point) {
  bool isInside = false;
  for (std::size_t i = 0; i < quad.size(); ++i) {
    const QPointF a = quad[i];
    const QPointF b = quad[(i + 1) % quad.size()];
    if ((a.y() > point.y()) == (b.y() > point.y())) continue;
    const double crossing = a.x() + (point.y() - a.y()) / (b.y() - a.y()) * (b.x() - a.x());
    if (point.x() < crossing) isInside = !isInside;
  }
  return isInside;
}

}  // namespace orvanel::boxHandle
