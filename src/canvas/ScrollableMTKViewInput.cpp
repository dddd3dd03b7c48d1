#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QNativeGestureEvent>
#include <QWheelEvent>
#include <cmath>
#include <set>
#include <utility>

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

constexpr std::uint32_t keyModifiers = modifier::shift | modifier::option | modifier::command;

bool isTextInput(const QWidget* widget) {
  return widget != nullptr && widget->testAttribute(Qt::WA_InputMethodEnabled);
}

}  // namespace

bool ScrollableMTKView::event(QEvent* event) {
  // Overlays may follow any input, even if the document doesn't change.
  if (event->isInputEvent()) requestRedraw();
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
  const QPointF delta = wheel.delta * (wheel.hasPreciseDeltas ? 1.0 : pointsPerClick);
  if ((wheel.modifiers & modifier::option) != 0) {
    scrollZoom(delta.y(), wheel.hasPreciseDeltas ? preciseZoomThreshold : clickZoomThreshold, wheel.phase,
               event->position());
  } else {
    scrollTo(shown->viewportOffset.value() - delta / shown->zoom());
  }
  event->accept();
}

void ScrollableMTKView::scrollZoom(double delta, double threshold, Qt::ScrollPhase phase, QPointF viewPoint) {
  if (phase == Qt::ScrollBegin) scrollZoomAccumulator_ = 0.0;
  scrollZoomAccumulator_ += delta;
  if (scrollZoomAccumulator_ >= threshold) {
    scrollZoomAccumulator_ = 0.0;
    zoomInAbout(viewPoint);
  } else if (scrollZoomAccumulator_ <= -threshold) {
    scrollZoomAccumulator_ = 0.0;
    zoomOutAbout(viewPoint);
  }
  if (phase == Qt::ScrollEnd) scrollZoomAccumulator_ = 0.0;
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

void ScrollableMTKView::mousePressEvent(QMouseEvent* event) {
  const auto handler = handlerOfCurrentTool();
  if (event->button() != Qt::LeftButton || handler == nullptr) return QWidget::mousePressEvent(event);
  activeHandler_ = handler;
  handler->mouseDown(eventTranslation::mouseRecord(*event), toolContext(), event->position());
}

void ScrollableMTKView::mouseDoubleClickEvent(QMouseEvent* event) {
  mousePressEvent(event);
}

void ScrollableMTKView::mouseMoveEvent(QMouseEvent* event) {
  updateCursorPosition(event->position());
  const EventRecord record = eventTranslation::mouseRecord(*event);
  if (!event->buttons().testFlag(Qt::LeftButton)) {
    if (const auto handler = handlerOfCurrentTool()) {
      handler->mouseMoved(record, toolContext(), event->position());
    }
    return;
  }
  if (activeHandler_ != nullptr && activeHandler_->supportedTools().contains(toolState_.currentTool())) {
    activeHandler_->mouseDragged(record, toolContext(), event->position());
  } else {
    QWidget::mouseMoveEvent(event);
  }
}

void ScrollableMTKView::mouseReleaseEvent(QMouseEvent* event) {
  const bool isGestureEnd = event->button() == Qt::LeftButton && activeHandler_ != nullptr &&
                            activeHandler_->supportedTools().contains(toolState_.currentTool());
  if (isGestureEnd) {
    activeHandler_->mouseUp(eventTranslation::mouseRecord(*event), toolContext(), event->position());
    activeHandler_ = nullptr;
  }
  QWidget::mouseReleaseEvent(event);
}

void ScrollableMTKView::updateCursorPosition(QPointF viewPoint) {
  const auto shown = document();
  if (shown == nullptr) return;
  const QPoint pixel = viewGeometry::viewToPixel(placementOf(*shown), viewPoint);
  const bool isInside = pixel.x() >= 0 && pixel.y() >= 0 && pixel.x() < shown->canvasWidth.value() &&
                        pixel.y() < shown->canvasHeight.value();
  shown->setCursorDocumentPosition(isInside ? std::optional<QPointF>(pixel) : std::nullopt);
}

void ScrollableMTKView::leaveEvent(QEvent* event) {
  if (const auto shown = document()) shown->setCursorDocumentPosition(std::nullopt);
  QWidget::leaveEvent(event);
}

void ScrollableMTKView::keyPressEvent(QKeyEvent* event) {
  const EventRecord record = eventTranslation::keyRecord(*event);
  if (eventTranslation::isModifierKey(event->key())) {
    handleFlagsChanged(record);
    return QWidget::keyPressEvent(event);
  }
  const auto handler = handlerOfCurrentTool();
  const bool isConsumed =
      (handler != nullptr && handler->keyDown(record, toolContext())) || handleViewKey(record);
  if (!isConsumed) QWidget::keyPressEvent(event);
}

bool ScrollableMTKView::offerKey(const EventRecord& record) {
  const auto handler = handlerOfCurrentTool();
  if (handler == nullptr || !handler->keyDown(record, toolContext())) return false;
  requestRedraw();
  return true;
}

bool ScrollableMTKView::handleViewKey(const EventRecord& record) {
  const std::uint32_t modifiers = record.modifiers & keyModifiers;
  if (record.key == keyCode::space && modifiers == 0) {
    if (!record.isRepeat && toolState_.currentTool() != Tool::hand) {
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
  if (modifiers != modifier::command) return false;
  if (record.characters == QLatin1String("=") || record.characters == QLatin1String("+")) {
    zoomInAtCentre();
  } else if (record.characters == QLatin1String("-")) {
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
    spaceHoldsHand_ = false;
    toolState_.popTool();
  } else {
    QWidget::keyReleaseEvent(event);
  }
}

void ScrollableMTKView::popTemporaryHand() {
  if (std::exchange(spaceHoldsHand_, false)) toolState_.popTool();
}

// Keys released while another widget has focus are never reported here.
void ScrollableMTKView::focusOutEvent(QFocusEvent* event) {
  popTemporaryHand();
  modifiers_ = 0;
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
  if (currentToolHandler_ != nullptr) currentToolHandler_->toolDeactivated(toolContext());
  currentToolHandler_ = handler;
  if (handler != nullptr) handler->toolActivated(toolContext());
}

void ScrollableMTKView::toolChanged() {
  handleToolChange();
  resetCursor();
}

void ScrollableMTKView::showCursor(CursorShape cursor) {
  setCursor(cursorImage(cursor, devicePixelRatioF()));
}

void ScrollableMTKView::resetCursor() {
  if (const auto handler = handlerOfCurrentTool()) {
    showCursor(handler->cursor(modifiers_, toolContext()));
  } else {
    unsetCursor();
  }
}

}  // namespace orvanel
