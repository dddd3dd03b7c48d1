#include "tools/selection/SelectionToolHandler.h"

namespace orvanel {

void SelectionToolHandler::toolActivated(const ToolContext& /*context*/) {
  state_->forgetPointer();
}

void SelectionToolHandler::toolDeactivated(const ToolContext& /*context*/) {
  abandon();
}

CursorShape SelectionToolHandler::cursor(std::uint32_t modifiers, const ToolContext& context) const {
  return state_->selectionCursor(modifiers, context);
}

void SelectionToolHandler::mouseDown(const EventRecord& event, const ToolContext& context,
                                     QPointF viewPoint) {
  // The release of an earlier press may never have been reported.
  abandon();
  state_->forgetPointer();
  if (state_->shouldMoveSelection(event, context, viewPoint)) {
    state_->beginMoveSelection(context, viewPoint);
  } else {
    begin(event, context, viewPoint);
  }
}

void SelectionToolHandler::mouseDragged(const EventRecord& event, const ToolContext& context,
                                        QPointF viewPoint) {
  if (state_->isMoving()) {
    state_->continueMoveSelection(context, viewPoint);
  } else {
    drag(event, context, viewPoint);
  }
}

void SelectionToolHandler::mouseUp(const EventRecord& event, const ToolContext& context, QPointF viewPoint) {
  if (state_->isMoving()) {
    state_->endMoveSelection();
  } else {
    release(event, context);
  }
  if (!isOpen(context)) state_->rememberPointer(viewPoint);
}

void SelectionToolHandler::mouseMoved(const EventRecord& event, const ToolContext& context,
                                      QPointF viewPoint) {
  state_->selectionMouseMoved(event, context, viewPoint);
}

bool SelectionToolHandler::keyDown(const EventRecord& event, const ToolContext& context) {
  if (!state_->isMoving() && !isOpen(context)) return false;
  switch (event.key) {
    case keyCode::space:
      state_->holdSpacebar();
      return true;
    case keyCode::escape:
      cancel();
      return true;
    case keyCode::backspace:
    case keyCode::forwardDelete:
      return true;
    default:
      return false;
  }
}

bool SelectionToolHandler::keyUp(const EventRecord& event, const ToolContext& /*context*/) {
  return event.key == keyCode::space && state_->releaseSpacebar();
}

}  // namespace orvanel
