#include "canvas/ViewGeometry.h"

#include <algorithm>
#include <cmath>

namespace orvanel::viewGeometry {
namespace {

double centringMargin(double viewLength, double canvasLength, double zoom) {
  return std::max(0.0, (viewLength - canvasLength * zoom) * 0.5);
}

double boundedOffset(double offset, double viewLength, double canvasLength, double zoom) {
  const double visible = viewLength / zoom;
  if (visible >= canvasLength) return 0.0;
  return std::clamp(offset, -(visible / 2.0), canvasLength - visible / 2.0);
}

}  // namespace

QPointF imageOrigin(const Placement& placement) {
  return {centringMargin(placement.viewSize.width(), placement.canvasSize.width(), placement.zoom),
          centringMargin(placement.viewSize.height(), placement.canvasSize.height(), placement.zoom)};
}

QPointF viewToDocument(const Placement& placement, QPointF viewPoint) {
  return (viewPoint - imageOrigin(placement)) / placement.zoom + placement.offset;
}

QPointF documentToView(const Placement& placement, QPointF documentPoint) {
  return (documentPoint - placement.offset) * placement.zoom + imageOrigin(placement);
}

QPoint viewToPixel(const Placement& placement, QPointF viewPoint) {
  const QPointF documentPoint = viewToDocument(placement, viewPoint);
  return {static_cast<int>(std::floor(documentPoint.x())), static_cast<int>(std::floor(documentPoint.y()))};
}

QPointF boundedOffset(const Placement& placement, QPointF offset) {
  return {
      boundedOffset(offset.x(), placement.viewSize.width(), placement.canvasSize.width(), placement.zoom),
      boundedOffset(offset.y(), placement.viewSize.height(), placement.canvasSize.height(), placement.zoom)};
}

QPointF offsetKeeping(const Placement& placement, QPointF documentPoint, QPointF viewPoint) {
  return boundedOffset(placement, documentPoint - (viewPoint - imageOrigin(placement)) / placement.zoom);
}

IndicatorState indicatorState(double viewLength, double canvasLength, double offset, double zoom) {
  const double visible = viewLength / zoom;
  if (visible >= canvasLength) return {};
  // At most half a view of surround can be scrolled in at either end, so the total is the canvas plus one
  // view.
  return {false, visible / (canvasLength + visible),
          std::clamp((offset + visible / 2.0) / canvasLength, 0.0, 1.0)};
}

double offsetForIndicatorValue(double value, double viewLength, double canvasLength, double zoom) {
  return value * canvasLength - viewLength / zoom / 2.0;
}

}  // namespace orvanel::viewGeometry
