#include "tools/transform/HandleDrag.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "tools/EventRecord.h"

namespace orvanel::handleDrag {
namespace {

constexpr double smallestFactor = 0.001;
constexpr double smallestSide = 1.0;

QRectF scaledByCorner(const QRectF& box, QPointF anchor, QPointF pointer, Proportions proportions) {
  const double width = box.width();
  const double height = box.height();
  double scaleX = std::abs(pointer.x() - anchor.x()) / width;
  double scaleY = std::abs(pointer.y() - anchor.y()) / height;
  if (proportions == Proportions::kept) scaleX = scaleY = std::max(1.0 / width, std::min(scaleX, scaleY));
  const double newWidth = std::max(scaleX * width, smallestSide);
  const double newHeight = std::max(scaleY * height, smallestSide);
  return {anchor.x() < pointer.x() ? anchor.x() : anchor.x() - newWidth,
          anchor.y() < pointer.y() ? anchor.y() : anchor.y() - newHeight, newWidth, newHeight};
}

/// One axis of a box, so that the four sides share their arithmetic.
struct Span {
  double start = 0.0;
  double length = 0.0;
};

Span dragged(const Span& span, bool isStart, double pointer) {
  const double end = span.start + span.length;
  if (!isStart) return {span.start, std::max(pointer - span.start, smallestSide)};
  const double length = std::max(end - std::min(end - smallestSide, pointer), smallestSide);
  return {end - length, length};
}

/// Scaled about its middle.
Span followed(const Span& span, double scale) {
  const double length = std::max(scale * span.length, smallestSide);
  return {span.start + (span.length - length) * 0.5, length};
}

QRectF scaledBySide(const QRectF& box, BoxHandle handle, QPointF pointer, Proportions proportions) {
  Span horizontal{box.x(), box.width()};
  Span vertical{box.y(), box.height()};
  const bool followsOtherAxis = proportions == Proportions::kept;
  if (boxHandle::isOnVerticalSide(handle)) {
    horizontal = dragged(horizontal, handle == BoxHandle::middleLeft, pointer.x());
    if (followsOtherAxis) vertical = followed(vertical, horizontal.length / box.width());
  } else {
    vertical = dragged(vertical, handle == BoxHandle::topCenter, pointer.y());
    if (followsOtherAxis) horizontal = followed(horizontal, vertical.length / box.height());
  }
  return {horizontal.start, vertical.start, horizontal.length, vertical.length};
}

/// Qt's own inverse rejects determinants below 1e-12, which two strong reductions reach.
QTransform inverseOf(const QTransform& m) {
  const double determinant = m.m11() * m.m22() - m.m12() * m.m21();
  return {m.m22() / determinant,
          -m.m12() / determinant,
          -m.m21() / determinant,
          m.m11() / determinant,
          (m.m21() * m.dy() - m.m22() * m.dx()) / determinant,
          (m.m12() * m.dx() - m.m11() * m.dy()) / determinant};
}

/// How far the pointer is from the anchor, as a multiple of the handle's distance; 1 if they coincide.
double factor(double pointer, double anchor, double handle) {
  const double reach = handle - anchor;
  return std::abs(reach) <= smallestFactor ? 1.0 : (pointer - anchor) / reach;
}

double awayFromZero(double scale) {
  if (std::abs(scale) >= smallestFactor) return scale;
  return scale < 0.0 ? -smallestFactor : smallestFactor;
}

/// The factors along the box's own axes.
QPointF scaleOf(BoxHandle handle, QPointF factors, Proportions proportions) {
  const double fx = factors.x();
  const double fy = factors.y();
  const bool isFree = proportions == Proportions::free;
  if (boxHandle::isOnVerticalSide(handle)) return {fx, isFree ? 1.0 : std::abs(fx)};
  if (!boxHandle::isCorner(handle)) return {isFree ? 1.0 : std::abs(fy), fy};
  if (isFree) return factors;
  const double mean = (std::abs(fx) + std::abs(fy)) * 0.5;
  return {std::copysign(mean, fx), std::copysign(mean, fy)};
}

}  // namespace

Proportions proportionsUnder(std::uint32_t modifiers) {
  return (modifiers & modifier::shift) != 0 ? Proportions::free : Proportions::kept;
}

std::optional<QRectF> scaledBox(const QRectF& box, BoxHandle handle, QPointF pointer,
                                Proportions proportions) {
  if (box.width() < smallestSide || box.height() <= 0.0) return std::nullopt;
  if (!boxHandle::isCorner(handle)) return scaledBySide(box, handle, pointer, proportions);
  return scaledByCorner(box, boxHandle::anchorOf(box, handle), pointer, proportions);
}

QTransform scaling(const QRectF& box, const QTransform& base, BoxHandle handle, QPointF pointer,
                   Proportions proportions) {
  const QPointF anchor = boxHandle::anchorOf(box, handle);
  const QPointF point = boxHandle::pointOf(box, handle);
  const QTransform inverse = inverseOf(base);
  const QPointF local = inverse.map(pointer);
  const QPointF factors(factor(local.x(), anchor.x(), point.x()), factor(local.y(), anchor.y(), point.y()));
  const QPointF scale = scaleOf(handle, factors, proportions);
  return inverse * QTransform::fromTranslate(-anchor.x(), -anchor.y()) *
         QTransform::fromScale(awayFromZero(scale.x()), awayFromZero(scale.y())) *
         QTransform::fromTranslate(anchor.x(), anchor.y()) * base;
}

QTransform rotation(QPointF centre, double radians) {
  const double sine = std::sin(radians);
  const double cosine = std::cos(radians);
  return QTransform::fromTranslate(-centre.x(), -centre.y()) *
         QTransform(cosine, sine, -sine, cosine, 0.0, 0.0) *
         QTransform::fromTranslate(centre.x(), centre.y());
}

double angleOf(QPointF centre, QPointF pointer) {
  return std::atan2(pointer.y() - centre.y(), pointer.x() - centre.x());
}

double snappedAngle(double radians) {
  constexpr double step = 0.2617993877991494;
  return std::round(radians / step) * step;
}

float snappedAngle(float radians) {
  constexpr auto step = std::bit_cast<float>(0x3E860A91U);
  return std::round(radians / step) * step;
}

}  // namespace orvanel::handleDrag
