#include "tools/transform/MoveToolHandler.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "tools/transform/HandleDrag.h"

namespace orvanel {
namespace {

/// In document pixels.
constexpr int nudgeStep = 1;
constexpr int longNudgeStep = 10;

constexpr std::uint32_t keyModifiers =
    modifier::shift | modifier::super | modifier::option | modifier::command;

QRectF rectOf(const PixelRect& rect) {
  return QRectF(rect.x, rect.y, rect.width, rect.height);
}

PixelRect translated(const PixelRect& rect, QPoint delta) {
  return {rect.x + delta.x(), rect.y + delta.y(), rect.width, rect.height};
}

/// Half away from zero, unlike the toolkit's rounding of negative values; limited to what an int holds.
int rounded(double value) {
  constexpr double limit = 1e9;
  return static_cast<int>(std::round(std::clamp(value, -limit, limit)));
}

QString actionName(MoveToolHandle handle) {
  switch (handle) {
    case MoveToolHandle::inside:
      return QStringLiteral("Move");
    case MoveToolHandle::rotate:
      return QStringLiteral("Rotate");
    default:
      return QStringLiteral("Scale");
  }
}

/// The direction of an arrow key, as a step; none for other keys and modifiers.
std::optional<QPoint> nudgeOf(const EventRecord& event) {
  const std::uint32_t modifiers = event.modifiers & keyModifiers;
  if (modifiers != 0 && modifiers != modifier::shift) return std::nullopt;
  const int length = modifiers == 0 ? nudgeStep : longNudgeStep;
  switch (event.key) {
    case keyCode::leftArrow:
      return QPoint(-length, 0);
    case keyCode::rightArrow:
      return QPoint(length, 0);
    case keyCode::upArrow:
      return QPoint(0, -length);
    case keyCode::downArrow:
      return QPoint(0, length);
    default:
      return std::nullopt;
  }
}

}  // namespace

MoveToolHandler::MoveToolHandler(const MetalContext& context, std::chrono::milliseconds pause)
    : moveToolLayer_(std::make_shared<MoveToolOverlayLayer>(context)) {
  nudgeTimer_.setSingleShot(true);
  nudgeTimer_.setInterval(pause);
  nudgeTimer_.callOnTimeout([this] { endNudge(); });
}

void MoveToolHandler::toolActivated(const ToolContext& context) {
  updateBox(context);
}

// The release is never reported to a tool that isn't current, so a change of tool ends the drag as it does.
void MoveToolHandler::toolDeactivated(const ToolContext& context) {
  release();
  endNudge();
  contentRect_ = std::nullopt;
  hoverCursor_ = CursorShape::arrow;
  showBox();
  if (context.view != nullptr) context.view->requestRedraw();
}

CursorShape MoveToolHandler::cursor(std::uint32_t modifiers, const ToolContext& context) const {
  (void)modifiers;
  (void)context;
  return hoverCursor_;
}

void MoveToolHandler::updateBox(const ToolContext& context) {
  if (drag_ && drag_->transform->isOpen()) return;
  drag_ = std::nullopt;
  endNudge();
  measure(context.document.lock().get());
  if (context.view != nullptr) context.view->requestRedraw();
}

void MoveToolHandler::contentChanged(const ToolContext& context) {
  // A command that ends what is open moves the box as it moves the content.
  if ((drag_ && drag_->transform->isOpen()) || (nudge_ && nudge_->transform->isOpen())) return;
  measure(context.document.lock().get());
}

void MoveToolHandler::measure(const Document* document) {
  contentRect_ = std::nullopt;
  const std::shared_ptr<Layer> layer = document != nullptr ? document->activeLayer() : nullptr;
  const ConstTexture target =
      layer != nullptr && !layer->isLocked.value() ? layer->activeEditTexture() : nullptr;
  if (target != nullptr) {
    contentRect_ =
        document->context().layerContentBounds(*target, document->colorMode.value(), layer->editsMask());
  }
  showBox();
}

void MoveToolHandler::showBox() {
  moveToolLayer_->moveToolRotation = 0.0F;
  moveToolLayer_->moveToolRect = std::nullopt;
  if (!contentRect_) return;
  moveToolLayer_->moveToolRect = MoveToolOverlayLayer::Box{
      static_cast<float>(contentRect_->x), static_cast<float>(contentRect_->y),
      static_cast<float>(contentRect_->width), static_cast<float>(contentRect_->height)};
}

std::optional<MoveToolHandle> MoveToolHandler::hitAt(const ToolCanvas& view, QPointF viewPoint) const {
  if (!contentRect_) return std::nullopt;
  const QRectF box = rectOf(*contentRect_);
  boxHandle::Points handles = boxHandle::pointsOf(box);
  for (QPointF& point : handles) point = view.documentToView(point).value_or(QPointF());
  if (const auto handle = boxHandle::hitHandle(handles, viewPoint)) return handle;
  const std::optional<QPointF> pointer = view.viewToDocument(viewPoint);
  if (pointer && boxHandle::contains(box, *pointer)) return MoveToolHandle::inside;
  return std::nullopt;
}

void MoveToolHandler::mouseMoved(const EventRecord& event, const ToolContext& context, QPointF viewPoint) {
  (void)event;
  if (context.view == nullptr || !contentRect_) return;
  hoverCursor_ = boxHandle::cursorOver(hitAt(*context.view, viewPoint));
  context.view->showCursor(hoverCursor_);
}

void MoveToolHandler::mouseDown(const EventRecord& event, const ToolContext& context, QPointF viewPoint) {
  (void)event;
  release();
  endNudge();
  const DocumentPtr document = context.document.lock();
  if (document == nullptr || context.view == nullptr) return;
  const std::optional<QPointF> start = context.view->viewToDocument(viewPoint);
  if (!start) return;
  // Finding the box costs next to nothing, so it is never out of date when it is clicked.
  updateBox(context);
  const std::optional<MoveToolHandle> hit = hitAt(*context.view, viewPoint);
  if (!hit) return;
  auto transform = LayerTransform::begin(document, actionName(*hit));
  if (transform == nullptr) return;
  const QPointF centre = rectOf(*contentRect_).center();
  drag_ = Drag{.transform = std::move(transform),
               .document = document,
               .handle = *hit,
               .start = *start,
               .startAngle = static_cast<float>(handleDrag::angleOf(centre, *start)),
               .lastPixelDelta = {},
               .pointer = viewPoint};
}

void MoveToolHandler::mouseDragged(const EventRecord& event, const ToolContext& context, QPointF viewPoint) {
  (void)event;
  dragTo(context, viewPoint);
}

// Shift acts at once, without waiting for the pointer to move.
void MoveToolHandler::flagsChanged(const EventRecord& event, const ToolContext& context) {
  (void)event;
  if (drag_ && drag_->handle != MoveToolHandle::inside) dragTo(context, drag_->pointer);
}

void MoveToolHandler::dragTo(const ToolContext& context, QPointF viewPoint) {
  if (!drag_ || context.view == nullptr) return;
  // Undo, for example, may have ended the edit while the button is down.
  if (!drag_->transform->isOpen()) return updateBox(context);
  // Another document may have become active.
  if (context.document.lock() != drag_->document.lock()) return;
  const std::optional<QPointF> pointer = context.view->viewToDocument(viewPoint);
  if (!pointer) return;
  drag_->pointer = viewPoint;
  const std::uint32_t modifiers = context.view->currentModifiers();
  switch (drag_->handle) {
    case MoveToolHandle::inside:
      translateTo(*pointer);
      break;
    case MoveToolHandle::rotate:
      rotateTo(*pointer, modifiers);
      break;
    default:
      scaleTo(*pointer, modifiers);
      break;
  }
  context.view->requestRedraw();
}

void MoveToolHandler::translateTo(QPointF documentPoint) {
  const QPointF moved = documentPoint - drag_->start;
  const QPoint delta(rounded(moved.x()), rounded(moved.y()));
  if (delta == drag_->lastPixelDelta) return;
  drag_->lastPixelDelta = delta;
  drag_->transform->translate(delta.x(), delta.y());
  contentRect_ = translated(drag_->transform->contentRect(), delta);
  showBox();
}

// The box turns with the content, but stays the box of the drag's start.
void MoveToolHandler::rotateTo(QPointF documentPoint, std::uint32_t modifiers) {
  const QPointF centre = rectOf(drag_->transform->contentRect()).center();
  float angle = static_cast<float>(handleDrag::angleOf(centre, documentPoint)) - drag_->startAngle;
  if ((modifiers & modifier::shift) != 0) angle = handleDrag::snappedAngle(angle);
  if (drag_->transform->rotate(angle)) moveToolLayer_->moveToolRotation = angle;
}

void MoveToolHandler::scaleTo(QPointF documentPoint, std::uint32_t modifiers) {
  const std::optional<QRectF> box =
      handleDrag::scaledBox(rectOf(drag_->transform->contentRect()), drag_->handle, documentPoint,
                            handleDrag::proportionsUnder(modifiers));
  if (!box || !drag_->transform->scaleTo(*box)) return;
  contentRect_ = PixelRect{rounded(box->x()), rounded(box->y()), std::max(rounded(box->width()), 1),
                           std::max(rounded(box->height()), 1)};
  showBox();
}

void MoveToolHandler::mouseUp(const EventRecord& event, const ToolContext& context, QPointF viewPoint) {
  (void)event;
  (void)viewPoint;
  if (!drag_) return;
  release();
  // A turned or scaled content rarely fills the box that it was dragged by.
  updateBox(context);
}

void MoveToolHandler::release() {
  if (auto drag = std::exchange(drag_, std::nullopt)) drag->transform->commit();
}

bool MoveToolHandler::keyDown(const EventRecord& event, const ToolContext& context) {
  if (drag_) {
    if (event.key != keyCode::escape) return false;
    const auto drag = std::exchange(drag_, std::nullopt);
    drag->transform->cancel();
    updateBox(context);
    return true;
  }
  if (const std::optional<QPoint> step = nudgeOf(event)) return nudge(context, *step);
  endNudge();
  return false;
}

bool MoveToolHandler::nudge(const ToolContext& context, QPoint step) {
  const DocumentPtr document = context.document.lock();
  const std::shared_ptr<Layer> layer = document != nullptr ? document->activeLayer() : nullptr;
  if (layer == nullptr) return false;
  if (layer->isLocked.value()) {
    endNudge();
    return false;
  }
  if (nudge_ && (!nudge_->transform->isOpen() || nudge_->layerID != layer->id)) endNudge();
  if (!nudge_) {
    auto transform = LayerTransform::begin(document, QStringLiteral("Move"));
    if (transform == nullptr) return false;
    nudge_ =
        Nudge{.transform = std::move(transform), .document = document, .layerID = layer->id, .delta = {}};
  }
  nudge_->delta += step;
  nudge_->transform->translate(nudge_->delta.x(), nudge_->delta.y());
  contentRect_ = translated(nudge_->transform->contentRect(), nudge_->delta);
  showBox();
  nudgeTimer_.start();
  if (context.view != nullptr) context.view->requestRedraw();
  return true;
}

void MoveToolHandler::endNudge() {
  nudgeTimer_.stop();
  const auto nudge = std::exchange(nudge_, std::nullopt);
  if (!nudge) return;
  nudge->transform->commit();
  measure(nudge->document.lock().get());
}

}  // namespace orvanel
