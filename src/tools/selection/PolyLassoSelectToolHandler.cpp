#include "tools/selection/PolyLassoSelectToolHandler.h"

#include <cmath>

#include "tools/selection/LassoSelectToolHandler.h"
#include "tools/selection/ShapeCost.h"

namespace orvanel {
namespace {

/// A click closer to the first corner closes the polygon, in view points.
constexpr double closingDistance = 10.0;

bool isNear(QPointF a, QPointF b) {
  return std::hypot(a.x() - b.x(), a.y() - b.y()) < closingDistance;
}

}  // namespace

void PolyLassoSelectToolHandler::mouseDown(const EventRecord& event, const ToolContext& context,
                                           QPointF viewPoint) {
  // A corner may lie within the existing selection.
  if (isOpen(context)) return placeCorner(event, context, viewPoint);
  SelectionToolHandler::mouseDown(event, context, viewPoint);
}

void PolyLassoSelectToolHandler::begin(const EventRecord& /*event*/, const ToolContext& context,
                                       QPointF viewPoint) {
  const std::optional<QPointF> point = clampedDocumentPoint(context, viewPoint);
  if (!point) return;
  polyPoints_ = {*point};
  pointer_ = viewPoint;
  state().beginShape(context, viewPoint, QStringLiteral("Polygonal Lasso Select"));
}

void PolyLassoSelectToolHandler::placeCorner(const EventRecord& event, const ToolContext& context,
                                             QPointF viewPoint) {
  const std::optional<QPointF> first = context.view->documentToView(polyPoints_.front());
  if (event.clickCount > 1 || (first && isNear(viewPoint, *first))) return close(event.modifiers, context);
  if (const std::optional<QPointF> point = clampedDocumentPoint(context, viewPoint)) {
    polyPoints_.push_back(*point);
  }
  pointer_ = viewPoint;
  refresh();
}

void PolyLassoSelectToolHandler::close(std::uint32_t modifiers, const ToolContext& context) {
  if (polyPoints_.size() <= 2) return abandon();
  const DocumentPtr document = context.document.lock();
  const std::vector<PolygonPoint> polygon = polygonOf(polyPoints_);
  state().commitShape(modifiers, shapeCost::ofPolygon(*document, polygon),
                      [&](Selection& selection) { selection.setPolygon(polygon, document->context()); });
  polyPoints_.clear();
}

void PolyLassoSelectToolHandler::drag(const EventRecord& /*event*/, const ToolContext& context,
                                      QPointF viewPoint) {
  if (!isOpen(context)) return;
  pointer_ = viewPoint;
  refresh();
}

void PolyLassoSelectToolHandler::mouseMoved(const EventRecord& event, const ToolContext& context,
                                            QPointF viewPoint) {
  if (isOpen(context)) return drag(event, context, viewPoint);
  SelectionToolHandler::mouseMoved(event, context, viewPoint);
}

bool PolyLassoSelectToolHandler::keyDown(const EventRecord& event, const ToolContext& context) {
  if (!isOpen(context)) return SelectionToolHandler::keyDown(event, context);
  switch (event.key) {
    case keyCode::space:
      return true;
    case keyCode::escape:
      abandon();
      return true;
    case keyCode::backspace:
    case keyCode::forwardDelete:
      removeLastCorner();
      return true;
    default:
      return false;
  }
}

void PolyLassoSelectToolHandler::flagsChanged(const EventRecord& /*event*/, const ToolContext& context) {
  if (isOpen(context)) refresh();
}

void PolyLassoSelectToolHandler::removeLastCorner() {
  polyPoints_.pop_back();
  if (polyPoints_.empty()) return abandon();
  refresh();
}

void PolyLassoSelectToolHandler::abandon() {
  SelectionToolHandler::abandon();
  polyPoints_.clear();
}

void PolyLassoSelectToolHandler::refresh() {
  state().showPolyline(polyPoints_, pointer_);
}

}  // namespace orvanel
