#include "tools/selection/SelectionToolState.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

#include "raster/FatalFault.h"

namespace orvanel {
namespace {

/// A press and release closer together than this is a click, in view points.
constexpr double dragThreshold = 3.0;

std::shared_ptr<const Selection> activeSelectionOf(const ToolContext& context) {
  const DocumentPtr document = context.document.lock();
  return document != nullptr ? document->activeSelection() : nullptr;
}

std::optional<QPointF> documentPoint(const ToolContext& context, QPointF viewPoint) {
  if (context.view == nullptr || context.document.expired()) return std::nullopt;
  return context.view->viewToDocument(viewPoint);
}

/// Whether the pixel at a view point is selected.
bool isSelected(const ToolContext& context, QPointF viewPoint) {
  const std::shared_ptr<const Selection> selection = activeSelectionOf(context);
  const std::optional<QPoint> pixel = documentPixel(context, viewPoint);
  return selection != nullptr && pixel && selection->isPointSelected(pixel->x(), pixel->y());
}

bool choosesMode(std::uint32_t modifiers) {
  return selectionModeOf(modifiers) != SelectionMode::replace;
}

int wholePixels(double offset) {
  const double rounded = std::round(offset);
  if (std::abs(rounded) > std::numeric_limits<std::int32_t>::max()) {
    fatalFault("Selection offset out of range");
  }
  return static_cast<int>(rounded);
}

}  // namespace

std::optional<QPointF> clampedDocumentPoint(const ToolContext& context, QPointF viewPoint) {
  const std::optional<QPointF> point = documentPoint(context, viewPoint);
  const DocumentPtr document = context.document.lock();
  if (!point || document == nullptr) return std::nullopt;
  return QPointF(std::clamp<double>(point->x(), 0.0, document->canvasWidth.value()),
                 std::clamp<double>(point->y(), 0.0, document->canvasHeight.value()));
}

std::optional<QPoint> documentPixel(const ToolContext& context, QPointF viewPoint) {
  const std::optional<QPointF> point = documentPoint(context, viewPoint);
  if (!point) return std::nullopt;
  return QPoint(static_cast<int>(std::floor(point->x())), static_cast<int>(std::floor(point->y())));
}

SelectionToolState::SelectionToolState(const MetalContext& context)
    : dragPathLayer(std::make_shared<DragPathOverlayLayer>(context)) {}

SelectionToolState::~SelectionToolState() {
  // The canvas, which owns this, can't be asked for a frame any more.
  view_ = nullptr;
  abandon();
}

// The pointer.

CursorShape SelectionToolState::selectionCursor(std::uint32_t modifiers, const ToolContext& context) const {
  if (isMoving()) return CursorShape::move;
  if (activeSelectionOf(context) == nullptr) return CursorShape::crosshair;
  switch (selectionModeOf(modifiers)) {
    case SelectionMode::add:
      return CursorShape::add;
    case SelectionMode::subtract:
      return CursorShape::subtract;
    case SelectionMode::intersect:
      return CursorShape::intersect;
    case SelectionMode::replace:
      break;
  }
  return hoverPoint_ && isSelected(context, *hoverPoint_) ? CursorShape::move : CursorShape::crosshair;
}

void SelectionToolState::selectionMouseMoved(const EventRecord& event, const ToolContext& context,
                                             QPointF viewPoint) {
  rememberPointer(viewPoint);
  if (choosesMode(event.modifiers)) return;
  const std::shared_ptr<const Selection> selection = activeSelectionOf(context);
  const std::optional<QPoint> pixel = documentPixel(context, viewPoint);
  if (!pixel) return;
  if (selection == nullptr) {
    // The pointer may still show what a command has deselected since.
    if (std::exchange(lastHitResult_, false)) context.view->showCursor(CursorShape::crosshair);
    lastHitPixel_ = std::nullopt;
    return;
  }
  const bool isHit = hits(context.document.lock(), *selection, *pixel);
  context.view->showCursor(isHit ? CursorShape::move : CursorShape::crosshair);
}

bool SelectionToolState::hits(const DocumentPtr& document, const Selection& selection, QPoint pixel) {
  if (hitDocument_.lock() != document) {
    lastHitPixel_ = std::nullopt;
    hitDocument_ = document;
    hitChanges_ = document->changes().observe([this](const DocumentChanges& changes) {
      if (contains<change::SelectionChanged>(changes)) lastHitPixel_ = std::nullopt;
    });
  }
  if (lastHitPixel_ != pixel) {
    lastHitPixel_ = pixel;
    lastHitResult_ = selection.isPointSelected(pixel.x(), pixel.y());
  }
  return lastHitResult_;
}

void SelectionToolState::forgetPointer() {
  hoverPoint_ = std::nullopt;
  lastHitPixel_ = std::nullopt;
}

// Moving the selection.

bool SelectionToolState::shouldMoveSelection(const EventRecord& event, const ToolContext& context,
                                             QPointF viewPoint) const {
  return !choosesMode(event.modifiers) && isSelected(context, viewPoint);
}

void SelectionToolState::beginMoveSelection(const ToolContext& context, QPointF viewPoint) {
  const std::optional<QPointF> start = documentPoint(context, viewPoint);
  if (activeSelectionOf(context) == nullptr || !start) return;
  const DocumentPtr document = context.document.lock();
  move_ = std::make_unique<SelectionMove>(document);
  move_->whenClosed([this] { reset(); });
  moveStart_ = *start;
  movedTo_ = {};
  attach(document, *context.view);
}

void SelectionToolState::continueMoveSelection(const ToolContext& context, QPointF viewPoint) {
  if (context.document.lock() != document_.lock()) return abandon();
  const std::optional<QPointF> point = documentPoint(context, viewPoint);
  if (move_ == nullptr || !point) return;
  const QPointF offset = *point - moveStart_;
  const QPoint whole(wholePixels(offset.x()), wholePixels(offset.y()));
  if (whole == movedTo_) return;
  movedTo_ = whole;
  move_->moveTo(whole.x(), whole.y());
  requestRedraw();
}

void SelectionToolState::endMoveSelection() {
  if (const std::unique_ptr<SelectionMove> move = std::move(move_)) move->close();
  reset();
}

// Drawing a shape.

void SelectionToolState::beginShape(const ToolContext& context, QPointF viewPoint,
                                    const QString& actionName) {
  const std::optional<QPointF> point = documentPoint(context, viewPoint);
  if (!point) return;
  const DocumentPtr document = context.document.lock();
  gesture_ = std::make_unique<SelectionGesture>(document, actionName);
  gesture_->whenClosed([this] { reset(); });
  lastDragPoint_ = *point;
  dragScreenOrigin_ = viewPoint;
  dragThresholdMet_ = false;
  attach(document, *context.view);
}

bool SelectionToolState::isDrawing(const ToolContext& context) {
  if (gesture_ == nullptr) return false;
  const bool isHere = context.view != nullptr && context.document.lock() == document_.lock();
  if (isHere && gesture_->isOpen()) return true;
  abandon();
  return false;
}

std::optional<SelectionToolState::ShapeStep> SelectionToolState::dragShape(const ToolContext& context,
                                                                           QPointF viewPoint) {
  if (!isDrawing(context)) return std::nullopt;
  const QPointF moved = viewPoint - dragScreenOrigin_;
  dragThresholdMet_ |= std::hypot(moved.x(), moved.y()) >= dragThreshold;
  if (!dragThresholdMet_) return std::nullopt;
  const std::optional<QPointF> point = documentPoint(context, viewPoint);
  const std::optional<QPointF> end = clampedDocumentPoint(context, viewPoint);
  if (!point || !end) return std::nullopt;
  const QPointF previous = std::exchange(lastDragPoint_, *point);
  return ShapeStep{.shift = spacebarHeld_ ? std::optional(*point - previous) : std::nullopt, .end = *end};
}

void SelectionToolState::commitShape(std::uint32_t modifiers, std::uint64_t bytes,
                                     const std::function<void(Selection&)>& fill) {
  if (const std::unique_ptr<SelectionGesture> gesture = std::move(gesture_)) {
    gesture->selectShape(selectionModeOf(modifiers), fill, bytes);
    gesture->close();
  }
  reset();
}

void SelectionToolState::commitClick() {
  if (const std::unique_ptr<SelectionGesture> gesture = std::move(gesture_)) {
    gesture->clear();
    gesture->close();
  }
  reset();
}

void SelectionToolState::abandon() {
  gesture_.reset();
  move_.reset();
  reset();
}

void SelectionToolState::cancel() {
  if (const std::unique_ptr<SelectionMove> move = std::move(move_)) move->takeBack();
  abandon();
}

void SelectionToolState::attach(const DocumentPtr& document, ToolCanvas& view) {
  document_ = document;
  view_ = &view;
  dragPathLayer->documentID = document->id;
}

void SelectionToolState::reset() {
  dragPathLayer->dragPath = std::nullopt;
  dragPathLayer->lassoPoints.clear();
  dragPathLayer->lassoScreenPoints = std::nullopt;
  dragPathLayer->documentID = std::nullopt;
  dragThresholdMet_ = false;
  spacebarHeld_ = false;
  if (const DocumentPtr document = document_.lock()) document->setDragSize(std::nullopt);
  document_.reset();
  requestRedraw();
  view_ = nullptr;
}

// The overlay.

void SelectionToolState::showPath(const SelectionPath& path) {
  dragPathLayer->dragPath = path;
  requestRedraw();
}

void SelectionToolState::showPolyline(std::vector<QPointF> documentPoints,
                                      const std::optional<QPointF>& pointer) {
  dragPathLayer->lassoPoints = std::move(documentPoints);
  dragPathLayer->lassoScreenPoints = std::nullopt;
  if (pointer) dragPathLayer->lassoScreenPoints = std::vector{*pointer};
  requestRedraw();
}

void SelectionToolState::showDragSize(const Document::DragSize& size) {
  if (const DocumentPtr document = document_.lock()) document->setDragSize(size);
}

void SelectionToolState::requestRedraw() {
  if (view_ != nullptr) view_->requestRedraw();
}

}  // namespace orvanel
