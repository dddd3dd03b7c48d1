// The document's position in the view: conversions, scroll bounds and the state of the scroll indicators.
// Pure arithmetic in view points and document pixels; any thread.
#pragma once

#include <QPoint>
#include <QPointF>
#include <QSizeF>

namespace orvanel::viewGeometry {

/// The placement of a document in a view.
struct Placement {
  QSizeF viewSize;    ///< view points
  QSizeF canvasSize;  ///< document pixels
  QPointF offset;     ///< document pixels
  double zoom = 1.0;  ///< view points per document pixel
};

/// The document's viewport origin in view points; a canvas smaller than the view is centred.
[[nodiscard]] QPointF imageOrigin(const Placement& placement);
[[nodiscard]] QPointF viewToDocument(const Placement& placement, QPointF viewPoint);
[[nodiscard]] QPointF documentToView(const Placement& placement, QPointF documentPoint);
/// The whole pixel at a view point, possibly outside the canvas.
[[nodiscard]] QPoint viewToPixel(const Placement& placement, QPointF viewPoint);

/// The nearest offset within the scroll bounds: 0 on an axis where the canvas fits, otherwise at most half a
/// view of empty surround on each side.
[[nodiscard]] QPointF boundedOffset(const Placement& placement, QPointF offset);
/// The bounded offset that keeps `documentPoint` under `viewPoint`.
[[nodiscard]] QPointF offsetKeeping(const Placement& placement, QPointF documentPoint, QPointF viewPoint);

/// The state of a scroll indicator on one axis.
struct IndicatorState {
  bool isHidden = true;         ///< the canvas fits the view
  double knobProportion = 1.0;  ///< visible part of the total scrollable length
  double doubleValue = 0.0;     ///< position in the scroll range, 0 to 1
};
/// `viewLength` in view points, `canvasLength` and `offset` in document pixels.
[[nodiscard]] IndicatorState indicatorState(double viewLength, double canvasLength, double offset,
                                            double zoom);
/// The offset that corresponds to an indicator's value.
[[nodiscard]] double offsetForIndicatorValue(double value, double viewLength, double canvasLength,
                                             double zoom);

}  // namespace orvanel::viewGeometry
