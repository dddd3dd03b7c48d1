#include "tools/navigation/ZoomToolHandler.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace orvanel {
namespace {

/// Scrolls so that `documentPoint` lies under `viewPoint`, as nearly as the bounds allow.
void keepUnder(ToolCanvas& view, const Document& document, QPointF documentPoint, QPointF viewPoint) {
  if (const std::optional<QPointF> now = view.viewToDocument(viewPoint)) {
    view.scrollTo(document.viewportOffset.value() + documentPoint - *now);
  }
}

/// Corners in any order.
QRectF rectBetween(QPointF a, QPointF b) {
  return QRectF(a, b).normalized();
}

}  // namespace

ZoomToolHandler::ZoomToolHandler(const MetalContext& context, const ToolState& toolState)
    : toolState_(toolState), dragPathLayer_(std::make_shared<DragPathOverlayLayer>(context)) {}

void ZoomToolHandler::endDrag(const ToolContext& context) {
  drag_ = std::nullopt;
  dragPathLayer_->dragPath = std::nullopt;
  if (context.view != nullptr) context.view->requestRedraw();
}

void ZoomToolHandler::toolDeactivated(const ToolContext& context) {
  endDrag(context);
}

CursorShape ZoomToolHandler::cursor(std::uint32_t modifiers, const ToolContext& context) const {
  (void)context;
  return (modifiers & modifier::option) != 0 ? CursorShape::zoomOut : CursorShape::zoomIn;
}

DocumentPtr ZoomToolHandler::draggedDocument(const ToolContext& context) const {
  const DocumentPtr document = context.document.lock();
  if (context.view == nullptr || !drag_ || document != drag_->document.lock()) return nullptr;
  return document;
}

void ZoomToolHandler::mouseDown(const EventRecord& event, const ToolContext& context, QPointF viewPoint) {
  (void)event;
  if (context.view == nullptr) return;
  const std::optional<QPointF> start = context.view->viewToDocument(viewPoint);
  if (!start) return;
  drag_ = Drag{.document = context.document,
               .isScrubby = toolState_.zoomSettings.value().scrubbyZoom,
               .screenOrigin = viewPoint,
               .start = *start,
               .current = *start,
               .lastScreenPoint = viewPoint};
}

void ZoomToolHandler::mouseDragged(const EventRecord& event, const ToolContext& context, QPointF viewPoint) {
  (void)event;
  const DocumentPtr document = draggedDocument(context);
  if (document == nullptr) return;
  const QPointF distance = viewPoint - drag_->screenOrigin;
  drag_->thresholdMet = drag_->thresholdMet || std::hypot(distance.x(), distance.y()) >= dragThreshold;
  if (!drag_->thresholdMet) return;
  if (drag_->isScrubby) {
    scrub(*document, *context.view, viewPoint);
  } else {
    drawRectangle(*context.view, viewPoint);
  }
}

void ZoomToolHandler::scrub(Document& document, ToolCanvas& view, QPointF viewPoint) {
  const double dx = viewPoint.x() - drag_->lastScreenPoint.x();
  drag_->lastScreenPoint = viewPoint;
  document.setZoom(document.zoom() * std::pow(scrubFactor, dx));
  keepUnder(view, document, drag_->start, drag_->screenOrigin);
}

void ZoomToolHandler::drawRectangle(ToolCanvas& view, QPointF viewPoint) {
  drag_->current = view.viewToDocument(viewPoint).value_or(drag_->current);
  const QRectF rect = rectBetween(drag_->start, drag_->current);
  dragPathLayer_->dragPath = SelectionPath::rect(rect.x(), rect.y(), rect.width(), rect.height());
  view.requestRedraw();
}

void ZoomToolHandler::mouseUp(const EventRecord& event, const ToolContext& context, QPointF viewPoint) {
  const DocumentPtr document = draggedDocument(context);
  if (document == nullptr) return endDrag(context);
  const QPointF extent = viewPoint - drag_->screenOrigin;
  const bool isTooSmall = std::max(std::abs(extent.x()), std::abs(extent.y())) < dragThreshold;
  if (!drag_->thresholdMet || (!drag_->isScrubby && isTooSmall)) {
    const bool isOut = (event.modifiers & modifier::option) != 0;
    const QPointF fixedPoint = context.view->viewToDocument(viewPoint).value_or(drag_->start);
    if (isOut) {
      document->zoomOut();
    } else {
      document->zoomIn();
    }
    keepUnder(*context.view, *document, fixedPoint, viewPoint);
  } else if (!drag_->isScrubby) {
    drawRectangle(*context.view, viewPoint);
    zoomToRectangle(*document, *context.view);
  }
  endDrag(context);
}

void ZoomToolHandler::zoomToRectangle(Document& document, ToolCanvas& view) const {
  const QRectF rect = rectBetween(drag_->start, drag_->current);
  if (rect.width() <= 0.0 || rect.height() <= 0.0) return;
  const QSizeF size = view.viewSize();
  document.setZoom(std::min(size.width() / rect.width(), size.height() / rect.height()));
  keepUnder(view, document, rect.center(), QPointF(size.width(), size.height()) / 2.0);
}

// Escape gives up the rectangle; what was scrubbed stays.
bool ZoomToolHandler::keyDown(const EventRecord& event, const ToolContext& context) {
  if (!drag_ || event.key != keyCode::escape) return false;
  endDrag(context);
  return true;
}

}  // namespace orvanel
