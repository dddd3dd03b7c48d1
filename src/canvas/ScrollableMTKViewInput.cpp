#include <QAbstractItemView>
#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QNativeGestureEvent>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>
#include <set>
#include <utility>
#include <vector>

#include "canvas/CursorImages.h"
#include "canvas/EventTranslation.h"
#include "canvas/ScrollableMTKView.h"

namespace orvanel {
namespace {

/// View points per click of an ordinary wheel.
constexpr double pointsPerClick = 40.0;
constexpr double preciseZoomThreshold = 50.0;
constexpr double clickZoomThreshold = 20.0;
constexpr double magnifyThreshold = 0.2;
constexpr int lastZoomIndex = static_cast<int>(zoomTable.size()) - 1;

constexpr std::uint32_t keyModifiers =
    modifier::shift | modifier::super | modifier::option | modifier::command;
/// Some window managers take Alt and the wheel for themselves.
constexpr std::uint32_t zoomModifiers = modifier::option | modifier::command;

bool isTextInput(const QWidget* widget) {
  // A list whose rows can be edited takes input methods too, but its text is typed in a field of its own.
  const bool isList = qobject_cast<const QAbstractItemView*>(widget) != nullptr;
  return widget != nullptr && !isList && widget->testAttribute(Qt::WA_InputMethodEnabled);
}

}  // namespace

bool ScrollableMTKView::event(QEvent* event) {
  // Overlays may follow any input, even if the document doesn't change.
  if (event->isInputEvent()) requestRedraw();
  // Everything but the next position of a drag finds the drag where the pointer was.
  const bool isPosition = event->type() == QEvent::MouseMove || event->type() == QEvent::TabletMove ||
                          event->type() == QEvent::HoverMove;
  if (event->isInputEvent() && !isPosition) deliverDrag();
  if (event->type() == QEvent::NativeGesture) {
    handleNativeGesture(*static_cast<QNativeGestureEvent*>(event));
    return true;
  }
  return QWidget::event(event);
}

void ScrollableMTKView::wheelEvent(QWheelEvent* event) {
  const auto shown = document();
  if (shown == nullptr) return;
  const eventTranslation::WheelRecord wheel = eventTranslation::wheelRecord(*event);
  if ((wheel.modifiers & zoomModifiers) == 0) {
    const QPointF delta = wheel.delta * (wheel.hasPreciseDeltas ? 1.0 : pointsPerClick);
    scrollTo(shown->viewportOffset.value() - delta / shown->zoom());
  } else {
    scrollZoom(wheel, event->position());
  }
  event->accept();
}

void ScrollableMTKView::scrollZoom(const eventTranslation::WheelRecord& wheel, QPointF viewPoint) {
  if (wheel.phase == Qt::ScrollBegin) scrollZoomAccumulator_ = 0.0;
  // A click of an ordinary wheel is a step, in however many parts it is reported.
  const double threshold = wheel.hasPreciseDeltas ? preciseZoomThreshold : clickZoomThreshold;
  const double delta = wheel.delta.y() * (wheel.hasPreciseDeltas ? 1.0 : clickZoomThreshold);
  scrollZoomAccumulator_ += delta;
  // The event that ends a scroll has no delta, and doesn't say how precise the others were.
  while (delta != 0.0 && std::abs(scrollZoomAccumulator_) >= threshold) {
    const bool isIn = scrollZoomAccumulator_ > 0.0;
    scrollZoomAccumulator_ =
        wheel.hasPreciseDeltas ? 0.0 : scrollZoomAccumulator_ - (isIn ? threshold : -threshold);
    if (isIn) {
      zoomInAbout(viewPoint);
    } else {
      zoomOutAbout(viewPoint);
    }
  }
  if (wheel.phase == Qt::ScrollEnd) scrollZoomAccumulator_ = 0.0;
}

void ScrollableMTKView::handleNativeGesture(const QNativeGestureEvent& event) {
  if (document() == nullptr) return;
  switch (event.gestureType()) {
    case Qt::BeginNativeGesture:
    case Qt::EndNativeGesture:
      magnifyAccumulator_ = 0.0;
      break;
    case Qt::ZoomNativeGesture:
      magnify(event.value(), event.position());
      break;
    default:
      break;
  }
}

void ScrollableMTKView::magnify(double magnification, QPointF viewPoint) {
  const int zoomLevelIndex = document()->zoomLevelIndex.value();
  magnifyAccumulator_ += magnification;
  if (magnifyAccumulator_ > magnifyThreshold) {
    magnifyAccumulator_ = 0.0;
    if (zoomLevelIndex < lastZoomIndex) zoomInAbout(viewPoint);
  } else if (magnifyAccumulator_ < -magnifyThreshold) {
    magnifyAccumulator_ = 0.0;
    if (zoomLevelIndex > 0) zoomOutAbout(viewPoint);
  }
}

bool ScrollableMTKView::isGestureRunning() const {
  return isLeftButtonDown_ && activeHandler_ != nullptr && activeHandler_ == handlerOfCurrentTool();
}

void ScrollableMTKView::mousePressEvent(QMouseEvent* event) {
  readPointer(*event);
  const EventRecord record = eventTranslation::mouseRecord(*event);
  if (event->button() == Qt::MiddleButton && !isGestureRunning()) {
    isPanning_ = true;
    return panHandler_.mouseDown(record, toolContext(), event->position());
  }
  const auto handler = handlerOfCurrentTool();
  if (event->button() != Qt::LeftButton || isPanning_ || handler == nullptr) {
    return QWidget::mousePressEvent(event);
  }
  isLeftButtonDown_ = true;
  lastDrag_ = std::nullopt;
  activeHandler_ = handler;
  handler->mouseDown(record, toolContext(), event->position());
}

void ScrollableMTKView::mouseDoubleClickEvent(QMouseEvent* event) {
  mousePressEvent(event);
}

void ScrollableMTKView::mouseMoveEvent(QMouseEvent* event) {
  readPointer(*event);
  const EventRecord record = eventTranslation::mouseRecord(*event);
  if (isPanning_ && event->buttons().testFlag(Qt::MiddleButton)) {
    return panHandler_.mouseDragged(record, toolContext(), event->position());
  }
  // The release of a button may have gone to another window.
  if (isPanning_) endPan();
  if (!event->buttons().testFlag(Qt::LeftButton)) {
    endGesture(record, event->position());
    if (!catchUpTimer_.isActive()) getReady();
    if (const auto handler = handlerOfCurrentTool()) {
      handler->mouseMoved(record, toolContext(), event->position());
    }
    return;
  }
  if (!isGestureRunning()) return QWidget::mouseMoveEvent(event);
  pendingDrag_ = PendingDrag{record, event->position()};
  // Positions that come in while a step is worked on are taken together: the next frame shows only the last.
  if (activeHandler_->needsEveryPosition() || !pacer_.isRunning()) deliverDrag();
}

void ScrollableMTKView::deliverDrag() {
  const auto pending = std::exchange(pendingDrag_, std::nullopt);
  if (!pending || activeHandler_ == nullptr) return;
  lastDrag_ = pending;
  activeHandler_->mouseDragged(pending->record, toolContext(), pending->viewPoint);
}

void ScrollableMTKView::dragOnUnderPointer() {
  if (!isGestureRunning() || pendingDrag_ || !lastDrag_) return;
  pendingDrag_ = lastDrag_;
  pendingDrag_->record.modifiers = modifiers_;
}

void ScrollableMTKView::mouseReleaseEvent(QMouseEvent* event) {
  readPointer(*event);
  if (event->button() == Qt::MiddleButton && isPanning_) endPan();
  if (event->button() == Qt::LeftButton) endGesture(eventTranslation::mouseRecord(*event), event->position());
  QWidget::mouseReleaseEvent(event);
}

void ScrollableMTKView::endGesture(const EventRecord& record, QPointF viewPoint) {
  if (isGestureRunning()) {
    deliverDrag();
    const auto handler = std::exchange(activeHandler_, nullptr);
    handler->mouseUp(record, toolContext(), viewPoint);
  }
  isLeftButtonDown_ = false;
}

void ScrollableMTKView::endPan() {
  isPanning_ = false;
  panHandler_.mouseUp({}, toolContext(), {});
  resetCursor();
}

void ScrollableMTKView::readPointer(const QMouseEvent& event) {
  pointer_ = event.position();
  updateCursorPosition();
  const std::uint32_t modifiers =
      eventTranslation::modifierBits(event.modifiers()) | (modifiers_ & modifier::capsLock);
  // Keys pressed and released while another window had the focus were never reported.
  if (std::exchange(modifiers_, modifiers) != modifiers) resetCursor();
}

void ScrollableMTKView::updateCursorPosition() {
  const auto shown = document();
  if (shown == nullptr || !pointer_) return;
  const QPoint pixel = viewGeometry::viewToPixel(placementOf(*shown), *pointer_);
  const bool isInside = pixel.x() >= 0 && pixel.y() >= 0 && pixel.x() < shown->canvasWidth.value() &&
                        pixel.y() < shown->canvasHeight.value();
  shown->setCursorDocumentPosition(isInside ? std::optional<QPointF>(pixel) : std::nullopt);
}

void ScrollableMTKView::enterEvent(QEnterEvent* event) {
  pointer_ = event->position();
  updateCursorPosition();
  QWidget::enterEvent(event);
}

void ScrollableMTKView::leaveEvent(QEvent* event) {
  pointer_ = std::nullopt;
  if (const auto shown = document()) shown->setCursorDocumentPosition(std::nullopt);
  QWidget::leaveEvent(event);
}

void ScrollableMTKView::keyPressEvent(QKeyEvent* event) {
  const EventRecord record = eventTranslation::keyRecord(*event);
  if (eventTranslation::isModifierKey(event->key())) {
    handleFlagsChanged(record);
    return QWidget::keyPressEvent(event);
  }
  const bool isConsumed = offerKey(record) || handleViewKey(record);
  if (!isConsumed) QWidget::keyPressEvent(event);
}

bool ScrollableMTKView::offerKey(const EventRecord& record) {
  deliverDrag();
  const auto handler = handlerOfCurrentTool();
  if (handler == nullptr || !handler->keyDown(record, toolContext())) return false;
  requestRedraw();
  return true;
}

bool ScrollableMTKView::hasOpenGesture() {
  const auto handler = handlerOfCurrentTool();
  return isGestureRunning() || (handler != nullptr && handler->hasOpenGesture(toolContext()));
}

bool ScrollableMTKView::handleViewKey(const EventRecord& record) {
  const std::uint32_t modifiers = record.modifiers & keyModifiers;
  if (record.key == keyCode::space && modifiers == 0) {
    const bool isIdle = !isGestureRunning() && !record.isRepeat;
    if (isIdle && toolState_.currentTool() != Tool::hand) {
      toolState_.pushTool(Tool::hand);
      spaceHoldsHand_ = true;
    }
    return true;
  }
  if (record.key == keyCode::tab && modifiers == modifier::command) {
    NotificationCenter::standard().post(notification::cycleNextDocument);
    return true;
  }
  if (record.key == keyCode::tab && modifiers == (modifier::command | modifier::shift)) {
    NotificationCenter::standard().post(notification::cyclePreviousDocument);
    return true;
  }
  // On many keyboards "+" is typed with Shift.
  const bool isZoomIn = record.characters == QLatin1String("=") || record.characters == QLatin1String("+");
  if (isZoomIn && (modifiers & ~modifier::shift) == modifier::command) {
    zoomInAtCentre();
    return true;
  }
  if (modifiers != modifier::command) return false;
  if (record.characters == QLatin1String("-")) {
    zoomOutAtCentre();
  } else if (record.characters == QLatin1String("1")) {
    zoomActualSize();
  } else if (record.characters == QLatin1String("0")) {
    zoomFitOnScreen();
  } else {
    return false;
  }
  return true;
}

void ScrollableMTKView::keyReleaseEvent(QKeyEvent* event) {
  const EventRecord record = eventTranslation::keyRecord(*event);
  if (eventTranslation::isModifierKey(event->key())) {
    handleFlagsChanged(record);
    return QWidget::keyReleaseEvent(event);
  }
  // Auto-repeat reports releases although the key is still held down.
  if (record.isRepeat) return;
  const auto handler = handlerOfCurrentTool();
  if (handler != nullptr && handler->keyUp(record, toolContext())) return;
  if (record.key == keyCode::space) {
    popTemporaryHand();
  } else {
    QWidget::keyReleaseEvent(event);
  }
}

// Only the hand that the space bar brought goes with it; a command may have put another tool above it.
void ScrollableMTKView::popTemporaryHand() {
  if (!std::exchange(spaceHoldsHand_, false)) return;
  if (toolState_.currentTool() == Tool::hand) return toolState_.popTool();
  std::vector<Tool> stack = toolState_.toolStack.value();
  const auto hand = std::find(stack.rbegin(), stack.rend(), Tool::hand);
  if (hand == stack.rend() || std::next(hand) == stack.rend()) return;
  stack.erase(std::next(hand).base());
  toolState_.setToolStack(std::move(stack));
}

// Keys released while another widget has focus are never reported here.
void ScrollableMTKView::focusOutEvent(QFocusEvent* event) {
  popTemporaryHand();
  modifiers_ = 0;
  resetCursor();
  QWidget::focusOutEvent(event);
}

void ScrollableMTKView::handleFlagsChanged(const EventRecord& record) {
  modifiers_ = record.modifiers;
  if (const auto handler = handlerOfCurrentTool()) handler->flagsChanged(record, toolContext());
  if ((record.modifiers & modifier::command) == 0) {
    NotificationCenter::standard().post(notification::commitMRUCycle);
  }
  resetCursor();
}

void ScrollableMTKView::observeNotifications() {
  whenPosted(notification::focusCanvas, &ScrollableMTKView::takeFocus);
  whenPosted(notification::zoomIn, &ScrollableMTKView::zoomInAtCentre);
  whenPosted(notification::zoomOut, &ScrollableMTKView::zoomOutAtCentre);
  whenPosted(notification::zoomActualSize, &ScrollableMTKView::zoomActualSize);
  whenPosted(notification::zoomFitOnScreen, &ScrollableMTKView::zoomFitOnScreen);
  whenPosted(notification::toolChanged, &ScrollableMTKView::toolChanged);
  whenPosted(notification::undoRedoPerformed, &ScrollableMTKView::updateMoveBox);
  whenPosted(notification::activeLayerChanged, &ScrollableMTKView::updateMoveBox);
  whenPosted(notification::freeTransformApply, &ScrollableMTKView::applyFreeTransform);
  whenPosted(notification::freeTransformCancel, &ScrollableMTKView::cancelFreeTransform);
}

void ScrollableMTKView::whenPosted(std::string_view name, void (ScrollableMTKView::*action)()) {
  notificationObservers_.push_back(
      NotificationCenter::standard().observe(name, [this, action](const std::any&) { (this->*action)(); }));
}

void ScrollableMTKView::takeFocus() {
  if (!isTextInput(window()->focusWidget())) setFocus(Qt::OtherFocusReason);
}

void ScrollableMTKView::registerToolHandler(const std::shared_ptr<CanvasToolHandler>& handler) {
  for (const Tool tool : handler->supportedTools()) toolHandlers_[tool] = handler;
}

void ScrollableMTKView::collectOverlays() {
  std::set<CanvasViewLayer*> collected;
  renderer_.toolOverlayLayers.clear();
  for (const auto& [tool, handler] : toolHandlers_) {
    const auto overlay = handler->overlayLayer();
    if (overlay != nullptr && collected.insert(overlay.get()).second) {
      renderer_.toolOverlayLayers.push_back(overlay);
    }
  }
}

std::shared_ptr<CanvasToolHandler> ScrollableMTKView::handlerOfCurrentTool() const {
  const auto found = toolHandlers_.find(toolState_.currentTool());
  return found == toolHandlers_.end() ? nullptr : found->second;
}

ToolContext ScrollableMTKView::toolContext() {
  return {this, document_};
}

void ScrollableMTKView::handleToolChange() {
  const auto handler = handlerOfCurrentTool();
  if (handler == currentToolHandler_) return;
  leaveTool();
  // A tab's tool becomes current a moment before its document is shown here, which activates the tool.
  const auto active = toolState_.activeDocument();
  if (active != nullptr && active != document()) return;
  currentToolHandler_ = handler;
  if (handler != nullptr) handler->toolActivated(toolContext());
}

void ScrollableMTKView::leaveTool() {
  deliverDrag();
  if (const auto left = std::exchange(currentToolHandler_, nullptr)) left->toolDeactivated(toolContext());
}

void ScrollableMTKView::toolChanged() {
  handleToolChange();
  resetCursor();
}

void ScrollableMTKView::updateMoveBox() {
  if (toolState_.currentTool() == Tool::move) moveHandler_->updateBox(toolContext());
}

void ScrollableMTKView::endFreeTransform(void (FreeTransformToolHandler::*end)(const ToolContext&)) {
  if (!freeTransformHandler_->isOpen()) return;
  deliverDrag();
  (freeTransformHandler_.get()->*end)(toolContext());
  toolState_.popTool();
}

void ScrollableMTKView::showCursor(CursorShape cursor) {
  setCursor(cursorImage(cursor, devicePixelRatioF()));
}

void ScrollableMTKView::resetCursor() {
  if (isPanning_) return showCursor(CursorShape::closedHand);
  if (const auto handler = handlerOfCurrentTool()) {
    showCursor(handler->cursor(modifiers_, toolContext()));
  } else {
    unsetCursor();
  }
}

}  // namespace orvanel
