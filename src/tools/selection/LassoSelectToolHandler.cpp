#include "tools/selection/LassoSelectToolHandler.h"

#include "tools/selection/ShapeCost.h"

namespace orvanel {
namespace {

/// Points closer to the one before are left out, in document pixels.
constexpr double leastDistance = 2.0;

double squaredLength(QPointF vector) {
  return QPointF::dotProduct(vector, vector);
}

}  // namespace

std::vector<PolygonPoint> polygonOf(const std::vector<QPointF>& documentPoints) {
  std::vector<PolygonPoint> points;
  points.reserve(documentPoints.size());
  for (const QPointF& point : documentPoints) {
    points.push_back({static_cast<float>(point.x()), static_cast<float>(point.y())});
  }
  return points;
}

void LassoSelectToolHandler::begin(const EventRecord& /*event*/, const ToolContext& context,
                                   QPointF viewPoint) {
  const std::optional<QPointF> point = clampedDocumentPoint(context, viewPoint);
  if (!point) return;
  lassoPoints_ = {*point};
  state().beginShape(context, viewPoint, QStringLiteral("Lasso Select"));
}

void LassoSelectToolHandler::drag(const EventRecord& /*event*/, const ToolContext& context,
                                  QPointF viewPoint) {
  const std::optional<SelectionToolState::ShapeStep> step = state().dragShape(context, viewPoint);
  if (!step) return;
  if (step->shift) {
    for (QPointF& point : lassoPoints_) point += *step->shift;
  } else {
    if (squaredLength(step->end - lassoPoints_.back()) < leastDistance * leastDistance) return;
    lassoPoints_.push_back(step->end);
  }
  state().showPolyline(lassoPoints_);
}

void LassoSelectToolHandler::release(const EventRecord& event, const ToolContext& context) {
  if (!state().isDrawing(context)) return;
  if (!state().hasDragged() || lassoPoints_.size() <= 2) return state().commitClick();
  const DocumentPtr document = context.document.lock();
  const std::vector<PolygonPoint> polygon = polygonOf(lassoPoints_);
  state().commitShape(event.modifiers, shapeCost::ofPolygon(*document, polygon),
                      [&](Selection& selection) { selection.setPolygon(polygon, document->context()); });
}

}  // namespace orvanel
