#include "tools/navigation/HandToolHandler.h"

namespace orvanel {

// A temporary hand may end while the button is down; the release is then never reported.
void HandToolHandler::toolDeactivated(const ToolContext& context) {
  (void)context;
  drag_ = std::nullopt;
}

CursorShape HandToolHandler::cursor(std::uint32_t modifiers, const ToolContext& context) const {
  (void)modifiers;
  (void)context;
  return drag_ ? CursorShape::closedHand : CursorShape::openHand;
}

void HandToolHandler::mouseDown(const EventRecord& event, const ToolContext& context, QPointF viewPoint) {
  (void)event;
  drag_ = Drag{.document = context.document,
               .start = viewPoint,
               .offsetStart = {},
               .pointer = viewPoint,
               .zoom = 1.0,
               .offset = {}};
  if (const auto document = context.document.lock()) {
    drag_->offsetStart = document->viewportOffset.value();
    drag_->zoom = document->zoom();
    drag_->offset = drag_->offsetStart;
  }
  if (context.view != nullptr) context.view->showCursor(CursorShape::closedHand);
}

void HandToolHandler::mouseDragged(const EventRecord& event, const ToolContext& context, QPointF viewPoint) {
  (void)event;
  const auto document = context.document.lock();
  if (document == nullptr || context.view == nullptr || !drag_) return;
  // Another document may have become active while the button is down.
  if (document != drag_->document.lock()) return;
  // The wheel may have moved the view meanwhile: the drag goes on from there, without a jump.
  if (document->zoom() != drag_->zoom || document->viewportOffset.value() != drag_->offset) {
    drag_->start = drag_->pointer;
    drag_->offsetStart = document->viewportOffset.value();
  }
  context.view->scrollTo(drag_->offsetStart - (viewPoint - drag_->start) / document->zoom());
  drag_->pointer = viewPoint;
  drag_->zoom = document->zoom();
  drag_->offset = document->viewportOffset.value();
}

void HandToolHandler::mouseUp(const EventRecord& event, const ToolContext& context, QPointF viewPoint) {
  (void)event;
  (void)viewPoint;
  drag_ = std::nullopt;
  if (context.view != nullptr) context.view->showCursor(CursorShape::openHand);
}

}  // namespace orvanel
