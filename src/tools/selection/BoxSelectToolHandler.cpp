#include "tools/selection/BoxSelectToolHandler.h"

#include <algorithm>
#include <cmath>

namespace orvanel {
namespace {

PixelRect onCanvas(const PixelRect& rect, const Document& document) {
  return rect.intersected({0, 0, document.canvasWidth.value(), document.canvasHeight.value()});
}

}  // namespace

PixelRect BoxSelectToolHandler::Box::pixels() const {
  const double left = std::floor(topLeft.x());
  const double top = std::floor(topLeft.y());
  return {static_cast<int>(left), static_cast<int>(top), static_cast<int>(std::ceil(bottomRight.x()) - left),
          static_cast<int>(std::ceil(bottomRight.y()) - top)};
}

void BoxSelectToolHandler::begin(const EventRecord& /*event*/, const ToolContext& context,
                                 QPointF viewPoint) {
  const std::optional<QPointF> point = clampedDocumentPoint(context, viewPoint);
  if (!point) return;
  start_ = *point;
  current_ = *point;
  state().beginShape(context, viewPoint, actionName());
}

void BoxSelectToolHandler::drag(const EventRecord& event, const ToolContext& context, QPointF viewPoint) {
  const std::optional<SelectionToolState::ShapeStep> step = state().dragShape(context, viewPoint);
  if (!step) return;
  if (step->shift) {
    start_ += *step->shift;
    current_ += *step->shift;
  } else {
    current_ = step->end;
  }
  refresh(event.modifiers, *context.document.lock());
}

void BoxSelectToolHandler::flagsChanged(const EventRecord& event, const ToolContext& context) {
  if (!state().isDrawing(context) || !state().hasDragged()) return;
  refresh(event.modifiers, *context.document.lock());
}

void BoxSelectToolHandler::release(const EventRecord& event, const ToolContext& context) {
  if (!state().isDrawing(context)) return;
  if (!state().hasDragged()) return state().commitClick();
  const DocumentPtr document = context.document.lock();
  const PixelRect pixels = box(event.modifiers).pixels();
  if (onCanvas(pixels, *document).isEmpty()) return state().abandon();
  const float feather = toolState_.selectionSettings.value().featherRadius;
  state().commitShape(event.modifiers, cost(*document, pixels, feather),
                      [&](Selection& selection) { fill(selection, pixels, feather, document->context()); });
}

BoxSelectToolHandler::Box BoxSelectToolHandler::box(std::uint32_t modifiers) const {
  QPointF corner = current_;
  if ((modifiers & modifier::command) != 0) {
    const QPointF extent = current_ - start_;
    const double side = std::max(std::abs(extent.x()), std::abs(extent.y()));
    corner = start_ + QPointF(extent.x() < 0.0 ? -side : side, extent.y() < 0.0 ? -side : side);
  }
  return {.topLeft = {std::min(start_.x(), corner.x()), std::min(start_.y(), corner.y())},
          .bottomRight = {std::max(start_.x(), corner.x()), std::max(start_.y(), corner.y())}};
}

void BoxSelectToolHandler::refresh(std::uint32_t modifiers, const Document& document) const {
  const Box drawn = box(modifiers);
  const PixelRect pixels = onCanvas(drawn.pixels(), document);
  state().showPath(pathOf(QRectF(drawn.topLeft, drawn.bottomRight)));
  state().showDragSize({.width = std::max(pixels.width, 0), .height = std::max(pixels.height, 0)});
}

}  // namespace orvanel
