// Where the document lies in the view: conversions, bounds of scrolling, and what the scroll indicators
// show. Pure arithmetic in view points and document pixels; any thread.
#pragma once

#include <QPoint>
#include <QPointF>
#include <QSizeF>

namespace orvanel::viewGeometry {

/// One document in one view.
struct Placement {
  QSizeF viewSize;    ///< view points
  QSizeF canvasSize;  ///< document pixels
  QPointF offset;     ///< document pixels
  double zoom = 1.0;  ///< view points per document pixel
};

/// View point of the document's viewport origin: a canvas smaller than the view is centred.
[[nodiscard]] QPointF imageOrigin(const Placement& placement);
[[nodiscard]] QPointF viewToDocument(const Placement& placement, QPointF viewPoint);
/// The whole pixel under a view point, which may lie outside the canvas.
[[nodiscard]] QPoint viewToPixel(const Placement& placement, QPointF viewPoint);

/// The nearest offset that scrolling allows: 0 on an axis where the canvas fits, otherwise at most half a
/// view of empty surround on each side.
[[nodiscard]] QPointF boundedOffset(const Placement& placement, QPointF offset);
/// The bounded offset that keeps `documentPoint` under `viewPoint`.
[[nodiscard]] QPointF offsetKeeping(const Placement& placement, QPointF documentPoint, QPointF viewPoint);

/// What an indicator shows of one axis.
struct IndicatorState {
  bool isHidden = true;         ///< the canvas fits the view
  double knobProportion = 1.0;  ///< visible part of everything that can be scrolled into view
  double doubleValue = 0.0;     ///< position between the two ends of scrolling, 0 to 1
};
/// `viewLength` in view points, `canvasLength` and `offset` in document pixels.
[[nodiscard]] IndicatorState indicatorState(double viewLength, double canvasLength, double offset,
                                            double zoom);
/// The offset at which an indicator has this value.
[[nodiscard]] double offsetForIndicatorValue(double value, double viewLength, double canvasLength,
                                             double zoom);

}  // namespace orvanel::viewGeometry
