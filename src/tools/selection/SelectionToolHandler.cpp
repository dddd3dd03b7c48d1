#include "tools/selection/SelectionToolHandler.h"

namespace orvanel {

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
  state_->forgetHit();
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

void SelectionToolHandler::mouseUp(const EventRecord& event, const ToolContext& context,
                                   QPointF /*viewPoint*/) {
  if (state_->isMoving()) {
    state_->endMoveSelection();
  } else {
    release(event, context);
  }
}

void SelectionToolHandler::mouseMoved(const EventRecord& event, const ToolContext& context,
                                      QPointF viewPoint) {
  state_->selectionMouseMoved(event, context, viewPoint);
}

bool SelectionToolHandler::keyDown(const EventRecord& event, const ToolContext& context) {
  if (event.key != keyCode::space || (!state_->isMoving() && !isOpen(context))) return false;
  state_->holdSpacebar();
  return true;
}

bool SelectionToolHandler::keyUp(const EventRecord& event, const ToolContext& /*context*/) {
  return event.key == keyCode::space && state_->releaseSpacebar();
}

}  // namespace orvanel
