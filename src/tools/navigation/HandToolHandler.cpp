#include "tools/navigation/HandToolHandler.h"

namespace orvanel {

void HandToolHandler::endDrag() {
  dragStart_ = std::nullopt;
  offsetStart_ = std::nullopt;
}

// A temporary hand may end while the button is down; the release is then never reported.
void HandToolHandler::toolDeactivated(const ToolContext& context) {
  (void)context;
  endDrag();
}

CursorShape HandToolHandler::cursor(std::uint32_t modifiers, const ToolContext& context) const {
  (void)modifiers;
  (void)context;
  return dragStart_ ? CursorShape::closedHand : CursorShape::openHand;
}

void HandToolHandler::mouseDown(const EventRecord& event, const ToolContext& context, QPointF viewPoint) {
  (void)event;
  dragStart_ = viewPoint;
  offsetStart_ = std::nullopt;
  draggedDocument_ = context.document;
  if (const auto document = context.document.lock()) offsetStart_ = document->viewportOffset.value();
  if (context.view != nullptr) context.view->showCursor(CursorShape::closedHand);
}

void HandToolHandler::mouseDragged(const EventRecord& event, const ToolContext& context, QPointF viewPoint) {
  (void)event;
  const auto document = context.document.lock();
  if (document == nullptr || context.view == nullptr || !dragStart_ || !offsetStart_) return;
  // Another document may have become active while the button is down.
  if (document != draggedDocument_.lock()) return;
  context.view->scrollTo(*offsetStart_ - (viewPoint - *dragStart_) / document->zoom());
}

void HandToolHandler::mouseUp(const EventRecord& event, const ToolContext& context, QPointF viewPoint) {
  (void)event;
  (void)viewPoint;
  endDrag();
  if (context.view != nullptr) context.view->showCursor(CursorShape::openHand);
}

}  // namespace orvanel
