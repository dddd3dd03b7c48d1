#include "tools/transform/FreeTransformToolHandler.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "tools/transform/HandleDrag.h"

namespace orvanel {
namespace {

/// The points as the matrix places them.
template <typename Points>
Points mapped(Points points, const QTransform& matrix) {
  std::ranges::transform(points, points.begin(), [&](QPointF point) { return matrix.map(point); });
  return points;
}

}  // namespace

FreeTransformToolHandler::FreeTransformToolHandler(const MetalContext& context, ToolState& toolState)
    : toolState_(toolState), overlay_(std::make_shared<FreeTransformOverlayLayer>(context)) {}

void FreeTransformToolHandler::toolActivated(const ToolContext& context) {
  const DocumentPtr document = context.document.lock();
  if (document == nullptr) return;
  transform_ = LayerTransform::begin(document, QStringLiteral("Free Transform"));
  if (transform_ == nullptr) return;
  document_ = document;
  const PixelRect& content = transform_->contentRect();
  contentRect_ = QRectF(content.x, content.y, content.width, content.height);
  changes_ = document->changes().observe([this](const DocumentChanges&) { followDocument(); });
  refreshOverlay();
  if (context.view != nullptr) context.view->requestRedraw();
}

void FreeTransformToolHandler::toolDeactivated(const ToolContext& context) {
  apply(context);
}

// A command may have ended the transform, keeping its result. The tool then has nothing left to do.
void FreeTransformToolHandler::followDocument() {
  if (transform_ == nullptr || transform_->isOpen()) return;
  static_cast<void>(close({}));
  if (toolState_.currentTool() == Tool::freeTransform) toolState_.popTool();
}

std::unique_ptr<LayerTransform> FreeTransformToolHandler::close(const ToolContext& context) {
  changes_ = {};
  drag_ = std::nullopt;
  baseTransform_ = {};
  currentDragTransform_ = {};
  hoverCursor_ = CursorShape::arrow;
  auto transform = std::exchange(transform_, nullptr);
  refreshOverlay();
  if (context.view != nullptr) context.view->requestRedraw();
  return transform;
}

void FreeTransformToolHandler::apply(const ToolContext& context) {
  if (const auto transform = close(context)) transform->commit();
}

void FreeTransformToolHandler::cancel(const ToolContext& context) {
  if (const auto transform = close(context)) transform->cancel();
}

void FreeTransformToolHandler::refreshOverlay() {
  overlay_->corners = std::nullopt;
  overlay_->handles = std::nullopt;
  if (transform_ == nullptr) return;
  const boxHandle::Quad quad = mapped(boxHandle::quadOf(contentRect_), total());
  const boxHandle::Points handles = mapped(boxHandle::pointsOf(contentRect_), total());
  overlay_->corners.emplace(quad.begin(), quad.end());
  overlay_->handles.emplace(handles.begin(), handles.end());
}

CursorShape FreeTransformToolHandler::cursor(std::uint32_t modifiers, const ToolContext& context) const {
  (void)modifiers;
  (void)context;
  return hoverCursor_;
}

std::optional<FreeTransformHandle> FreeTransformToolHandler::hitAt(const ToolCanvas& view,
                                                                   QPointF viewPoint) const {
  boxHandle::Points handles = mapped(boxHandle::pointsOf(contentRect_), total());
  for (QPointF& point : handles) point = view.documentToView(point).value_or(QPointF());
  if (const auto handle = boxHandle::hitHandle(handles, viewPoint)) return handle;
  const std::optional<QPointF> pointer = view.viewToDocument(viewPoint);
  const boxHandle::Quad quad = mapped(boxHandle::quadOf(contentRect_), total());
  if (pointer && boxHandle::contains(quad, *pointer)) return FreeTransformHandle::inside;
  return std::nullopt;
}

void FreeTransformToolHandler::mouseMoved(const EventRecord& event, const ToolContext& context,
                                          QPointF viewPoint) {
  (void)event;
  if (context.view == nullptr || !isOpen()) return;
  hoverCursor_ = boxHandle::cursorOver(hitAt(*context.view, viewPoint));
  context.view->showCursor(hoverCursor_);
}

void FreeTransformToolHandler::mouseDown(const EventRecord& event, const ToolContext& context,
                                         QPointF viewPoint) {
  // The release of an earlier press may never have been reported.
  if (drag_) mouseUp(event, context, viewPoint);
  if (context.view == nullptr || !isOpen()) return;
  const std::optional<QPointF> start = context.view->viewToDocument(viewPoint);
  const std::optional<FreeTransformHandle> hit = hitAt(*context.view, viewPoint);
  if (!start || !hit) return;
  const QPointF centre = baseTransform_.map(contentRect_.center());
  drag_ = Drag{.handle = *hit,
               .start = *start,
               .startAngle = handleDrag::angleOf(centre, *start),
               .pointer = viewPoint};
}

void FreeTransformToolHandler::mouseDragged(const EventRecord& event, const ToolContext& context,
                                            QPointF viewPoint) {
  (void)event;
  dragTo(context, viewPoint);
}

// Shift acts at once, without waiting for the pointer to move.
void FreeTransformToolHandler::flagsChanged(const EventRecord& event, const ToolContext& context) {
  (void)event;
  if (drag_ && drag_->handle != FreeTransformHandle::inside) dragTo(context, drag_->pointer);
}

void FreeTransformToolHandler::dragTo(const ToolContext& context, QPointF viewPoint) {
  if (!drag_ || !isOpen() || context.view == nullptr) return;
  // Another document may have become active while the button is down.
  if (context.document.lock() != document_.lock()) return;
  const std::optional<QPointF> pointer = context.view->viewToDocument(viewPoint);
  if (!pointer) return;
  drag_->pointer = viewPoint;
  const QTransform dragged = dragTransform(*pointer, context.view->currentModifiers());
  // After many strong reductions there may be no way back from the matrix; the last one then stays, as it
  // does when there isn't the memory for what the matrix makes.
  const QTransform whole = baseTransform_ * dragged;
  if (!LayerTransform::canInvert(whole) || !transform_->transform(whole) || !isOpen()) return;
  currentDragTransform_ = dragged;
  refreshOverlay();
  context.view->requestRedraw();
}

QTransform FreeTransformToolHandler::dragTransform(QPointF documentPoint, std::uint32_t modifiers) const {
  if (drag_->handle == FreeTransformHandle::inside) {
    const QPointF moved = documentPoint - drag_->start;
    return QTransform::fromTranslate(moved.x(), moved.y());
  }
  if (drag_->handle == FreeTransformHandle::rotate) {
    const QPointF centre = baseTransform_.map(contentRect_.center());
    const double angle = handleDrag::angleOf(centre, documentPoint) - drag_->startAngle;
    const bool isSnapped = (modifiers & modifier::shift) != 0;
    return handleDrag::rotation(centre, isSnapped ? handleDrag::snappedAngle(angle) : angle);
  }
  return handleDrag::scaling(contentRect_, baseTransform_, drag_->handle, documentPoint,
                             handleDrag::proportionsUnder(modifiers));
}

void FreeTransformToolHandler::mouseUp(const EventRecord& event, const ToolContext& context,
                                       QPointF viewPoint) {
  (void)event;
  (void)viewPoint;
  if (!drag_) return;
  baseTransform_ = total();
  currentDragTransform_ = {};
  drag_ = std::nullopt;
  refreshOverlay();
  if (context.view != nullptr) context.view->requestRedraw();
}

bool FreeTransformToolHandler::keyDown(const EventRecord& event, const ToolContext& context) {
  if (!isOpen()) return false;
  switch (event.key) {
    case keyCode::returnKey:
    case keyCode::enter:
      apply(context);
      break;
    case keyCode::escape:
      cancel(context);
      break;
    default:
      return false;
  }
  toolState_.popTool();
  return true;
}

}  // namespace orvanel
